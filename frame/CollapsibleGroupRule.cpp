#include "frame/CollapsibleGroupRule.h"

#include <algorithm>

bool Condition::holdsForBoolean(bool value) const
{
    switch (_test) {
    case Test::On: return value;
    case Test::Off: return !value;
    default: return holdsForInteger(value ? 1 : 0);
    }
}

bool Condition::holdsForInteger(std::int64_t value) const
{
    auto contains = [&] { return std::find(_operands.begin(), _operands.end(), value) != _operands.end(); };
    switch (_test) {
    case Test::On: return value != 0;
    case Test::Off: return value == 0;
    case Test::Equal: return value == _operands[0];
    case Test::NotEqual: return value != _operands[0];
    case Test::AtLeast: return value >= _operands[0];
    case Test::AtMost: return value <= _operands[0];
    case Test::Below: return value < _operands[0];
    case Test::In: return contains();
    case Test::NotIn: return !contains();
    }
    return false;
}

bool Condition::holds(const PlistValue& value) const
{
    return readsBoolean() ? holdsForBoolean(value.boolValue()) : holdsForInteger(value.integerValue());
}

CollapsibleGroupRule when(std::string key, Condition shownWhen)
{
    CollapsibleGroupRule rule;
    rule.name = key;
    rule.key = std::move(key);
    rule.shownWhen = std::move(shownWhen);
    return rule;
}

CollapsibleGroupRule& CollapsibleGroupRule::named(std::string ruleName)
{
    name = std::move(ruleName);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::chain(const std::vector<std::string>& ids, std::string after)
{
    for (const std::string& id : ids) {
        children.push_back({id, after});
        after = id;
    }
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::place(std::string id, std::string after)
{
    children.push_back({std::move(id), std::move(after)});
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::editedBy(std::string rowId)
{
    row = std::move(rowId);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::guardedOnUncaptured(std::string id)
{
    guard = std::move(id);
    guardNeverCaptured = true;
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::guardedAlsoWhenNested()
{
    guardedWhenNested = true;
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::nests(std::vector<std::string> keys)
{
    nested = std::move(keys);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::onlyWhenRow(std::string rowId, Condition condition)
{
    requiredRow = std::move(rowId);
    requiredCondition = std::move(condition);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::hiding(std::vector<std::string> ids)
{
    hides = std::move(ids);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::notReloaded()
{
    reloaded = false;
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::reloadRemovingWhen(Condition condition)
{
    reloadRemovesWhen = std::move(condition);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::reloadDefaulting(PlistValue value)
{
    reloadDefault = std::move(value);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::reloadAnimating()
{
    reloadAnimated = true;
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::reloadReading(std::string key)
{
    reloadKey = std::move(key);
    return *this;
}

CollapsibleGroupRule& CollapsibleGroupRule::reloadHiding(std::vector<std::string> ids)
{
    reloadHides = std::move(ids);
    return *this;
}

std::vector<std::string> CollapsibleGroupRule::childIds() const
{
    std::vector<std::string> ids;
    for (auto& child : children)
        ids.push_back(child.id);
    return ids;
}

std::string CollapsibleGroupRule::guardId() const
{
    if (!guard.empty())
        return guard;
    return children.empty() ? std::string() : children.front().id;
}

std::vector<std::string> numbered(std::string_view format, int first, int last)
{
    std::vector<std::string> ids;
    auto marker = format.find("%d");
    for (int n = first; n <= last; ++n) {
        if (marker == std::string_view::npos)
            ids.emplace_back(format);
        else
            ids.push_back(std::string(format.substr(0, marker)) + std::to_string(n) + std::string(format.substr(marker + 2)));
    }
    return ids;
}

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
