#pragma once
// What a page is: its definition, its preference domain and its rule table. Each page controller
// states its own, literally, in its own file; the frame does the rest.

#include "frame/CollapsibleGroupRule.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

class NIMCollapsibleListController;

/// An action method of a page, performed by name (a button row's "action").
using PageAction = std::function<void(NIMCollapsibleListController& page)>;

struct PageDescription {
    /// The page definition, such as "pages/Modules/BatteryLineColors".
    std::string definition;
    /// The domain the reload reads, and that the page's rows store into ("" for a page with no
    /// rules). Its colour domain, the same identifier followed by ".colors", is the page's too.
    std::string domain;
    /// Whether the freshly loaded rows pass through the colour-picker fix-up.
    bool fixesColorRows = false;
    /// The rule table, in table order.
    std::vector<CollapsibleGroupRule> rules;
    /// The ids captured into the saved-specifier dictionary, when they are more than the children
    /// of the rules (rows whose values are read but which no rule detaches).
    std::vector<std::string> captured;
    /// Further domains rows of the page store into (a page that keeps a switch with another group's
    /// settings).
    std::vector<std::string> otherDomains;
    /// The page's action methods by selector name (resets, app pickers, saveTextCell, ...).
    std::vector<std::pair<std::string, PageAction>> actions;
    /// Rows the page's value hook deliberately inserts again while they are shown (a row it leaves
    /// on screen and later inserts with its parent), beyond the children of rules that have no
    /// working presence test.
    std::vector<std::string> insertedAgain;
    /// Ids a page's own departures from its table refer to (rows it disables, say), so that the
    /// definitions can be checked for them too.
    std::vector<std::string> referencedIds;

    /// The ids captured on every `specifiers` call: `captured` when given, else every child id of
    /// the rules in table order.
    std::vector<std::string> capturedIds() const;
    /// The rule for a trigger key, the first in table order, or nullptr.
    const CollapsibleGroupRule* ruleForKey(std::string_view key) const;
    /// The rule of that name, or nullptr.
    const CollapsibleGroupRule* ruleNamed(std::string_view name) const;
    /// Every row the page may show more than once: `insertedAgain` and the rows of rules whose
    /// presence test looks up an id the page never captures (their children and nested rows).
    std::vector<std::string> mayShowTwice() const;
    /// The rows a rule removes when it is not shown (its own list, or its children followed by what
    /// its nested rules hide).
    std::vector<std::string> hiddenBy(const CollapsibleGroupRule& rule) const;
};
