#include "frame/NIMCollapsibleListController.h"

#include "frame/SharedActions.h"
#include "platform/HBPreferencesReadPass.h"

#include <algorithm>
#include <stdexcept>

NIM_REGISTER_ABSTRACT_CLASS(NIMCollapsibleListController, HBListController);

NIMCollapsibleListController::NIMCollapsibleListController(const PageDescription& page)
    : _page(page)
{
}

void NIMCollapsibleListController::init()
{
    HBListController::init();
    for (auto& [selector, action] : _page.actions)
        addAction(selector, [this, &action = action] { action(*this); });
}

SpecifierArray& NIMCollapsibleListController::specifiers()
{
    std::shared_ptr<const PSPageDefinition> fresh;
    if (!specifiersLoaded()) {
        DefinedSpecifiers loaded = loadDefinedSpecifiers(_page.definition, shared_from_this());
        setSpecifiers(std::move(loaded.specifiers));
        if (_page.fixesColorRows)
            fixColorPicker(*_specifiers, shared_from_this());
        else
            fresh = std::move(loaded.definition);
    }
    capture(std::move(fresh));
    return *_specifiers;
}

void NIMCollapsibleListController::capture(std::shared_ptr<const PSPageDefinition> fresh)
{
    // Every captured id has its slot from the first capture on (empty until a row with that id is
    // seen), so that a row needs one look-up.
    if (!_capturing) {
        _capturing = true;
        for (auto& id : _page.capturedIds())
            _savedSpecifiers.try_emplace(std::move(id));
    }
    SpecifierArray& rows = *_specifiers;
    // Rows just made from the definition whose slots are known: row i goes to its item's slot.
    if (fresh && fresh == _slotsDefinition && rows.size() == _slotOfRow.size()) {
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (_slotOfRow[i])
                *_slotOfRow[i] = rows[i];
        return;
    }
    if (fresh)
        _slotOfRow.assign(rows.size(), nullptr);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string& id = rows[i]->identifier();
        if (id.empty())
            continue;
        auto slot = _savedSpecifiers.find(id);
        if (slot == _savedSpecifiers.end())
            continue;
        slot->second = rows[i];
        if (fresh)
            _slotOfRow[i] = &slot->second;
    }
    if (fresh)
        _slotsDefinition = std::move(fresh);
}

void NIMCollapsibleListController::setPreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier)
{
    // A value that did not reach the disk changes nothing the page shows: its rows keep following
    // what is stored, and the row itself was redrawn with the stored value.
    if (storePreferenceValue(value, specifier) && specifier)
        valueChanged(specifier->key(), value);
}

void NIMCollapsibleListController::reloadSpecifiers()
{
    // The rebuild reads each domain once, however many rows and rules read it.
    HBPreferencesReadPass pass;
    DeferredDisplay display(*this);
    HBListController::reloadSpecifiers();
    if (_page.domain.empty())
        return;
    prune(*HBPreferences::preferencesForIdentifier(_page.domain));
}

void NIMCollapsibleListController::viewDidLoad()
{
    HBListController::viewDidLoad();
    if (!_page.rules.empty())
        reloadSpecifiers();
}

void NIMCollapsibleListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (const CollapsibleGroupRule* rule = _page.ruleForKey(key))
        apply(*rule, value);
}

void NIMCollapsibleListController::prune(HBPreferences& preferences)
{
    for (auto& rule : _page.rules)
        pruneRule(rule, preferences);
}

void NIMCollapsibleListController::apply(const CollapsibleGroupRule& rule, const PlistValue& value)
{
    if (rule.shownWhen.holds(value))
        show(rule);
    else
        hide(rule);
}

bool NIMCollapsibleListController::show(const CollapsibleGroupRule& rule)
{
    return insertChildren(rule, true);
}

bool NIMCollapsibleListController::insertChildren(const CollapsibleGroupRule& rule, bool presenceTest)
{
    std::string guard = presenceTest ? rule.guardId() : std::string();
    if (!guard.empty() && isShown(guard))
        return false;
    if (rule.requiredCondition && !rule.requiredCondition->holds(valueOfRow(rule.requiredRow)))
        return false;
    for (auto& child : rule.children)
        insert(child.id, child.after);
    showNested(rule.nested);
    return true;
}

void NIMCollapsibleListController::showNested(const std::vector<std::string>& names)
{
    for (auto& name : names) {
        const CollapsibleGroupRule* inner = _page.ruleNamed(name);
        if (inner && inner->shownWhen.holds(valueOfRow(inner->row)))
            insertChildren(*inner, inner->guardedWhenNested);
    }
}

void NIMCollapsibleListController::hide(const CollapsibleGroupRule& rule, bool animated)
{
    if (!_capturing) {
        remove(_page.hiddenBy(rule), animated);
        return;
    }
    // The saved-specifier slots of the rows the rule hides, found once per page.
    auto hidden = _hiddenSlots.find(&rule);
    if (hidden == _hiddenSlots.end()) {
        std::vector<const std::shared_ptr<PSSpecifier>*> slots;
        for (auto& id : _page.hiddenBy(rule))
            if (auto slot = _savedSpecifiers.find(id); slot != _savedSpecifiers.end())
                slots.push_back(&slot->second);
        hidden = _hiddenSlots.emplace(&rule, std::move(slots)).first;
    }
    for (auto* slot : hidden->second)
        if (*slot)
            removeSpecifier(*slot, animated);
}

bool NIMCollapsibleListController::reloadRemoves(const CollapsibleGroupRule& rule, HBPreferences& preferences) const
{
    PlistValue stored = preferences.objectForKey(rule.reloadKey.empty() ? rule.key : rule.reloadKey);
    if (stored.isNil())
        stored = rule.reloadDefault;
    if (rule.reloadRemovesWhen)
        return rule.reloadRemovesWhen->holds(stored);
    return !rule.shownWhen.holds(stored);
}

void NIMCollapsibleListController::pruneRule(const CollapsibleGroupRule& rule, HBPreferences& preferences)
{
    if (!rule.reloaded || !reloadRemoves(rule, preferences))
        return;
    if (rule.reloadHides.empty())
        hide(rule, rule.reloadAnimated);
    else
        remove(rule.reloadHides, rule.reloadAnimated);
}

const CollapsibleGroupRule& NIMCollapsibleListController::rule(std::string_view key) const
{
    const CollapsibleGroupRule* found = _page.ruleForKey(key);
    if (!found)
        throw std::logic_error("page " + _page.definition + " has no rule for " + std::string(key));
    return *found;
}

std::shared_ptr<PSSpecifier> NIMCollapsibleListController::saved(std::string_view id) const
{
    auto it = _savedSpecifiers.find(id);
    return it == _savedSpecifiers.end() ? nullptr : it->second;
}

bool NIMCollapsibleListController::isShown(std::string_view id) const
{
    return containsSpecifier(saved(id));
}

void NIMCollapsibleListController::insert(std::string_view id, std::string_view after, bool animated)
{
    if (auto specifier = saved(id))
        insertContiguousSpecifiers({specifier}, after, animated);
}

void NIMCollapsibleListController::insertChain(const std::vector<std::string>& ids, std::string_view after, bool animated)
{
    std::string anchor(after);
    for (auto& id : ids) {
        insert(id, anchor, animated);
        anchor = id;
    }
}

void NIMCollapsibleListController::remove(const std::vector<std::string>& ids, bool animated)
{
    for (auto& id : ids)
        if (auto it = _savedSpecifiers.find(id); it != _savedSpecifiers.end())
            removeSpecifier(it->second, animated);
}

PlistValue NIMCollapsibleListController::valueOfRow(std::string_view id)
{
    auto specifier = saved(id);
    return specifier ? readPreferenceValue(specifier) : PlistValue();
}
