#include "frame/NIMRearrangeListController.h"

#include "frame/NIMPageCatalog.h"

#include <algorithm>

NIM_REGISTER_ABSTRACT_CLASS(NIMRearrangeListController, NIMGeneralListControllerWithRespringButton);

NIMRearrangeListController::NIMRearrangeListController(const PageDescription& page, Layout layout)
    : NIMGeneralListControllerWithRespringButton(page)
    , _layout(std::move(layout))
{
    _order.reserve(static_cast<std::size_t>(_layout.capacity));
}

std::string NIMRearrangeListController::slotKey(int index) const
{
    return numbered(_layout.slotFormat, index, index).front();
}

SpecifierArray& NIMRearrangeListController::specifiers()
{
    if (specifiersLoaded() && !_specifiers->empty())
        return *_specifiers;
    prepareOrder();
    SpecifierArray rows{PSSpecifier::groupSpecifierWithName(_layout.groupTitle)};
    _order.clear();
    for (int slot = 0; slot < _layout.capacity; ++slot) {
        const PlistValue name = storedSlot(slotKey(slot));
        // The model is an ordered set: a name stands in it once.
        if (name.isString() && std::find(_order.begin(), _order.end(), name.stringValue()) == _order.end())
            _order.push_back(name.stringValue());
    }
    if (_order.empty())
        if (auto instead = rowsForEmptyOrder(); !instead.empty())
            rows = std::move(instead);
    for (const std::string& name : _order)
        rows.push_back(generateSpecifier(name));
    setSpecifiers(std::move(rows));
    return *_specifiers;
}

std::shared_ptr<PSSpecifier> NIMRearrangeListController::generateSpecifier(const std::string& name)
{
    auto found = _layout.titles.find(name);
    std::string title = found == _layout.titles.end() ? std::string() : found->second;
    auto row = PSSpecifier::preferenceSpecifierNamed(title, weak_from_this(), nullptr, PSCellType::StaticText);
    row->setProperty(PlistValue("PSStaticTextCell"), "cell");
    if (!title.empty())
        row->setProperty(PlistValue(title), "label");
    row->setProperty(PlistValue(NSClassFromString("NimbraMovableCell")), "cellClass");
    row->setProperty(PlistValue(name), "buttonController");
    return row;
}

void NIMRearrangeListController::tableViewMoveRowAtIndexPath(std::size_t from, std::size_t to)
{
    if (from >= _order.size() || to >= _order.size())
        return;
    std::string name = _order[from];
    _order.erase(_order.begin() + static_cast<std::ptrdiff_t>(from));
    _order.insert(_order.begin() + static_cast<std::ptrdiff_t>(to), name);
    saveSettings();
}

void NIMRearrangeListController::saveSettings()
{
    std::vector<std::pair<std::string, std::string>> slots;
    for (std::size_t i = 0; i < _order.size(); ++i)
        slots.emplace_back(slotKey(static_cast<int>(i)), _order[i]);
    storeSlots(slots);
}
