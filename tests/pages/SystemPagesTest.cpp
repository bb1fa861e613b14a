// System-wide, stock app and Settings app pages: the system root's departures, the keyboard's
// modes, the close buttons, the resets that close their app, and the dial screen's asymmetry.

#include "pages/PageTestSupport.h"

#include "frame/CollapsibleGroupRule.h"

#include <gtest/gtest.h>

using test::chainLines;

namespace {

const std::string kSystem = "com.veltram.nimbraprefs.system";
const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs";

}  // namespace

TEST(SystemRoot, SwitchingOffAnimatesEveryRemovalButModernCells)
{
    test::PageSession s;
    s.store(kSystem, "enableModernCells", PlistValue(true));
    s.store(kSystem, "hideHomeBar", PlistValue(true));
    s.open("NIMSystemRootPrefsListController");
    s.set("enabled", PlistValue(true));
    EXPECT_FALSE(s.shows("homeBarChild")) << "the home bar is hidden, so its row is not";
    EXPECT_TRUE(s.shows("modernCellsChild"));
    EXPECT_TRUE(s.shows("flashColorParent") && s.shows("scrollBarsChild"));
    s.set("enabled", PlistValue(false));
    for (auto& removal : s.events("remove"))
        EXPECT_EQ(removal["animated"].get<bool>(), removal["ids"][0] != "modernCellsChild") << removal.dump();
}

TEST(SystemRoot, InvertedSwitchesAndNestedColours)
{
    test::PageSession s;
    s.store(kSystem, "enabled", PlistValue(true));
    s.store(kSystem, "hideScreenshotFlash", PlistValue(true));
    s.store(kSystem, "enableCustomFlashColor", PlistValue(true));
    s.open("NIMSystemRootPrefsListController");
    s.set("hideScreenshotFlash", PlistValue(false));
    EXPECT_EQ(s.insertions(), (std::vector<std::string>{"flashColorParent after topLevelChild22"} +
                               chainLines({"flashColorLight", "flashColorDark"}, "flashColorParent")));
    s.set("scrollBarsStyle", PlistValue(2));
    EXPECT_EQ(s.removals(), std::vector<std::string>{"scrollBarsChild"});
    s->call("showTestAlert");
    EXPECT_EQ(s.events("alert").at(0).dump(),
              R"({"event":"alert","title":"Nimbra","message":"Test Alert","actions":[{"title":"OK","style":"default"},{"title":"Cancel","style":"cancel"}]})");
    s->alert("OK");
    s->call("selectAlwaysDarkModeApps");
    s->pick({"com.apple.mobilesafari"});
    s->back();
    s->call("selectModernCellsApps");
    s->pick({"com.apple.Music"});
    EXPECT_EQ(s->file(kPreferences + ".system.apps.plist")["value"],
              (nlohmann::ordered_json{{"darkApps", {"com.apple.mobilesafari"}}, {"modernCellsApps", {"com.apple.Music"}}}));
    s->back();
    s.events();
    s->call("resetSettings");
    s->alert("Confirm");
    std::vector<std::string> deleted;
    for (auto& event : s.events("delete"))
        deleted.push_back(event["path"]);
    EXPECT_EQ(deleted, std::vector<std::string>{kPreferences + ".system.plist"}) << "the app lists stay";
}

TEST(Keyboard, ColourModesShowTheSystemRowOrTheCustomRows)
{
    const std::string keyboard = "com.veltram.nimbraprefs.keyboard";
    auto custom = numbered("colorModeChildCustom%d", 1, 7);
    test::PageSession s;
    s.store(keyboard, "enabled", PlistValue(true));
    s.open("NIMKeyboardPrefsListController");
    s.set("colorMode", PlistValue(1));
    EXPECT_EQ(s.insertions(), std::vector<std::string>{"colorModeChildSystem after topLevelChild6"});
    s.set("colorMode", PlistValue(2));
    EXPECT_EQ(s.removals(), std::vector<std::string>{"colorModeChildSystem"});
    auto colours = numbered("customColorChild%d", 1, 4);
    EXPECT_EQ(s.insertions(), chainLines(custom, "topLevelChild6") + chainLines(colours, "colorModeChildCustom7"))
        << "the background defaults to four colours";
    s->reload();
    EXPECT_EQ(s.shownOf(colours), colours) << "and reopening shows the same four";
    s.forget();
    s.set("customBGColorMode", PlistValue(1));
    EXPECT_EQ(s.removals(), numbered("customColorChild%d", 2, 4));
    s.set("customBGColorMode", PlistValue(2));
    EXPECT_EQ(s.insertions(), chainLines(numbered("customColorChild%d", 2, 4), "customColorChild1"));
    s.set("customBGColorMode", PlistValue(2));
    EXPECT_EQ(s.insertions().size(), 3u) << "inserted again: no presence check";

    test::PageSession three;
    three.store(keyboard, "enabled", PlistValue(true));
    three.store(keyboard, "colorMode", PlistValue(3));
    three.open("NIMKeyboardPrefsListController");
    EXPECT_TRUE(three.shows("colorModeChildSystem") && three.shows("colorModeChildCustom1")) << "the reload removes nothing for 3";
}

TEST(StockApps, CloseButtonsTerminateTheirApp)
{
    struct App {
        const char* page;
        const char* title;
        const char* bundle;
        const char* name;
    };
    for (auto& app : std::vector<App>{{"NIMAppStorePrefsListController", "Close\nApp Store", "com.apple.AppStore", "App Store"},
                                      {"NIMPhoneTabsPrefsListController", "Close\nPhone", "com.apple.mobilephone", "Phone"},
                                      {"NIMPhoneDialScreenPrefsListController", "Close\nPhone", "com.apple.mobilephone", "Phone"},
                                      {"NIMPhotosPrefsListController", "Close\nPhotos", "com.apple.mobileslideshow", "Photos"},
                                      {"NIMSettingsWiFiViewPrefsListController", "Close\nSettings", "com.apple.Preferences", "Settings"}}) {
        SCOPED_TRACE(app.page);
        test::PageSession s;
        s->open(app.page);
        auto buttons = s.events("button");
        ASSERT_EQ(buttons.size(), 1u);
        EXPECT_EQ(buttons[0]["title"], app.title);
        s.forget();
        s->call("closeApp");
        auto events = s.events();
        ASSERT_EQ(events.size(), 3u);
        EXPECT_EQ(events[1].dump(), std::string(R"({"event":"terminate","bundleID":")") + app.bundle + "\"}");
        EXPECT_EQ(events[2]["message"], std::string(app.name) + " Closed Successfully!");
    }
}

TEST(StockApps, AppResetsCloseTheirAppInsteadOfRespringing)
{
    for (auto [page, suffix, bundle, message] : {std::tuple{"NIMMusicPrefsListController", ".music", "com.apple.Music", "Music"},
                                                 {"NIMPhoneRootPrefsListController", ".phone", "com.apple.mobilephone", "Phone"},
                                                 {"NIMSettingsRootPrefsListController", ".settings", "com.apple.Preferences", "Settings App"}}) {
        SCOPED_TRACE(page);
        test::PageSession s;
        s.store(std::string("com.veltram.nimbraprefs") + suffix, "stored", PlistValue(true));
        s.open(page);
        s->call("resetSettings");
        EXPECT_EQ(s.events("alert").at(0)["message"], std::string("Do you really want to reset ") + message + " Settings?");
        s->alert("Confirm");
        s->wait(2);
        std::vector<std::string> kinds;
        for (auto& event : s.events())
            kinds.push_back(event["event"]);
        EXPECT_EQ(kinds, (std::vector<std::string>{"dismiss", "delete", "dlopen", "terminate", "alert"}));
        EXPECT_FALSE(s->file(kPreferences + suffix + ".plist")["exists"]);
    }
}

TEST(StockApps, TheDialScreenKeysTheNumberPadToTheKeypadStyleOnReload)
{
    const std::string phone = "com.veltram.nimbraprefs.phone";
    test::PageSession s;
    s.store(phone, "enableDialScreenColorization", PlistValue(true));
    s.store(phone, "enableCustomNumpadBGColor", PlistValue(true));
    s.open("NIMPhoneDialScreenPrefsListController");
    EXPECT_FALSE(s.shows("numpadChild")) << "the keypad style is off";
    auto colours = numbered("bgColorChild%d", 1, 4);
    EXPECT_EQ(s.shownOf(colours), colours) << "mode 0 shows four";
    s.set("backgroundColorMode", PlistValue(2));
    EXPECT_EQ(s.shownOf(colours), std::vector<std::string>{"bgColorChild1"});
    s.set("backgroundColorMode", PlistValue(1));
    EXPECT_TRUE(s.shownOf(colours).empty());
    s.set("backgroundColorMode", PlistValue(3));
    EXPECT_EQ(s.shownOf(colours), colours);
    s.set("enableCustomNumpadBGColor", PlistValue(false));
    s.set("enableCustomNumpadBGColor", PlistValue(true));
    EXPECT_TRUE(s.shows("numpadChild"));
}

TEST(SettingsApp, NameRowsFollowTheirOwnSwitchesOnReload)
{
    test::PageSession s;
    s.store("com.veltram.nimbraprefs.settings", "enableCustomFirstName", PlistValue(true));
    s.open("NIMSettingsRootPrefsListController");
    EXPECT_TRUE(s.shows("firstNameChild")) << "the reload leaves the name rows to their own checks";
    s.set("enabled", PlistValue(true));
    s.set("enabled", PlistValue(false));
    EXPECT_FALSE(s.shows("firstNameChild")) << "the hook removes them with the rest";
    s.set("enabled", PlistValue(true));
    s.forget();
    s.set("hideSearchBar", PlistValue(true));
    EXPECT_EQ(s.removals(), std::vector<std::string>{"searchBarChild"});
    s.set("hideSearchBar", PlistValue(false));
    EXPECT_EQ(s.insertions(), std::vector<std::string>{"searchBarChild after topLevelChild10"});
}
