#pragma once
// Search across every page of the bundle, by the words a user sees: row labels, group headers and
// footers, the titles of list and segment values, and subtitles.
//
// The index is built once, from the page definitions and the link rows that reach each page from
// the root page (a page's path is the shortest chain of link rows, "Nimbra › Home Screen › Dock").
// A row that its page may hide is still found; its result says what shows it, as found by opening
// the page (ShownWhen: the label of the deciding row and its condition in that row's own value
// titles: "appears when Style is Percentage"). A row whose page is reached only through link rows
// that their pages may hide says what shows those ("needs Enable Nimbra and Home Screen ›
// Enabled"). Pages that no link row reaches are not indexed.

#include "platform/PlistValue.h"

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
        /// "appears when ..." when the page may hide the row, else "".
        std::string shownWhen;
        /// What shows the link rows on the way to the page, where their pages may hide them: one
        /// per row that decides, outermost first.
        struct Need {
            /// The address of the page holding the deciding row ("" for the root page), and its
            /// words: "Home Screen › Enabled" (for a switch that must be on) or "Home Screen ›
            /// Style is Custom".
            std::string route;
            std::string page;
            std::string id;
            std::string key;
            std::string label;
            /// The values that show the link, and the condition in words ("Enabled is on").
            std::vector<PlistValue> values;
            std::string condition;
        };
        std::vector<Need> needs;
        /// "needs Enable Nimbra and Home Screen › Enabled", or "".
        std::string needsText;
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

    /// A result as JSON: {"page","path","route","id","label","shownWhen","needs","needsRows"} (id,
    /// shownWhen and needs null when the row has none); the path joined with " › ". needsRows
    /// lists the rows that decide whether the links on the way are shown, outermost first:
    /// {"route","page","id","key","label","values","condition"}.
    static nlohmann::ordered_json toJson(const Entry& entry);

private:
    std::vector<Entry> _entries;
};
