#pragma once
// The consistency check of the page definitions against their controllers (`nimbra-prefs lint`).
// Every registered page is checked with what its controller refers to, taken from the controller
// itself (its description and its actions), so the check holds no second copy of any rule:
//
//   - the definition exists, parses, and its rows are dictionaries of known cell types with ids
//     unique within the page;
//   - every id a rule, capture or departure names is present; a rule's row edits the rule's key;
//     some row edits every trigger key; every child comes after its anchor; nested rules exist;
//   - every row with a key stores into the page's domains (colour rows into a colour domain, on a
//     page that rewrites colour rows);
//   - every cell and detail class is a registered class, every link opens a page controller, and
//     every button's action is answered by its target;
//   - what a user reads: a segment or list row's default is one of its values and it has a title
//     that is not empty for each value; a slider has a range and its default lies inside it;
//     every control (switch, segment, slider, text field, list) has a label, or, for a slider or
//     segment that opens its section, a titled section header; no two rows of one section share a
//     label; row labels are in title case; no label, footer, subtitle, placeholder or value title shows one of the page's
//     preference keys or row ids, or the name of a value type ("bool", "int", "plist", ...).
//
// A link to a class that is no page controller is a problem; wording findings are advice, and
// with `strict` they count as problems too.

#include <filesystem>
#include <ostream>

struct LintResult {
    int pages = 0;
    int problems = 0;
};

LintResult lintPages(const std::filesystem::path& resources, std::ostream& out, bool strict);
