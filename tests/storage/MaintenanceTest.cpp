// The maintenance page's resets and clears, run against a Preferences folder holding files of every
// kind: what each deletes, in which order, what it leaves, and the immediate respring.

#include "TestSupport.h"

#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <set>

namespace fs = std::filesystem;

namespace {

const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/";
const std::string kNimbra = "/var/jb/var/mobile/Library/Nimbra/";

// Every kind of file a device may hold, relative to the Preferences folder.
const std::vector<std::string> kFiles{
    "com.veltram.nimbraprefs.plist",
    "com.veltram.nimbraprefs.batteryline.plist",
    "com.veltram.nimbraprefs.batteryline.colors.plist",
    "com.veltram.nimbraprefs.batteryline.blackListedApps.plist",
    "com.veltram.nimbraprefs.cpuinfo.doubleTapApp.plist",
    "com.veltram.nimbraprefs.widgets.plist",
    "com.veltram.nimbraprefs.w.colors.plist",
    "COM.VELTRAM.NIMBRAPREFS.HOMESCREEN.PLIST",
    "nested/com.veltram.nimbraprefs.time.plist",
    "com.apple.springboard.plist",
    "com.othervendor.tweak.plist",
};

struct MaintenanceTest : ::testing::Test {
    test::SessionOnFreshRoot session;
    test::TempDir outside;

    MaintenanceTest()
    {
        for (auto& name : kFiles)
            test::writeFile(host(kPreferences + name), contents(name));
        for (auto& cache : {"AppIconColors.cache", "SpringboardAlbumColors.cache", "MusicAppAlbumColors.cache"})
            test::writeFile(host(kNimbra + cache), "cache");
        test::writeFile(outside / "com.veltram.nimbraprefs.outside.plist", "not ours");
        fs::create_directory_symlink(outside.path(), host(kPreferences + "linked"));
        session->open("NIMNimbraSettingsPrefsListController");
        session.events();
    }
    static std::string contents(const std::string& name)
    {
        return PropertyListSerialization::dataWithPropertyList(PlistValue(PlistDictionary{{"file", PlistValue(name)}}),
                                                               PropertyListSerialization::Format::XML);
    }
    fs::path host(const std::string& logical) { return test::under(session.root.path(), logical); }
    std::vector<std::string> deleted()
    {
        std::vector<std::string> paths;
        for (auto& event : session.events("delete"))
            paths.push_back(event["path"]);
        return paths;
    }
    std::set<std::string> remaining()
    {
        std::set<std::string> names;
        for (auto& entry : fs::recursive_directory_iterator(host(kPreferences)))
            if (entry.is_regular_file() || entry.is_symlink())
                names.insert(entry.path().lexically_relative(host(kPreferences)).generic_string());
        return names;
    }
    void confirm(const std::string& action, const std::string& message)
    {
        session->call(action);
        auto alerts = session.events("alert");
        ASSERT_EQ(alerts.size(), 1u);
        EXPECT_EQ(alerts[0].dump(), R"({"event":"alert","title":"Nimbra","message":")" + message +
                                        R"(","actions":[{"title":"Confirm","style":"destructive"},{"title":"Cancel","style":"cancel"}]})");
        session->alert("Confirm");
    }
    bool respringsAtOnce()
    {
        session->wait(1.5);
        return session.events("respring").size() == 1;
    }
};

}  // namespace

TEST_F(MaintenanceTest, ResetAllDeletesEveryProductFileInAnyCaseAndTheCaches)
{
    confirm("resetAll", "Do you really want to reset all settings and colors?");
    auto paths = deleted();
    EXPECT_EQ(paths, (std::vector<std::string>{
                         kPreferences + "COM.VELTRAM.NIMBRAPREFS.HOMESCREEN.PLIST",
                         kPreferences + "com.veltram.nimbraprefs.batteryline.blackListedApps.plist",
                         kPreferences + "com.veltram.nimbraprefs.batteryline.colors.plist",
                         kPreferences + "com.veltram.nimbraprefs.batteryline.plist",
                         kPreferences + "com.veltram.nimbraprefs.cpuinfo.doubleTapApp.plist",
                         kPreferences + "com.veltram.nimbraprefs.plist",
                         kPreferences + "com.veltram.nimbraprefs.w.colors.plist",
                         kPreferences + "com.veltram.nimbraprefs.widgets.plist",
                         kPreferences + "nested/com.veltram.nimbraprefs.time.plist",
                         kNimbra + "AppIconColors.cache",
                         kNimbra + "SpringboardAlbumColors.cache",
                         kNimbra + "MusicAppAlbumColors.cache",
                     }));
    EXPECT_EQ(remaining(), (std::set<std::string>{"com.apple.springboard.plist", "com.othervendor.tweak.plist", "linked"}));
    EXPECT_TRUE(fs::exists(outside / "com.veltram.nimbraprefs.outside.plist")) << "the walk never follows a link";
    EXPECT_TRUE(respringsAtOnce());
}

TEST_F(MaintenanceTest, ResetSettingsDeletesOnlyWNamedGroupFilesAfterClearingTheDomains)
{
    confirm("resetSettings", "Do you really want to reset all settings?");
    EXPECT_EQ(deleted(), (std::vector<std::string>{
                             kPreferences + "com.veltram.nimbraprefs.plist",
                             kPreferences + "com.veltram.nimbraprefs.widgets.plist",
                             kNimbra + "AppIconColors.cache",
                             kNimbra + "SpringboardAlbumColors.cache",
                             kNimbra + "MusicAppAlbumColors.cache",
                         }));
    auto left = remaining();
    EXPECT_TRUE(left.contains("com.veltram.nimbraprefs.batteryline.plist"));
    EXPECT_TRUE(left.contains("com.veltram.nimbraprefs.w.colors.plist")) << "(?!colors) keeps it";
    EXPECT_TRUE(left.contains("com.veltram.nimbraprefs.batteryline.blackListedApps.plist"));
    EXPECT_EQ(test::readFile(host(kPreferences + "com.veltram.nimbraprefs.batteryline.plist")).rfind("bplist00", 0), 0u)
        << "its keys were cleared through the domain: an empty property list is left";
    EXPECT_EQ(test::readFile(host(kPreferences + "com.veltram.nimbraprefs.batteryline.colors.plist")),
              contents("com.veltram.nimbraprefs.batteryline.colors.plist"))
        << "no colour domain is cleared";
    EXPECT_TRUE(respringsAtOnce());
}

TEST_F(MaintenanceTest, ResetColorsMatchesNoGroupColourFileButClearsTheCaches)
{
    confirm("resetColors", "Do you really want to reset all colors?");
    EXPECT_EQ(deleted(), (std::vector<std::string>{
                             kPreferences + "com.veltram.nimbraprefs.w.colors.plist",
                             kNimbra + "AppIconColors.cache",
                             kNimbra + "SpringboardAlbumColors.cache",
                             kNimbra + "MusicAppAlbumColors.cache",
                         }));
    EXPECT_TRUE(remaining().contains("com.veltram.nimbraprefs.batteryline.colors.plist"));
    EXPECT_TRUE(respringsAtOnce());
}

TEST_F(MaintenanceTest, CacheClearsDeleteTheirCachesInOrder)
{
    confirm("clearIconColorsCache", "Do you really want to clear icon colors cache?");
    EXPECT_EQ(deleted(), (std::vector<std::string>{kNimbra + "AppIconColors.cache"}));
    EXPECT_TRUE(respringsAtOnce());
    confirm("clearAlbumColorsCache", "Do you really want to clear album colors cache?");
    EXPECT_EQ(deleted(), (std::vector<std::string>{kNimbra + "SpringboardAlbumColors.cache", kNimbra + "MusicAppAlbumColors.cache"}));
    EXPECT_EQ(kFiles.size() + 1, remaining().size());
}

TEST_F(MaintenanceTest, CancelChangesNothingAndDoesNotArmTheButton)
{
    for (const char* action : {"resetAll", "resetSettings", "resetColors", "clearIconColorsCache", "clearAlbumColorsCache"}) {
        session->call(action);
        session->alert("Cancel");
    }
    session->wait(5);
    auto events = session.events();
    for (auto& event : events)
        EXPECT_TRUE(event["event"] == "alert" || event["event"] == "dismiss") << event.dump();
    EXPECT_EQ(remaining().size(), kFiles.size() + 1);
    session->call("respring");
    auto buttons = session.events("button");
    ASSERT_EQ(buttons.size(), 1u);
    EXPECT_EQ(buttons[0]["title"], "Sure?") << "the first tap after a cancel only arms the button";
}

TEST_F(MaintenanceTest, ChoosingAColourPickerRerunsTheLibraryChoice)
{
    test::writeFile(host("/var/jb/usr/lib/libsparkcolourpicker.dylib"), "library");
    session->set("selectedColorPicker", PlistValue(2));
    auto opened = session.events("dlopen");
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0]["path"], "/var/jb/usr/lib/libsparkcolourpicker.dylib");
    session->open("NIMBatteryLineColorsPrefsListController");
    session->set("lpmColorEnabled", PlistValue(true));
    auto rows = session->rows()["rows"];
    auto colour = std::find_if(rows.begin(), rows.end(), [](auto& row) { return row["properties"].value("id", "") == "lpmChild"; });
    ASSERT_NE(colour, rows.end());
    EXPECT_EQ((*colour)["cellClass"], "SparkColourPickerCell");
    EXPECT_EQ((*colour)["properties"]["libsparkcolourpicker"]["key"], "lpmColor");

    session->back();
    session->set("selectedColorPicker", PlistValue(9));
    opened = session.events("dlopen");
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0]["path"], "/var/jb/usr/lib/libCSColorPicker.dylib") << "any value but 1 and 2 opens the third library";
}
