#include "host/ShownWhen.h"

#include <algorithm>
#include <vector>

namespace {

std::string joined(const std::vector<std::string>& parts, const std::string& last)
{
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? last : ", ") + parts[i];
    return text;
}

/// "= 2" -> "is 2", ">= 2" -> "is at least 2", ...: a condition on a row without value titles.
std::string numericWords(const Condition& condition)
{
    std::string text = condition.description();
    static const std::pair<std::string_view, std::string_view> words[] = {
        {"not in ", "is not one of "}, {"in ", "is one of "}, {"!= ", "is not "}, {">= ", "is at least "},
        {"<= ", "is at most "},        {"< ", "is below "},   {"= ", "is "},
    };
    for (auto& [prefix, replacement] : words)
        if (text.starts_with(prefix))
            return std::string(replacement) + text.substr(prefix.size());
    return "is " + text;
}

}  // namespace

ShownWhen::ShownWhen(const PageDescription& page, const PlistArray& items)
    : _page(page)
    , _items(items)
{
}

const PlistValue* ShownWhen::rowEditing(const std::string& key, const std::string& rowId) const
{
    for (auto& item : _items)
        if (!rowId.empty() ? item["id"].stringValue() == rowId : (!key.empty() && item["key"].stringValue() == key))
            return &item;
    return nullptr;
}

std::string ShownWhen::clause(const std::string& key, const std::string& rowId, const Condition& condition) const
{
    const PlistValue* row = rowEditing(key, rowId);
    std::string name = row && !(*row)["label"].stringValue().empty() ? (*row)["label"].stringValue() : key.empty() ? rowId : key;
    if (condition.readsBoolean())
        return name + (condition.test() == Condition::Test::On ? " is on" : " is off");
    const PlistValue* values = row ? &(*row)["validValues"] : nullptr;
    const PlistValue* titles = row ? &(*row)["validTitles"] : nullptr;
    if (!values || values->kind() != PlistValue::Kind::Array || titles->kind() != PlistValue::Kind::Array)
        return name + " " + numericWords(condition);
    // In the row's own choices: those that show, or, when they are most, those that do not.
    std::vector<std::string> shown, hidden;
    for (std::size_t i = 0; i < values->arrayValue().size() && i < titles->arrayValue().size(); ++i) {
        const std::string& title = titles->arrayValue()[i].stringValue();
        (condition.holdsForInteger(values->arrayValue()[i].integerValue()) ? shown : hidden).push_back(title);
    }
    if (shown.empty())
        return name + " has a value it does not offer";
    if (hidden.empty())
        return "";
    if (shown.size() <= hidden.size())
        return name + " is " + joined(shown, " or ");
    return name + " is not " + joined(hidden, " or ");
}

std::string ShownWhen::describe(const std::string& id) const
{
    if (id.empty())
        return "";
    std::vector<std::string> clauses;
    auto add = [&](std::string text) {
        if (!text.empty() && std::find(clauses.begin(), clauses.end(), text) == clauses.end())
            clauses.push_back(std::move(text));
    };
    for (auto& rule : _page.rules) {
        auto hides = _page.hiddenBy(rule);
        bool hidden = std::find(hides.begin(), hides.end(), id) != hides.end() ||
                      std::find(rule.reloadHides.begin(), rule.reloadHides.end(), id) != rule.reloadHides.end();
        if (!hidden)
            continue;
        add(clause(rule.key, rule.row, rule.shownWhen));
        if (!rule.requiredRow.empty() && rule.requiredCondition)
            add(clause("", rule.requiredRow, *rule.requiredCondition));
    }
    return clauses.empty() ? "" : "appears when " + joined(clauses, " and ");
}
