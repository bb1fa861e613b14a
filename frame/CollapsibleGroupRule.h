#pragma once
// One line of a page's rule table: which rows a preference key shows and hides.
//
//   trigger key | shown when | children (in insertion order) | inserted after | notes
//
// The value hook compares a changed row's "key" with the trigger keys in table order; the first
// rule whose key matches acts. When its condition holds it inserts the children, each as its own
// animated insertion after its anchor, unless the guard row is already shown; then, for each nested
// rule whose row's current value satisfies it, it inserts that rule's children too, without a
// presence test of their own (the outer guard is the only one, unless a page states otherwise for
// a nested rule). Otherwise it removes the rows it hides,
// one at a time, animated. The reload applies every rule in table order, removing the hidden rows
// without animation; it never inserts.

#include "platform/PlistValue.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The condition under which a rule's rows are shown. on / off read the value as a boolean
/// (boolValue, boolForKey:), every other test as an integer (integerValue, integerForKey:).
class Condition {
public:
    static Condition on() { return Condition(Test::On); }
    static Condition off() { return Condition(Test::Off); }
    static Condition equal(std::int64_t n) { return Condition(Test::Equal, {n}); }
    static Condition notEqual(std::int64_t n) { return Condition(Test::NotEqual, {n}); }
    static Condition atLeast(std::int64_t n) { return Condition(Test::AtLeast, {n}); }
    static Condition atMost(std::int64_t n) { return Condition(Test::AtMost, {n}); }
    static Condition below(std::int64_t n) { return Condition(Test::Below, {n}); }
    static Condition in(std::initializer_list<std::int64_t> values) { return Condition(Test::In, values); }
    static Condition notIn(std::initializer_list<std::int64_t> values) { return Condition(Test::NotIn, values); }

    bool readsBoolean() const { return _test == Test::On || _test == Test::Off; }
    bool holds(const PlistValue& value) const;
    bool holdsForInteger(std::int64_t value) const;

private:
    enum class Test { On, Off, Equal, NotEqual, AtLeast, AtMost, Below, In, NotIn };

    explicit Condition(Test test, std::vector<std::int64_t> operands = {})
        : _test(test)
        , _operands(std::move(operands))
    {
    }
    bool holdsForBoolean(bool value) const;

    Test _test;
    std::vector<std::int64_t> _operands;
};

/// A child row and the row it is inserted after.
struct Placement {
    std::string id;
    std::string after;
};

struct CollapsibleGroupRule {
    std::string key;
    /// How nested rules name this rule; the key unless two rules share one key (a selector whose
    /// values govern different rows).
    std::string name;
    Condition shownWhen = Condition::on();
    std::vector<Placement> children;
    /// The id of the row that edits `key`, where the page reads it ("the value of row X") or a
    /// tool checks it; empty when the row carries no id.
    std::string row;
    /// The row tested with containsSpecifier: before inserting; empty means the first child.
    std::string guard;
    /// Whether the guard names an id the page deliberately never captures, so it never stops the
    /// insertion.
    bool guardNeverCaptured = false;
    /// Whether the presence test also applies when this rule is inserted as a nested rule of
    /// another (the default: NO, the outer rule's guard is the only one, so rows that are already
    /// shown are inserted again). Pages whose tables state a guard on the nested insertion set it.
    bool guardedWhenNested = false;
    /// A further condition for inserting: the value of another row must satisfy it (the row's id and
    /// the condition); empty id for none.
    std::string requiredRow;
    std::optional<Condition> requiredCondition;
    /// Names of rules re-applied, from the values of their rows, after this rule's children are in.
    std::vector<std::string> nested;
    /// The rows removed when the condition fails; empty means the children, then the rows the
    /// nested rules hide.
    std::vector<std::string> hides;

    /// Whether the reload applies this rule.
    bool reloaded = true;
    /// The key the reload reads, when a page's reload tests another key than its hook (empty: `key`).
    std::string reloadKey;
    /// The rows the reload removes, when they differ from what the hook hides (empty: `hides` rule).
    std::vector<std::string> reloadHides;
    /// When the reload removes the rows; nothing means whenever the shown-when condition fails.
    std::optional<Condition> reloadRemovesWhen;
    /// The value the reload takes for an absent key (boolForKey:default:, integerForKey:default:).
    PlistValue reloadDefault;
    /// Whether the reload animates its removals (it does not, unless a page says so).
    bool reloadAnimated = false;

    // Building a table line.
    CollapsibleGroupRule& named(std::string ruleName);
    CollapsibleGroupRule& chain(const std::vector<std::string>& ids, std::string after);
    CollapsibleGroupRule& place(std::string id, std::string after);
    CollapsibleGroupRule& editedBy(std::string rowId);
    CollapsibleGroupRule& guardedOnUncaptured(std::string id);
    CollapsibleGroupRule& guardedAlsoWhenNested();
    CollapsibleGroupRule& nests(std::vector<std::string> keys);
    CollapsibleGroupRule& onlyWhenRow(std::string rowId, Condition condition);
    CollapsibleGroupRule& hiding(std::vector<std::string> ids);
    CollapsibleGroupRule& notReloaded();
    CollapsibleGroupRule& reloadRemovingWhen(Condition condition);
    CollapsibleGroupRule& reloadDefaulting(PlistValue value);
    CollapsibleGroupRule& reloadAnimating();
    CollapsibleGroupRule& reloadReading(std::string key);
    CollapsibleGroupRule& reloadHiding(std::vector<std::string> ids);

    /// The ids of the children, in insertion order.
    std::vector<std::string> childIds() const;
    /// The id that the presence test looks up (the guard, else the first child).
    std::string guardId() const;
};

/// Starts a table line: rows governed by key, shown when the condition holds.
CollapsibleGroupRule when(std::string key, Condition shownWhen);

/// A numbered family of ids: numbered("topLevelChild%d", 1, 3) is topLevelChild1 .. topLevelChild3.
std::vector<std::string> numbered(std::string_view format, int first, int last);
/// Concatenates id lists.
std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b);
