#include "frame/NIMPageCatalog.h"

#include <map>

namespace {

std::map<std::string, NIMPageEntry, std::less<>>& entries()
{
    static std::map<std::string, NIMPageEntry, std::less<>> pages;
    return pages;
}

}  // namespace

namespace NIMPageCatalog {

bool add(NIMPageEntry entry)
{
    std::string name = entry.className;
    entries().emplace(std::move(name), std::move(entry));
    return true;
}

std::vector<NIMPageEntry> all()
{
    std::vector<NIMPageEntry> pages;
    for (auto& [name, entry] : entries())
        pages.push_back(entry);
    return pages;
}

const NIMPageEntry* find(std::string_view className)
{
    auto it = entries().find(className);
    return it == entries().end() ? nullptr : &it->second;
}

}  // namespace NIMPageCatalog
