// Search across every page: the index over the bundle's own definitions and rule tables, and the
// `nimbra-prefs search` command end to end.

#include "TestSupport.h"
#include "ProgramRun.h"

#include "frame/NIMPageCatalog.h"
#include "host/SearchIndex.h"

#include <gtest/gtest.h>

#include <set>

namespace {

std::vector<nlohmann::json> search(const std::vector<std::string>& words, int expectedStatus = 0)
{
    std::vector<std::string> args{"search"};
    args.insert(args.end(), words.begin(), words.end());
    auto run = test::runProgram(args);
    EXPECT_EQ(run.status, expectedStatus) << run.errors;
    return test::jsonLines(run.output);
}

const nlohmann::json* findResult(const std::vector<nlohmann::json>& results, const std::string& page, const std::string& label)
{
    for (auto& result : results)
        if (result["page"] == page && result["label"] == label)
            return &result;
    return nullptr;
}

}  // namespace

TEST(Search, EveryPageIsReachedFromTheRootWithItsPathAndAddress)
{
    SearchIndex index(test::resourcesDir());
    std::set<std::string> pages;
    for (auto& entry : index.entries()) {
        pages.insert(entry.page);
        ASSERT_FALSE(entry.path.empty());
        EXPECT_EQ(entry.path.front(), "Nimbra");
        // The address has one segment per page after the root, as the path has one label.
        std::size_t segments = entry.route.empty() ? 0 : std::count(entry.route.begin(), entry.route.end(), '/') + 1;
        EXPECT_EQ(segments + 1, entry.path.size()) << entry.page;
    }
    std::set<std::string> registered;
    for (auto& page : NIMPageCatalog::all())
        // Pages the tests register for themselves have no shipped definition.
        if (std::filesystem::exists(std::filesystem::path(test::resourcesDir()) / (page.description().definition + ".plist")))
            registered.insert(page.className);
    std::vector<std::string> unreached;
    std::set_difference(registered.begin(), registered.end(), pages.begin(), pages.end(), std::back_inserter(unreached));
    EXPECT_EQ(unreached, std::vector<std::string>{}) << "pages no link row reaches, or with no words at all";
}

TEST(Search, FindsLinksAndRowsByTheirWordsWithThePathToTheirPage)
{
    auto results = search({"dock"});
    const nlohmann::json* link = findResult(results, "NIMHomeScreenRootPrefsListController", "Dock");
    ASSERT_TRUE(link) << nlohmann::json(results).dump();
    EXPECT_EQ((*link)["path"], "Nimbra \u203a Home Screen");
    EXPECT_EQ((*link)["route"], "HomeScreenRoot");
    EXPECT_EQ(results.front()["label"], "Dock") << "a label starting with the words comes first";
    bool onDockPage = false;
    for (auto& result : results)
        if (result["page"] == "NIMHomeScreenDockPrefsListController") {
            onDockPage = true;
            EXPECT_EQ(result["path"], "Nimbra \u203a Home Screen \u203a Dock");
            EXPECT_EQ(result["route"], "HomeScreenRoot/HomeScreenDock");
        }
    EXPECT_TRUE(onDockPage);

    // Footers, value titles and subtitles are words too; every word must be found, in any case.
    for (auto& result : search({"SHOWS", "brightness"}))
        EXPECT_EQ(result["page"], "NIMControlCenterSlidersPrefsListController");
    EXPECT_FALSE(search({"shows", "brightness"}).empty());
    EXPECT_TRUE(search({"dock", "xyzzy-nothing"}).empty());
}

TEST(Search, AHiddenRowSaysWhatShowsItInThePagesOwnWords)
{
    // A switch governs it: the switch's label and "on".
    auto results = search({"position"});
    const nlohmann::json* position = findResult(results, "NIMControlCenterSlidersPrefsListController", "Position");
    ASSERT_TRUE(position) << nlohmann::json(results).dump();
    EXPECT_EQ((*position)["id"], "percentageChild1");
    EXPECT_EQ((*position)["shownWhen"], "appears when Show Percentage is on");
    // The governing switch itself is always shown.
    auto parents = search({"show", "percentage"});
    const nlohmann::json* parent = findResult(parents, "NIMControlCenterSlidersPrefsListController", "Show Percentage");
    ASSERT_TRUE(parent);
    EXPECT_TRUE((*parent)["shownWhen"].is_null());
}

TEST(Search, ANestedRowNamesEveryConditionWithTheListsTitles)
{
    // Battery Line: the nested children need the master switch on and the style not to be the
    // one choice that hides them.
    SearchIndex index(test::resourcesDir());
    const SearchIndex::Entry* nested = nullptr;
    for (auto& entry : index.entries())
        if (entry.page == "NIMBatteryLineRootPrefsListController" && entry.id == "topLevelChild2Child1")
            nested = &entry;
    ASSERT_TRUE(nested);
    EXPECT_TRUE(nested->shownWhen.starts_with("appears when ")) << nested->shownWhen;
    EXPECT_NE(nested->shownWhen.find(" is on and "), std::string::npos) << nested->shownWhen;
    EXPECT_NE(nested->shownWhen.find(" is not "), std::string::npos) << nested->shownWhen;
}

TEST(Search, AConditionSaysWhatThePageDoesWhereItsLogicIsItsOwn)
{
    // Toggles: the colours for all toggles go when each toggle has its own, whatever the style.
    auto background = search({"background", "on", "light"});
    const nlohmann::json* colour = findResult(background, "NIMControlCenterTogglesPrefsListController", "Background On (Light Mode)");
    ASSERT_TRUE(colour) << nlohmann::json(background).dump();
    EXPECT_EQ((*colour)["shownWhen"], "appears when Colorize Toggles is on, Background is Custom Colors and Apply Colors is All Toggles");
    // Sliders: one group of volume colours, shown by either switch.
    auto volume = search({"volume", "parts"});
    const nlohmann::json* parts = findResult(volume, "NIMControlCenterSlidersPrefsListController", "Volume Parts to Colorize");
    ASSERT_TRUE(parts) << nlohmann::json(volume).dump();
    EXPECT_EQ((*parts)["shownWhen"], "appears when Colorize Control Center Slider is on or Colorize Volume Indicator is on");
    // A row nested in that group needs its own switch as well as one of the two.
    auto icon = search({"light", "mode", "icon"});
    bool nested = false;
    for (auto& result : icon)
        if (result["page"] == "NIMControlCenterSlidersPrefsListController" && result["id"] == "volumeIconColorChild1") {
            nested = true;
            EXPECT_EQ(result["shownWhen"],
                      "appears when Colorize Icon is on and either Colorize Control Center Slider is on or Colorize Volume Indicator is on");
        }
    EXPECT_TRUE(nested) << nlohmann::json(icon).dump();

}

TEST(Search, AResultBehindSwitchesOnTheWayNamesThem)
{
    auto results = search({"dock", "style"});
    const nlohmann::json* style = findResult(results, "NIMHomeScreenDockPrefsListController", "Dock Style");
    ASSERT_TRUE(style) << nlohmann::json(results).dump();
    EXPECT_EQ((*style)["needs"], "needs Enable Nimbra and Home Screen \u203a Enabled");
    ASSERT_EQ((*style)["needsRows"].size(), 2u) << style->dump();
    auto& outer = (*style)["needsRows"][0];
    EXPECT_EQ(outer["route"], "");
    EXPECT_EQ(outer["id"], "topLevelSwitch");
    EXPECT_EQ(outer["key"], "nimbraEnabled");
    EXPECT_EQ(outer["label"], "Enable Nimbra");
    EXPECT_EQ(outer["values"], nlohmann::json::array({true}));
    auto& inner = (*style)["needsRows"][1];
    EXPECT_EQ(inner["route"], "HomeScreenRoot");
    EXPECT_EQ(inner["key"], "enabled");
    EXPECT_EQ(inner["label"], "Enabled");
    // A page always reached says nothing; the root page's own rows neither.
    for (auto& result : search({"enable", "nimbra"}))
        if (result["page"] == "NIMRootListController") {
            EXPECT_TRUE(result["needs"].is_null());
            EXPECT_EQ(result["needsRows"], nlohmann::json::array());
        }

}

TEST(Search, NeedsWords)
{
    auto run = test::runProgram({"search", " "});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.errors.find("search needs the words"), std::string::npos) << run.errors;
}
