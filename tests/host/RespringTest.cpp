// The respring button and the shared respring, end to end through `nimbra-prefs script`.

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

const std::string kOpen = "open NIMBatteryLineColorsPrefsListController\nevents\n";

std::vector<nlohmann::json> eventsOf(const test::ScriptRun& run, std::size_t line)
{
    return run.lines.at(line)["events"].get<std::vector<nlohmann::json>>();
}

}  // namespace

TEST(RespringButton, ArmsThenRespringsOnASecondTapWithinThreeSeconds)
{
    test::TempDir root;
    auto run = test::runScript({"--root", root.path().string()},
                               kOpen + "call respring\nevents\nwait 2.9\ncall respring\nevents\nwait 1.49\nevents\nwait 0.01\nevents\nwait 0.2\nevents\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(eventsOf(run, 1), (std::vector<nlohmann::json>{{{"event", "button"}, {"title", "Sure?"}, {"tint", {231, 76, 60, 255}}}}));
    auto second = eventsOf(run, 2);
    ASSERT_EQ(second.size(), 2u);
    EXPECT_EQ(second[0], (nlohmann::json{{"event", "blur"}, {"style", 9}, {"alpha", 0.0}}));
    EXPECT_EQ(second[1], (nlohmann::json{{"event", "animate"}, {"view", "blur"}, {"alpha", 1.0}, {"duration", 1.5}}));
    EXPECT_EQ(eventsOf(run, 3), (std::vector<nlohmann::json>{{{"event", "button"}, {"title", "Respring"}, {"tint", {255, 255, 255, 255}}}}))
        << "the 3-second block still reverts the button";
    EXPECT_EQ(eventsOf(run, 4), (std::vector<nlohmann::json>{{{"event", "respring"}, {"url", "prefs:root=Nimbra"}}}));
    EXPECT_TRUE(eventsOf(run, 5).empty());
}

TEST(RespringButton, AfterThreeSecondsATapOnlyArmsAgain)
{
    test::TempDir root;
    auto run = test::runScript({"--root", root.path().string()}, kOpen + "call respring\nwait 3.1\nevents\ncall respring\nevents\nwait 5\nevents\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    auto afterRevert = eventsOf(run, 1);
    ASSERT_EQ(afterRevert.size(), 2u);
    EXPECT_EQ(afterRevert.back()["title"], "Respring");
    EXPECT_EQ(eventsOf(run, 2), (std::vector<nlohmann::json>{{{"event", "button"}, {"title", "Sure?"}, {"tint", {231, 76, 60, 255}}}}));
    for (auto& event : eventsOf(run, 3)) {
        EXPECT_NE(event["event"], "respring");
    }
}

TEST(RespringButton, InsideTheCompanionAppTheReloadToolRunsAndIsWaitedFor)
{
    test::TempDir root;
    auto tool = test::under(root.path(), "/var/jb/usr/bin/sbreload");
    auto marker = root / "sbreload-ran";
    test::writeFile(tool, "#!/bin/sh\nsleep 0.2\necho \"ran with $# arguments\" > '" + marker.string() + "'\n");
    ::chmod(tool.c_str(), 0755);
    auto run = test::runScript({"--root", root.path().string(), "--host-bundle", "com.veltram.nimbraapp"},
                               kOpen + "call respring\ncall respring\nwait 1.5\nevents\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    auto events = eventsOf(run, 1);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back(), (nlohmann::json{{"event", "spawn"}, {"path", "/var/jb/usr/bin/sbreload"}, {"argv", {"sbreload"}}}));
    EXPECT_EQ(test::readFile(marker), "ran with 0 arguments\n") << "the tool ran to its end before the script went on";
}
