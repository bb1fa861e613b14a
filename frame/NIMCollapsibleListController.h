#pragma once
// The collapsible-group engine and the one lifecycle every page of the bundle follows:
//
//   specifiers      loads the definition on first use (through the colour-picker fix-up where the
//                   page has colour rows) and, on every call, captures the page's child rows into
//                   `savedSpecifiers` (never emptied, so a detached row keeps its identity);
//   value hook      stores the value, then applies the first rule whose trigger key is the row's
//                   key: animated insertion after the anchor (guarded), or animated removal; a
//                   value that could not be stored applies nothing (the rows follow what is stored);
//   reload          rebuilds the list from the definition, then removes, unanimated, the rows of
//                   every rule whose condition fails in the stored domain; it never inserts;
//   viewDidLoad     the base's, then (on a page with rules) the reload, so the first display is
//                   already pruned; a plain page only shows its definition.
//
// A page whose behaviour departs from its table overrides `valueChanged` or `prune` in its own
// file and uses the helpers below.

#include "frame/PageDescription.h"
#include "platform/Cephei.h"
#include "platform/HBPreferences.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Hashes std::string and std::string_view alike, so that maps keyed by id can be searched with a
/// view, without making a string.
struct NIMStringHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

class NIMCollapsibleListController : public HBListController {
public:
    using SavedSpecifiers = std::unordered_map<std::string, std::shared_ptr<PSSpecifier>, NIMStringHash, std::equal_to<>>;

    explicit NIMCollapsibleListController(const PageDescription& page);

    /// The page's definition, domain and rules.
    const PageDescription& page() const { return _page; }

    /// Declares the page's action methods.
    void init() override;

    SpecifierArray& specifiers() override;
    void setPreferenceValue(const PlistValue& value, const std::shared_ptr<PSSpecifier>& specifier) override;
    void reloadSpecifiers() override;
    void viewDidLoad() override;

    /// Child id -> specifier, for every id the page captures; made by the first `specifiers` call.
    /// An id whose row the definition lacks maps to nullptr.
    const SavedSpecifiers& savedSpecifiers() const { return _savedSpecifiers; }

protected:
    /// The value hook, after the value is stored: applies the rule for key (if any) to value.
    virtual void valueChanged(const std::string& key, const PlistValue& value);
    /// The reload's pruning, after the list was rebuilt: every rule in table order.
    virtual void prune(HBPreferences& preferences);

    // The engine's steps, for pages that depart from their table.

    /// Shows or hides a rule's rows for a value, as the value hook does.
    void apply(const CollapsibleGroupRule& rule, const PlistValue& value);
    /// Inserts a rule's children (unless its guard row is shown, or the row it requires does not
    /// hold), then its nested rules whose rows' values hold. False when nothing was inserted.
    bool show(const CollapsibleGroupRule& rule);
    /// Removes the rows a rule hides, one at a time.
    void hide(const CollapsibleGroupRule& rule, bool animated = true);
    /// The reload's treatment of one rule: reads its key and removes its rows when they do not apply.
    void pruneRule(const CollapsibleGroupRule& rule, HBPreferences& preferences);
    /// Whether the reload removes a rule's rows for the stored value (absent keys read as the
    /// rule's reload default, else NO / 0).
    bool reloadRemoves(const CollapsibleGroupRule& rule, HBPreferences& preferences) const;
    /// Inserts the children of each named rule whose row's current value satisfies it, without a
    /// presence test (so rows already shown go in again), except for rules marked
    /// `guardedWhenNested`; then their own nested rules, the same way.
    void showNested(const std::vector<std::string>& names);

    /// The rule of the table for a trigger key (the page's own; throws for a key it lacks).
    const CollapsibleGroupRule& rule(std::string_view key) const;
    /// The saved specifier for a child id, or nullptr.
    std::shared_ptr<PSSpecifier> saved(std::string_view id) const;
    /// Whether the saved row with that id is shown (NO for an id never captured).
    bool isShown(std::string_view id) const;
    /// Inserts the saved row id after anchor; nothing when it was never captured. Does not check
    /// whether it is shown already.
    void insert(std::string_view id, std::string_view after, bool animated = true);
    /// Inserts ids as a chain: the first after anchor, each next one after the one before.
    void insertChain(const std::vector<std::string>& ids, std::string_view after, bool animated = true);
    /// Removes the saved rows with these ids, one at a time, in order.
    void remove(const std::vector<std::string>& ids, bool animated = true);
    /// The current value of a captured row (readPreferenceValue: on its saved specifier); nil when
    /// the row was never captured.
    PlistValue valueOfRow(std::string_view id);

private:
    /// Saves the shown rows of captured ids. fresh: the definition the rows were just made from,
    /// row for item, or nullptr.
    void capture(std::shared_ptr<const PSPageDefinition> fresh);
    /// `show`, with or without the presence test.
    bool insertChildren(const CollapsibleGroupRule& rule, bool presenceTest);

    const PageDescription& _page;
    SavedSpecifiers _savedSpecifiers;
    /// Whether the captured ids have their slots in _savedSpecifiers yet.
    bool _capturing = false;
    /// The definition rows were last made from, and the saved-specifier slot of each of its rows
    /// (nullptr: not captured). Slots never move: the saved dictionary gains no ids after the first
    /// capture, and its values stay where they are.
    std::shared_ptr<const PSPageDefinition> _slotsDefinition;
    std::vector<std::shared_ptr<PSSpecifier>*> _slotOfRow;
    /// The slots of the rows each rule hides (PageDescription::hiddenBy), worked out once per page.
    std::unordered_map<const CollapsibleGroupRule*, std::vector<const std::shared_ptr<PSSpecifier>*>> _hiddenSlots;
};
