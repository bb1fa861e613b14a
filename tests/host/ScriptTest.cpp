// The scripted-session interface, end to end through the `nimbra-prefs` program.

#include "ProgramRun.h"
#include "TestSupport.h"

#include "host/ScriptRunner.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

const std::string kBatteryLine = "/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.batteryline.plist";

}  // namespace

TEST(Script, TheBatteryLineColourPageFollowsItsSwitches)
{
    test::TempDir root;
    auto run = test::runScript({"--root", root.path().string()},
                               "# a comment\n\nopen NIMBatteryLineColorsPrefsListController\nshow\nevents\n"
                               "set lpmColorEnabled true\nset lpmColorEnabled true\nshow\nevents\n"
                               "set lpmColorEnabled false\nevents\n"
                               "set chargingColorEnabled true\nback\n");
    ASSERT_EQ(run.lines.size(), 6u);
    EXPECT_EQ(run.lines[0], (nlohmann::json{{"page", "NIMBatteryLineColorsPrefsListController"},
                                            {"ids", {"chargingParent", "lpmParent", "lowBatteryParent"}}}));
    for (auto& event : run.lines[1]["events"]) {
        if (event["event"] == "remove") {
            EXPECT_FALSE(event["animated"].get<bool>());
        }
    }
    EXPECT_EQ(run.lines[2]["ids"], nlohmann::json({"chargingParent", "lpmParent", "lpmChild", "lowBatteryParent"}));
    std::vector<nlohmann::json> inserts;
    for (auto& event : run.lines[3]["events"])
        if (event["event"] == "insert")
            inserts.push_back(event);
    EXPECT_EQ(inserts, (std::vector<nlohmann::json>{{{"event", "insert"}, {"ids", {"lpmChild"}}, {"after", "lpmParent"}, {"animated", true}}}));
    EXPECT_EQ(run.lines[4]["events"].back(), (nlohmann::json{{"event", "remove"}, {"ids", {"lpmChild"}}, {"animated", true}}));
    EXPECT_EQ(run.lines[5], (nlohmann::json{{"error", "there is no page to go back to"}, {"line", 13}}));
    EXPECT_EQ(run.status, 1);

    auto reopened = test::runScript({"--root", root.path().string()},
                                    "open NIMBatteryLineColorsPrefsListController\nshow\nfile " + kBatteryLine + "\n");
    ASSERT_EQ(reopened.status, 0) << reopened.errors;
    EXPECT_EQ(reopened.lines[0]["ids"], nlohmann::json({"chargingParent", "chargingChild", "lpmParent", "lowBatteryParent"}));
    EXPECT_EQ(reopened.lines[1], (nlohmann::json{{"path", kBatteryLine}, {"exists", true},
                                                 {"value", {{"chargingColorEnabled", true}, {"lpmColorEnabled", false}}}}));
}

TEST(Script, ValuesOfEveryKindReachTheDomain)
{
    test::TempDir root;
    auto run = test::runScript({"--root", root.path().string()},
                               "write com.veltram.nimbraprefs.x flag true\nwrite com.veltram.nimbraprefs.x count -3\n"
                               "write com.veltram.nimbraprefs.x scale 0.75\n"
                               "write com.veltram.nimbraprefs.x text \"say \\\"hi\\\"\\n\"\n"
                               "file /var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.x.plist\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.lines[0]["value"], (nlohmann::json{{"count", -3}, {"flag", true}, {"scale", 0.75}, {"text", "say \"hi\"\n"}}));
}

TEST(Script, CommandsThatCannotBeCarriedOutStopTheRunWithTheirLine)
{
    test::TempDir root;
    struct Case {
        std::string script;
        std::string error;
    };
    const std::string open = "open NIMBatteryLineColorsPrefsListController\n";
    for (auto& [script, error] : std::vector<Case>{
             {"open NIMNoSuchPrefsListController\n", "unknown page controller \"NIMNoSuchPrefsListController\""},
             {"open PSSpecifier\n", "unknown page controller \"PSSpecifier\""},
             {"show\n", "no page is open"},
             {open + "set noSuchKey true\n", "NIMBatteryLineColorsPrefsListController shows no row with key \"noSuchKey\""},
             {open + "set lpmColorEnabled yes please\n", "malformed value \"yes please\" (true, false, a number or a \"string\")"},
             {open + "set lpmColorEnabled \"unterminated\n", "malformed value \"\"unterminated\" (true, false, a number or a \"string\")"},
             {open + "alert Confirm\n", "no alert is shown"},
             {open + "call noSuchAction\n", "NIMBatteryLineColorsPrefsListController has no action noSuchAction"},
             {open + "tap lpmChild\n", "NIMBatteryLineColorsPrefsListController shows no row with id \"lpmChild\""},
             {open + "tap lpmParent\n", "row \"lpmParent\" does nothing when tapped"},
             {open + "removeimage lpmParent\n", "row \"lpmParent\" is not a picture row"},
             {open + "removeimage\n", "missing row id"},
             {"wait -1\n", "cannot wait a negative time"},
             {"wait soon\n", "malformed value \"soon\" (true, false, a number or a \"string\")"},
             {"write ../escape key 1\n", "\"../escape\" is not a domain identifier"},
             {"file relative/path\n", "\"relative/path\" is not an absolute device path"},
             {"show extra\n", "unexpected \"extra\" at the end of the line"},
             {"\xff\xfe\n", "unknown command \"\xEF\xBF\xBD\xEF\xBF\xBD\""},
         }) {
        auto run = test::runScript({"--root", root.path().string()}, script);
        EXPECT_EQ(run.status, 1) << script;
        ASSERT_FALSE(run.lines.empty()) << script;
        auto expectedLine = static_cast<int>(std::count(script.begin(), script.end(), '\n'));
        EXPECT_EQ(run.lines.back(), (nlohmann::json{{"error", error}, {"line", expectedLine}})) << script;
    }
}

TEST(Script, AnUnreadableDefinitionOpensAnEmptyPageAndSaysWhichFile)
{
    test::TempDir root, resources;
    test::writeFile(resources / "pages/Modules/BatteryLineColors.plist", "<plist><dict>");
    auto run = test::runExecutable(test::prefsExe(), {"--root", root.path().string(), "script"}, {"NIMBRA_RESOURCES=" + resources.path().string()},
                                   "open NIMBatteryLineColorsPrefsListController\nshow\nset x 1\n");
    EXPECT_EQ(test::jsonLines(run.output).at(0)["ids"], nlohmann::json::array());
    EXPECT_NE(run.errors.find("pages/Modules/BatteryLineColors.plist"), std::string::npos) << run.errors;
    EXPECT_EQ(run.status, 1);
}

TEST(Script, TheShippedTourRunsToItsEnd)
{
    test::TempDir root;
    auto run = test::runScript({"--root", root.path().string()}, test::readFile(std::filesystem::path(test::resourcesDir()) / "tour.nps"));
    EXPECT_EQ(run.status, 0) << run.errors << (run.lines.empty() ? "" : run.lines.back().dump());
    ASSERT_FALSE(run.lines.empty());
    EXPECT_EQ(run.lines.back()["value"]["lpmColorEnabled"], true);
}

TEST(Script, EventsNobodyReadsAreBoundedAndCounted)
{
    // Each flip of the root switch records several events; 3,000 flips record far more than are kept.
    test::SessionOnFreshRoot session;
    std::string script = "open NIMRootListController\n";
    for (int i = 0; i < 3000; ++i)
        script += i % 2 ? "set nimbraEnabled false\n" : "set nimbraEnabled true\n";
    std::istringstream in(script);
    std::ostringstream out, diagnostics;
    ASSERT_EQ(runScript(*session, in, out, diagnostics), 0) << out.str();
    EXPECT_LE(session->process().events().pending().size(), Session::kUnreadEvents);
    auto events = session->events();
    ASSERT_TRUE(events.contains("dropped")) << "no event was dropped: the test records too few";
    EXPECT_GT(events["dropped"].get<std::size_t>(), 0u);
    EXPECT_EQ(events["events"].size(), Session::kUnreadEvents);
    // The newest events are the ones kept: they end with what one flip off records.
    test::SessionOnFreshRoot reference;
    std::istringstream flips("open NIMRootListController\nset nimbraEnabled true\n");
    ASSERT_EQ(runScript(*reference, flips, out, diagnostics), 0);
    reference->events();
    reference->set("nimbraEnabled", PlistValue(false));
    reference->commit();
    auto last = reference->events()["events"];
    ASSERT_FALSE(last.empty());
    ASSERT_GE(events["events"].size(), last.size());
    for (std::size_t i = 0; i < last.size(); ++i)
        EXPECT_EQ(events["events"][events["events"].size() - last.size() + i], last[i]);
    // Read, the buffer starts afresh.
    EXPECT_FALSE(session->events().contains("dropped"));
}

TEST(Script, ASliderStoresARealWhateverNumberIsTyped)
{
    test::TempDir root;
    auto run = test::runScript({"--root", root.path().string()}, "open NIMTovinBackgroundPrefsListController\nset bannerCornerRadius 5\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    auto stored = PropertyListSerialization::propertyListWithData(
        test::readFile(test::under(root.path(), "/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.tovin.plist")));
    ASSERT_TRUE(stored);
    PlistValue value = (*stored)["bannerCornerRadius"];
    EXPECT_EQ(value.kind(), PlistValue::Kind::Real);
    EXPECT_EQ(value.doubleValue(), 5.0);
}
