// The sweep's patterns behave as NSRegularExpression runs them: case-insensitive, unanchored, "."
// any character, "w+" a run of the letter w.

#include "TestSupport.h"

#include "storage/NIMReset.h"

#include <gtest/gtest.h>

namespace {

bool matches(const std::string& pattern, const std::string& name)
{
    test::TempDir root;
    Process process({.root = root.path()});
    test::writeFile(test::under(root.path(), "/var/jb/prefs/" + name), "x");
    removeFiles(pattern, "/var/jb/prefs");
    return !std::filesystem::exists(test::under(root.path(), "/var/jb/prefs/" + name));
}

}  // namespace

TEST(RemoveFiles, PatternsMatchAsTheDeviceMatchesThem)
{
    EXPECT_TRUE(matches("veltram.nimbraprefs", "com.veltram.nimbraprefs.cpuinfo.colors.plist"));
    EXPECT_TRUE(matches("veltram.nimbraprefs", "COM.VELTRAM.NIMBRAPREFS.PLIST"));
    EXPECT_TRUE(matches("veltram.nimbraprefs", "comXveltramXnimbraprefs.plist")) << "\".\" is any character";
    EXPECT_FALSE(matches("veltram.nimbraprefs", "com.apple.springboard.plist"));

    const std::string settings = "veltram.nimbraprefs.w+.(?!colors)";
    EXPECT_TRUE(matches(settings, "com.veltram.nimbraprefs.widgets.plist"));
    EXPECT_TRUE(matches(settings, "com.veltram.nimbraprefs.WWW.plist"));
    EXPECT_FALSE(matches(settings, "com.veltram.nimbraprefs.batteryline.plist"));
    EXPECT_FALSE(matches(settings, "com.veltram.nimbraprefs.w.colors.plist"));

    const std::string colours = "veltram.nimbraprefs.w+.colors.plist";
    EXPECT_TRUE(matches(colours, "com.veltram.nimbraprefs.ww.colors.plist"));
    EXPECT_FALSE(matches(colours, "com.veltram.nimbraprefs.widgets.colors.plist"));
    EXPECT_FALSE(matches(colours, "com.veltram.nimbraprefs.batteryline.colors.plist"));
}

TEST(RemoveFiles, MatchingFoldersGoWholeAndAnInvalidPatternRemovesNothing)
{
    test::TempDir root;
    Process process({.root = root.path()});
    auto folder = test::under(root.path(), "/var/jb/prefs");
    test::writeFile(folder / "com.veltram.nimbraprefs.backup/a.plist", "x");
    test::writeFile(folder / "keep.plist", "x");
    removeFiles("(unclosed", "/var/jb/prefs");
    EXPECT_TRUE(std::filesystem::exists(folder / "com.veltram.nimbraprefs.backup/a.plist"));
    removeFiles("veltram.nimbraprefs", "/var/jb/prefs");
    EXPECT_FALSE(std::filesystem::exists(folder / "com.veltram.nimbraprefs.backup"));
    EXPECT_TRUE(std::filesystem::exists(folder / "keep.plist"));
    removeFiles("veltram", "/var/jb/no-such-folder");
}

TEST(RemoveFiles, APreferencesFolderThatIsALinkIsSweptThroughItsLinkAndNothingBelowIsFollowed)
{
    test::TempDir root, elsewhere, beyond;
    const std::string preferences = "/var/jb/var/mobile/Library/Preferences";
    std::filesystem::create_directories(test::under(root.path(), preferences).parent_path());
    std::filesystem::create_directory_symlink(elsewhere.path(), test::under(root.path(), preferences));
    for (auto name : {"com.veltram.nimbraprefs.w.plist", "com.veltram.nimbraprefs.batteryline.colors.plist",
                      "sub/com.veltram.nimbraprefs.time.plist", "com.apple.springboard.plist"})
        test::writeFile(elsewhere / name, "x");
    test::writeFile(beyond / "com.veltram.nimbraprefs.kept.plist", "x");
    std::filesystem::create_directory_symlink(beyond.path(), elsewhere / "linked");

    auto run = test::runScript({"--root", root.path().string()},
                               "open NIMNimbraSettingsPrefsListController\ncall resetAll\nalert Confirm\nevents\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    std::vector<std::string> deleted;
    for (auto& event : run.lines.back()["events"])
        if (event["event"] == "delete")
            deleted.push_back(event["path"]);
    EXPECT_EQ(deleted, (std::vector<std::string>{
                           preferences + "/com.veltram.nimbraprefs.batteryline.colors.plist",
                           preferences + "/com.veltram.nimbraprefs.w.plist",
                           preferences + "/sub/com.veltram.nimbraprefs.time.plist",
                       }));
    EXPECT_FALSE(std::filesystem::exists(elsewhere / "com.veltram.nimbraprefs.w.plist"));
    EXPECT_TRUE(std::filesystem::exists(elsewhere / "com.apple.springboard.plist"));
    EXPECT_TRUE(std::filesystem::exists(beyond / "com.veltram.nimbraprefs.kept.plist")) << "a link below is never followed";
}
