#pragma once
// What shows a row that its page may hide, in the words of the page itself: "appears when Custom
// Background Color is on", "appears when Style is Percentage". Read from the page's own rule table
// (its description) and definition, never from a second copy of the rules.

#include "frame/PageDescription.h"
#include "platform/PlistValue.h"

#include <map>
#include <string>

class ShownWhen {
public:
    /// The page's description and the rows of its definition (kept by reference while in use).
    ShownWhen(const PageDescription& page, const PlistArray& items);

    /// "appears when A is on and B is Percentage" for a row that a rule hides, every governing
    /// condition joined with "and" in table order; "" for a row no rule hides (and for "").
    std::string describe(const std::string& id) const;

private:
    /// "Style is Percentage or Text": a condition on the row that edits key (or whose id is rowId).
    std::string clause(const std::string& key, const std::string& rowId, const Condition& condition) const;
    const PlistValue* rowEditing(const std::string& key, const std::string& rowId) const;

    const PageDescription& _page;
    const PlistArray& _items;
};
