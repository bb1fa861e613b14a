#pragma once
// What shows a row that its page may hide, in the words of the page itself: "appears when Custom
// Background Color is on", "appears when Style is Percentage", "appears when Volume Slider is on or
// Volume HUD is on". Found by asking each page (PageProbe): the rows that decide are given their
// values, the page is rebuilt, and the condition is read off what it showed. It is what the code
// that runs does, whatever form a page's logic takes.
//
// A row's condition names the rows on which it depends: each one alone when it decides by itself
// ("A is on and B is Percentage"), or the alternatives where one of several is enough ("A is on or
// B is on", "C is on and either A is on or B is on").

#include "host/PageProbe.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class ShownWhen {
public:
    /// One decider holding one of some of its values.
    struct Clause {
        std::size_t decider = 0;
        /// Per value of the decider, whether it is one of them.
        std::vector<bool> allowed;
    };
    /// Every clause of `all`, and, when `any` has terms, every clause of one of them.
    struct Condition {
        std::vector<Clause> all;
        std::vector<std::vector<Clause>> any;
        /// The row is shown for no values at all.
        bool never = false;

        bool holds(const PageProbe::State& state) const;
        /// Every clause, those of `all` first.
        std::vector<const Clause*> clauses() const;
    };

    /// The conditions of one page.
    struct Page {
        std::vector<PageProbe::Decider> deciders;
        /// Row id -> what shows it, for the rows the page may hide.
        std::map<std::string, Condition> conditions;
        /// The rebuilds the probe made.
        std::size_t rebuilds = 0;

        const Condition* condition(const std::string& id) const;
        /// "appears when Enabled is on and Style is Percentage"; "never appears" for a row shown
        /// for no values; "" for a row always shown.
        std::string shownWhen(const std::string& id) const;
        /// One clause in words: "Enabled is on", "Style is not Percentage".
        std::string clauseText(const Clause& clause) const;
        /// "Enabled is on and Style is Percentage" (a condition that never holds has no words).
        std::string conditionText(const Condition& condition) const;
    };

    /// Probes one page with its probe.
    static Page probe(PageProbe& probe);

    /// Every page of the catalogue that can be opened, each probed in one session on a throw-away
    /// root with the page definitions of resources.
    static ShownWhen probeAll(const std::filesystem::path& resources);

    /// What search uses: the table the build made beside the program (tableBesideProgram), when it
    /// was made by this very program from these very page definitions, else probeAll. Made once per
    /// process for a resources folder; later calls answer the same.
    static const ShownWhen& derived(const std::filesystem::path& resources);

    /// The file the build writes the table to: the program's own path followed by ".shown-when.json".
    static std::filesystem::path tableBesideProgram();
    /// Names the program whose kept table derived() reads and whose stamp that table must carry
    /// (default: the running program). A test suite built from the same sources as the program
    /// names it, and reads the table the build made instead of probing every page in each of its
    /// processes; the table is still refused when it does not fit that program or the definitions.
    static void readTableOf(const std::filesystem::path& program);

    /// The table as JSON, stamped with the program that made it and the page definitions it read
    /// (`resourcesStamp`). load() reads it back.
    std::string save(const std::filesystem::path& resources) const;
    /// The table in a file save() wrote, or nothing when it cannot be read, is not such a table,
    /// or was made by another program or from other page definitions than resources holds now.
    static std::optional<ShownWhen> load(const std::filesystem::path& file, const std::filesystem::path& resources);

    /// What identifies the page definitions a table was made from: a hash of every catalogued
    /// page's definition file, name and bytes.
    static std::string resourcesStamp(const std::filesystem::path& resources);
    /// What identifies the running program (or the one readTableOf named): its file's size and
    /// modification time.
    static std::string programStamp();

    /// The page's conditions, or nullptr for a page that could not be opened.
    const Page* page(const std::string& className) const;
    const std::map<std::string, Page>& pages() const { return _pages; }

private:
    std::map<std::string, Page> _pages;
};
