#pragma once
// Search across every page of the bundle, by the words a user sees: row labels, group headers and
// footers, the titles of list and segment values, and subtitles.
//
// The index is built once, from the page definitions and the link rows that reach each page from
// the root page (a page's path is the shortest chain of link rows, "Nimbra › Home Screen › Dock").
// A row that its page may hide is still found; its result says what shows it, taken from the
// page's own rule table (the label of the governing row and its condition in the row's own value
// titles: "appears when Style is Percentage"). Pages that no link row reaches are not indexed.

#include <nlohmann/json.hpp>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

class SearchIndex {
public:
    /// One row of one page, as a result.
    struct Entry {
        /// The page controller class that shows the row.
        std::string page;
        /// Labels from the root page to the page: {"Nimbra", "Home Screen", "Dock"}.
        std::vector<std::string> path;
        /// The page's address: definition names of the pages after the root, joined with "/"
        /// ("HomeScreenRoot/HomeScreenDock"; "" for the root page itself).
        std::string route;
        /// The row's "id" ("" when it has none) and its position in the page's definition.
        std::string id;
        std::size_t index = 0;
        /// What the row shows as its title (a group's header, or its footer when it has no header).
        std::string label;
        /// "appears when ..." when the page's rules may hide the row, else "".
        std::string shownWhen;
        /// Every word the row shows, lower-cased, and its label lower-cased (for ranking).
        std::string text;
        std::string labelText;
    };

    /// Reads every page definition below resources, starting at the root page's. A definition that
    /// cannot be read leaves its page out (the page itself reports it when opened).
    explicit SearchIndex(const std::filesystem::path& resources);

    /// The rows whose words contain every word of query (case-insensitive, anywhere in a word),
    /// best first: rows whose label holds every word, then rows whose label starts with the query,
    /// then by page (in the order the root page reaches them) and row. At most limit results; an
    /// empty query finds nothing.
    std::vector<const Entry*> find(std::string_view query, std::size_t limit = 50) const;

    /// Every indexed row.
    const std::vector<Entry>& entries() const { return _entries; }

    /// A result as JSON: {"page","path","route","id","label","shownWhen"} (id and shownWhen null
    /// when the row has none); the path joined with " › ".
    static nlohmann::ordered_json toJson(const Entry& entry);

private:
    std::vector<Entry> _entries;
};
