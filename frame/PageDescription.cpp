#include "frame/PageDescription.h"

#include <algorithm>

std::vector<std::string> PageDescription::capturedIds() const
{
    if (!captured.empty())
        return captured;
    std::vector<std::string> ids;
    for (auto& rule : rules)
        for (auto& child : rule.children)
            if (std::find(ids.begin(), ids.end(), child.id) == ids.end())
                ids.push_back(child.id);
    return ids;
}

const CollapsibleGroupRule* PageDescription::ruleForKey(std::string_view key) const
{
    for (auto& rule : rules)
        if (rule.key == key)
            return &rule;
    return nullptr;
}

const CollapsibleGroupRule* PageDescription::ruleNamed(std::string_view name) const
{
    for (auto& rule : rules)
        if (rule.name == name)
            return &rule;
    return nullptr;
}

std::vector<std::string> PageDescription::hiddenBy(const CollapsibleGroupRule& rule) const
{
    if (!rule.hides.empty())
        return rule.hides;
    std::vector<std::string> ids = rule.childIds();
    for (auto& name : rule.nested)
        if (const CollapsibleGroupRule* inner = ruleNamed(name); inner && inner != &rule)
            for (auto& id : hiddenBy(*inner))
                if (std::find(ids.begin(), ids.end(), id) == ids.end())
                    ids.push_back(id);
    return ids;
}

std::vector<std::string> PageDescription::mayShowTwice() const
{
    std::vector<std::string> ids = insertedAgain;
    for (auto& rule : rules)
        if (rule.guardNeverCaptured)
            for (auto& id : hiddenBy(rule))
                if (std::find(ids.begin(), ids.end(), id) == ids.end())
                    ids.push_back(id);
    return ids;
}
