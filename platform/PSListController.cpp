#include "platform/PSListController.h"

#include "platform/DarwinNotifyCenter.h"
#include "platform/Events.h"
#include "platform/HBPreferences.h"
#include "platform/PSPageDefinition.h"
#include "platform/Process.h"

#include <algorithm>
#include <span>

NIM_REGISTER_CLASS(PSListController, UIViewController);
NIM_REGISTER_CLASS(PSListItemsController, PSListController);

namespace {

Events::RowIds identifiers(std::span<const std::shared_ptr<PSSpecifier>> specifiers)
{
    Events::RowIds ids;
    ids.reserve(specifiers.size());
    for (auto& s : specifiers) {
        if (s->identifier().empty())
            ids.emplace_back(std::nullopt);
        else
            ids.emplace_back(s->identifier());
    }
    return ids;
}

// Row index of a definition as a specifier, sharing the definition's dictionary (class names in
// "cellClass" and "detail" already resolved to class objects, or left out).
std::shared_ptr<PSSpecifier> specifierFromItem(const PSPageDefinition& definition, std::size_t index,
                                               const std::shared_ptr<NSObject>& target)
{
    const PSPageDefinition::RowHead& head = definition.rowHead(index);
    auto specifier = std::make_shared<PSSpecifier>(head.label, head.cellType, definition.resolvedItem(index));
    specifier->setTarget(target);
    if (!head.detailClassName.empty())
        specifier->setDetailClassName(head.detailClassName);
    return specifier;
}

}  // namespace

SpecifierArray& PSListController::specifiers()
{
    if (!_specifiers)
        _specifiers = std::make_shared<SpecifierArray>();
    return *_specifiers;
}

void PSListController::setSpecifiers(SpecifierArray specifiers)
{
    _specifiers = std::make_shared<SpecifierArray>(std::move(specifiers));
}

SpecifierArray PSListController::loadSpecifiersFromPlistName(std::string_view name, const std::shared_ptr<NSObject>& target)
{
    return loadDefinedSpecifiers(name, target).specifiers;
}

PSListController::DefinedSpecifiers PSListController::loadDefinedSpecifiers(std::string_view name,
                                                                            const std::shared_ptr<NSObject>& target)
{
    PSPageDefinition::Loaded loaded = PSPageDefinition::named(name);
    if (!loaded.definition) {
        Process::current().reportError(loaded.error);
        return {};
    }
    const PSPageDefinition& definition = *loaded.definition;
    SpecifierArray specifiers;
    specifiers.reserve(definition.items().size());
    for (std::size_t i = 0; i < definition.items().size(); ++i)
        specifiers.push_back(specifierFromItem(definition, i, target));
    if (target.get() == this && definition.title().isString())
        navigationItem().title = definition.title().stringValue();
    return {std::move(specifiers), std::move(loaded.definition)};
}

bool PSListController::containsSpecifier(const std::shared_ptr<PSSpecifier>& specifier) const
{
    if (!specifier || !_specifiers)
        return false;
    return std::find(_specifiers->begin(), _specifiers->end(), specifier) != _specifiers->end();
}

std::shared_ptr<PSSpecifier> PSListController::specifierForID(std::string_view identifier) const
{
    if (!_specifiers)
        return nullptr;
    for (auto& s : *_specifiers)
        if (s->identifier() == identifier)
            return s;
    return nullptr;
}

void PSListController::insertContiguousSpecifiers(const SpecifierArray& specifiers, std::string_view afterSpecifierID,
                                                  bool animated)
{
    if (!_specifiers || specifiers.empty())
        return;
    auto anchor = std::find_if(_specifiers->begin(), _specifiers->end(),
                               [&](auto& s) { return s->identifier() == afterSpecifierID; });
    if (anchor == _specifiers->end())
        return;
    _specifiers->insert(anchor + 1, specifiers.begin(), specifiers.end());
    Process::current().events().record(Events::Insert{identifiers(specifiers), std::string(afterSpecifierID), animated});
    displayRows();
}

void PSListController::removeContiguousSpecifiers(const SpecifierArray& specifiers, bool animated)
{
    if (!_specifiers)
        return;
    SpecifierArray removed;
    for (auto& specifier : specifiers) {
        auto it = std::find(_specifiers->begin(), _specifiers->end(), specifier);
        if (it == _specifiers->end())
            continue;
        _specifiers->erase(it);
        removed.push_back(specifier);
    }
    if (!removed.empty())
        Process::current().events().record(Events::Remove{identifiers(removed), animated});
}

void PSListController::removeSpecifier(const std::shared_ptr<PSSpecifier>& specifier, bool animated)
{
    if (!_specifiers || !specifier)
        return;
    auto it = std::find(_specifiers->begin(), _specifiers->end(), specifier);
    if (it == _specifiers->end())
        return;
    _specifiers->erase(it);
    Process::current().events().record(Events::Remove{identifiers({&specifier, 1}), animated});
}

bool PSListController::moveRow(std::size_t sectionStart, std::size_t sectionLength, std::size_t from, std::size_t to)
{
    if (!_specifiers || from >= sectionLength || to >= sectionLength || sectionStart + sectionLength > _specifiers->size())
        return false;
    auto& rows = *_specifiers;
    auto moved = rows[sectionStart + from];
    rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(sectionStart + from));
    rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(sectionStart + to), moved);
    Process::current().events().record(Events::Move{from, to});
    tableViewMoveRowAtIndexPath(from, to);
    return true;
}

void PSListController::reloadSpecifiers()
{
    _specifiers.reset();
    // The old rows' cells and headers leave the table with them.
    for (auto& [row, shown] : _cells)
        shown.cell->removeFromSuperview();
    for (auto& [row, shown] : _headers)
        shown.cell->removeFromSuperview();
    _cells.clear();
    _headers.clear();
    specifiers();
    Process::current().events().record(Events::Reload{});
    displayRows();
}

void PSListController::reloadSpecifier(const std::shared_ptr<PSSpecifier>& specifier)
{
    if (!containsSpecifier(specifier))
        return;
    Process::current().events().record(Events::ReloadRow{specifier->identifier()});
}

void PSListController::setPreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier)
{
    storePreferenceValue(value, specifier);
}

bool PSListController::storePreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier)
{
    if (!specifier)
        return true;
    const std::string& domain = specifier->propertyForKey("defaults").stringValue();
    const std::string& key = specifier->key();
    if (domain.empty() || key.empty())
        return true;
    bool stored = false;
    {
        HBPreferences::RowWrite row(specifier->name(), navigationItem().title);
        stored = HBPreferences::preferencesForIdentifier(domain)->setObject(value, key);
    }
    if (!stored) {
        // The store said why (an error event); the row shows what is stored again.
        reloadSpecifier(specifier);
        return false;
    }
    const PlistValue& notification = specifier->propertyForKey("PostNotification");
    if (notification.isString() && !notification.stringValue().empty())
        CFNotificationCenterGetDarwinNotifyCenter().postNotification(notification.stringValue());
    return true;
}

PlistValue PSListController::readPreferenceValue(const std::shared_ptr<PSSpecifier>& specifier)
{
    if (!specifier)
        return {};
    const std::string& domain = specifier->propertyForKey("defaults").stringValue();
    const std::string& key = specifier->key();
    if (!domain.empty() && !key.empty()) {
        PlistValue stored = HBPreferences::preferencesForIdentifier(domain)->objectForKey(key);
        if (!stored.isNil())
            return stored;
    }
    return specifier->propertyForKey("default");
}

std::shared_ptr<UIScrollView> PSListController::table()
{
    view();
    return _table;
}

void PSListController::loadView()
{
    UIViewController::loadView();
    _table = std::make_shared<UIScrollView>("table", _view->bounds());
    _view->addSubview(_table);
    specifiers();
    displayRows();
}

std::shared_ptr<PSTableCell> PSListController::cellForSpecifier(const std::shared_ptr<PSSpecifier>& specifier)
{
    if (!containsSpecifier(specifier))
        return nullptr;
    return cellForShownSpecifier(specifier);
}

std::shared_ptr<PSTableCell> PSListController::cellForShownSpecifier(const std::shared_ptr<PSSpecifier>& specifier)
{
    if (auto made = _cells.find(specifier.get()); made != _cells.end())
        return made->second.cell;
    std::shared_ptr<PSTableCell> cell;
    if (const ObjCClass* cls = specifier->cellClass(); cls && cls->make)
        cell = std::dynamic_pointer_cast<PSTableCell>(cls->make());
    if (!cell)
        cell = specifier->cellType() == PSCellType::Switch ? NSObject::make<PSSwitchTableCell>() : NSObject::make<PSTableCell>();
    _cells.emplace(specifier.get(), Shown<PSTableCell>{specifier, cell});
    cell->initWithSpecifier(specifier, 0);
    if (_table) {
        const PlistValue& height = specifier->propertyForKey("height");
        cell->setFrame(CGRect{0, 0, _table->bounds().width, height.isNumber() ? height.doubleValue() : 44.0});
        _table->addSubview(cell);
        cell->didMoveToWindow();
        cell->layoutSubviews();
    }
    return cell;
}

std::shared_ptr<UIView> PSListController::headerViewForSpecifier(const std::shared_ptr<PSSpecifier>& specifier)
{
    auto made = _headers.find(specifier.get());
    return made == _headers.end() ? nullptr : made->second.cell;
}

void PSListController::displayRows()
{
    if (!_table || !_specifiers || _displayDeferrals > 0)
        return;
    // A cell made here may change the list; the rows shown when the display began are the ones drawn.
    const SpecifierArray shown = *_specifiers;
    for (auto& specifier : shown) {
        cellForShownSpecifier(specifier);
        if (specifier->cellType() != PSCellType::Group)
            continue;
        const PlistValue& headerClassName = specifier->propertyForKey("headerCellClass");
        if (!headerClassName.isString() || _headers.contains(specifier.get()))
            continue;
        const ObjCClass* headerClass = NSClassFromString(headerClassName.stringValue());
        if (!headerClass || !headerClass->make)
            continue;
        if (auto header = std::dynamic_pointer_cast<PSHeaderView>(headerClass->make())) {
            header->initWithSpecifier(specifier);
            double width = _table->bounds().width;
            header->setFrame(CGRect{0, 0, width, header->preferredHeightForWidth(width)});
            _table->addSubview(header);
            _headers.emplace(specifier.get(), Shown<UIView>{specifier, header});
        }
    }
}
