// What shows a row, as found by opening each page: the conditions must say exactly what the page
// shows for any values of its deciding rows, not only for those the probe tried; the table the
// build keeps beside the program must be what a fresh probe finds; and a table that does not fit
// the program or the page definitions is not used.

#include "TestSupport.h"
#include "ProgramRun.h"

#include "frame/NIMPageCatalog.h"
#include "host/ShownWhen.h"

#include <gtest/gtest.h>

#include <random>

namespace fs = std::filesystem;

namespace {

const ShownWhen& probed()
{
    static const ShownWhen table = ShownWhen::probeAll(test::resourcesDir());
    return table;
}

std::string stateText(const std::vector<PageProbe::Decider>& deciders, const PageProbe::State& state)
{
    std::string text;
    for (std::size_t k = 0; k < deciders.size(); ++k)
        text += (text.empty() ? "" : ", ") + deciders[k].key + "=" + std::to_string(state[k]);
    return text;
}

}  // namespace

TEST(ShownWhen, EveryConditionSaysWhatThePageShowsForAnyValues)
{
    const ShownWhen& table = probed();
    ASSERT_GT(table.pages().size(), 100u);
    test::TempDir root(test::memoryTempParent());
    Session session({.root = root.path(), .resources = test::resourcesDir()});
    session.open("NIMRootListController");
    std::mt19937_64 random(7);
    std::size_t checked = 0;
    for (auto& [className, page] : table.pages()) {
        PageProbe probe(session, className);
        ASSERT_EQ(probe.deciders().size(), page.deciders.size()) << className;
        // The values shown while nothing is stored, then states drawn at random, then each of
        // those with one decider changed.
        std::vector<PageProbe::State> states{probe.initial()};
        for (int n = 0; n < 60; ++n) {
            PageProbe::State state = probe.initial();
            for (std::size_t k = 0; k < state.size(); ++k)
                if (std::uniform_int_distribution<int>(0, 2)(random))
                    state[k] = static_cast<std::uint8_t>(std::uniform_int_distribution<std::size_t>(0, page.deciders[k].values.size() - 1)(random));
            states.push_back(state);
        }
        for (std::size_t n = 0, drawn = states.size(); n < drawn && !page.deciders.empty(); ++n) {
            PageProbe::State state = states[n];
            std::size_t k = std::uniform_int_distribution<std::size_t>(0, page.deciders.size() - 1)(random);
            state[k] = static_cast<std::uint8_t>((state[k] + 1) % page.deciders[k].values.size());
            states.push_back(state);
        }
        for (auto& state : states) {
            const std::vector<bool>& shown = probe.shown(state);
            for (std::size_t r = 0; r < probe.ids().size(); ++r) {
                const std::string& id = probe.ids()[r];
                const ShownWhen::Condition* condition = page.condition(id);
                bool expected = condition ? condition->holds(state) : true;
                ASSERT_EQ(shown[r], expected) << className << " row " << id << " (\"" << page.shownWhen(id) << "\") with "
                                              << stateText(page.deciders, state);
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 10000u);
}

TEST(ShownWhen, TheBuildKeepsWhatAFreshProbeFindsBesideTheProgram)
{
    std::string kept = test::readFile(test::prefsExe() + ".shown-when.json");
    ASSERT_FALSE(kept.empty()) << "the build writes the table beside the program";
    auto fresh = test::runProgram({"shown-when"});
    ASSERT_EQ(fresh.status, 0) << fresh.errors;
    EXPECT_EQ(fresh.output, kept) << "the table beside the program is not what the program finds now";
    // In-process, the same pages give the same conditions (this process also has pages of the
    // tests' own, without definitions among the resources).
    auto table = nlohmann::json::parse(kept);
    auto probedHere = nlohmann::json::parse(probed().save(test::resourcesDir()));
    EXPECT_EQ(table["resources"], probedHere["resources"]);
    EXPECT_GT(table["pages"].size(), 100u);
    for (auto& [page, conditions] : table["pages"].items())
        EXPECT_TRUE(probedHere["pages"][page] == conditions) << page;
}

TEST(ShownWhen, SearchReadsTheTableOnlyWhenItFitsTheProgramAndThePages)
{
    // A copy of the program, with a table of its own in which one deciding row is renamed: a
    // search that shows the new name read the table.
    test::TempDir folder;
    fs::path program = folder / "nimbra-prefs", table = folder / "nimbra-prefs.shown-when.json";
    fs::copy_file(test::prefsExe(), program);
    auto made = test::runExecutable(program.string(), {"shown-when", table.string()});
    ASSERT_EQ(made.status, 0) << made.errors;
    auto json = nlohmann::json::parse(test::readFile(table));
    bool renamed = false;
    for (auto& decider : json["pages"]["NIMControlCenterSlidersPrefsListController"]["deciders"])
        if (decider["key"] == "showSliderPercentage")
            decider["label"] = "Renamed Switch", renamed = true;
    ASSERT_TRUE(renamed);
    test::writeFile(table, json.dump());
    auto positionOf = [&](const std::vector<std::string>& environment) {
        auto run = test::runExecutable(program.string(), {"search", "position"}, environment);
        EXPECT_EQ(run.status, 0) << run.errors;
        for (auto& result : test::jsonLines(run.output))
            if (result["page"] == "NIMControlCenterSlidersPrefsListController" && result["label"] == "Position")
                return result["shownWhen"].get<std::string>();
        return std::string("(no result)");
    };
    EXPECT_EQ(positionOf({}), "appears when Renamed Switch is on");

    // The same table beside page definitions that changed since is not used: the pages are opened.
    test::TempDir resources;
    fs::copy(test::resourcesDir(), resources.path(), fs::copy_options::recursive);
    fs::path dock = resources / "pages/SpringBoard/HomeScreenDock.plist";
    test::writeFile(dock, test::readFile(dock) + "\n");
    EXPECT_EQ(positionOf({"NIMBRA_RESOURCES=" + resources.path().string()}), "appears when Show Percentage is on");

    // Nor is a table another program made (this copy changed since), nor one that is no table.
    test::writeFile(program.string() + ".shown-when.json", test::readFile(test::prefsExe() + ".shown-when.json"));
    EXPECT_EQ(positionOf({}), "appears when Show Percentage is on");
    test::writeFile(table, "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[{");
    EXPECT_EQ(positionOf({}), "appears when Show Percentage is on");
}
