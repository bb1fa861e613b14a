#pragma once
// A change of what the bundle stores, in the words a person reads on the pages: the page that shows
// the value, the row's label and the values' titles ("Home Screen › Dock › Style: Default →
// Floating"), never a domain or a key where a page shows the value.
//
// The words come from the page definitions as the search index reaches them from the root page (a
// value shown on several pages is named by the first): a row's "key" in its "defaults" domain, a
// picture row's "fileName", and the store and key of an app picker a button row's action opens.
// A row without a label is named by its group, as the page names it. A value no page shows is
// named by the group whose pages use its domain ("Home Screen settings: dockLegacyKey changed").

#include "host/SearchIndex.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

class ChangeWords {
public:
    /// Reads the definitions of the pages index reaches, below resources, with the one reader the
    /// pages are opened with. A definition that cannot be read names none of its rows.
    ChangeWords(const SearchIndex& index, const std::filesystem::path& resources);

    /// One change of a restore's dry run ({"domain","key","old","new"} or {"picture","old","new"})
    /// with its words added: "where" (the page's path, "Home Screen › Dock", or the group's settings,
    /// "Home Screen settings"; "Pictures" for a picture no page shows), "setting" (the row's label,
    /// a picture no page shows by its name in quotes, null for a value no page shows), "from" and "to" (the values as the row shows them, a
    /// picture as its size) and "text", the whole line.
    nlohmann::ordered_json describe(const nlohmann::ordered_json& change) const;
    /// Every change of a dry run described, in their order.
    nlohmann::ordered_json describeAll(const nlohmann::ordered_json& changes) const;

    /// What a row shows for a stored value: a switch "On" or "Off", a choice its title, a number
    /// as written, a text in quotes, an app list as its number of apps; value null is nothing stored.
    struct Row {
        std::string where;
        std::string label;
        enum class Kind { Switch, Choice, Number, Text, Colour, Apps } kind = Kind::Text;
        std::vector<std::pair<nlohmann::ordered_json, std::string>> titles;
        nlohmann::ordered_json fallback;  // what the row shows while nothing is stored (null: nothing)
    };
    std::string valueWords(const Row& row, const nlohmann::ordered_json& value) const;

private:
    const Row* rowFor(const std::string& domain, const std::string& key) const;
    std::string groupOf(const std::string& domain) const;

    std::map<std::pair<std::string, std::string>, Row> _rows;  // (domain, key) -> the row showing it
    std::map<std::string, std::pair<std::string, std::string>> _pictures;  // picture name -> where, label
    std::map<std::string, std::string> _groups;                // domain -> the group of its first page
};
