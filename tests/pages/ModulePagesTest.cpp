// The overlay modules' pages, grouped by page kind: each kind is tested once with every module's
// bounds, then the pages with behaviour of their own.

#include "pages/PageTestSupport.h"

#include "frame/CollapsibleGroupRule.h"

#include <gtest/gtest.h>

using test::chainLines;
using test::unanimated;

namespace {

struct Module {
    std::string prefix;       // controller and definition prefix
    std::string domain;
    int rootChildren;         // 0: no root of the Root kind
    int visibilityChildren;   // 0: no page of the Visibility kind
    bool location;
};

const std::vector<Module> kModules{
    {"CPUInfo", "com.veltram.nimbraprefs.cpuinfo", 14, 7, true},
    {"RAMInfo", "com.veltram.nimbraprefs.raminfo", 14, 7, true},
    {"NetworkSpeed", "com.veltram.nimbraprefs.networkspeed", 14, 8, true},
    {"BatteryLine", "com.veltram.nimbraprefs.batteryline", 0, 8, false},
    {"BluetoothBatteryInfo", "com.veltram.nimbraprefs.bluetoothbatteryinfo", 14, 7, true},
    {"Glimra", "com.veltram.nimbraprefs.glimra", 0, 7, false},
    {"Tovin", "com.veltram.nimbraprefs.tovin", 14, 0, false},
};

std::string controller(const Module& module, const std::string& page)
{
    return "NIM" + module.prefix + page + "PrefsListController";
}

}  // namespace

TEST(ModuleRootKind, TheMasterSwitchChainsItsRowsAndRemovesThemAll)
{
    for (auto& module : kModules) {
        if (!module.rootChildren)
            continue;
        SCOPED_TRACE(module.prefix);
        test::PageSession s;
        s.open(controller(module, "Root"));
        auto children = numbered("topLevelChild%d", 1, module.rootChildren);
        EXPECT_TRUE(s.shownOf(children).empty());
        s.set("enabled", PlistValue(true));
        EXPECT_EQ(s.insertions(), chainLines(children, "topLevelSwitch"));
        s.set("enabled", PlistValue(true));
        EXPECT_TRUE(s.insertions().empty());
        s.set("enabled", PlistValue(false));
        EXPECT_EQ(s.removals(), children);
        s->reload();
        EXPECT_TRUE(s.shownOf(children).empty());
    }
}

TEST(ModuleVisibilityKind, HookAndReloadDisagreeOnZero)
{
    for (auto& module : kModules) {
        if (!module.visibilityChildren)
            continue;
        SCOPED_TRACE(module.prefix);
        int n = module.visibilityChildren;
        std::string blacklistSwitch = "topLevelChild" + std::to_string(n);
        std::string blacklistChild = blacklistSwitch + "Child";
        auto numberedIds = numbered("topLevelChild%d", 1, n);
        auto all = numberedIds + std::vector<std::string>{"topLevelChild1Child", blacklistChild};

        test::PageSession s;
        s.store(module.domain, "visibility", PlistValue(0));
        s.store(module.domain, "showOnLockScreen", PlistValue(true));
        s.open(controller(module, "Visibility"));
        EXPECT_TRUE(s.shownOf(all).empty()) << "0 is below 2: the reload hides everything";

        s.set("visibility", PlistValue(0));
        auto expected = chainLines(numberedIds, "topLevelSwitch");
        expected.push_back("topLevelChild1Child after topLevelChild1");
        EXPECT_EQ(s.insertions(), expected) << "the hook shows everything but for 1; the blacklist switch is off";

        s.set("visibility", PlistValue(1));
        EXPECT_EQ(s.removals(), numberedIds + std::vector<std::string>{"topLevelChild1Child"}) << "what is shown of all of them";
        s->reload();
        EXPECT_TRUE(s.shownOf(all).empty());

        s.set("visibility", PlistValue(2));
        s.set("enableBlackListedApps", PlistValue(true));
        EXPECT_EQ(s.insertions().back(), blacklistChild + " after " + blacklistSwitch);
        s->reload();
        EXPECT_EQ(s.shownOf(all).size(), all.size()) << "2 shows everything in both paths";
        s.forget();
        s.set("showOnLockScreen", PlistValue(false));
        EXPECT_EQ(s.removals(), std::vector<std::string>{"topLevelChild1Child"});
    }
}

TEST(ModuleLocationKind, FollowingTheOrientationShowsFiveRows)
{
    for (auto& module : kModules) {
        if (!module.location)
            continue;
        SCOPED_TRACE(module.prefix);
        test::PageSession s;
        s.open(controller(module, "Location"));
        s.set("followDeviceOrientation", PlistValue(true));
        auto expected = std::vector<std::string>{"topLevelChild after topLevelSwitch"} +
                        chainLines(numbered("landscapeChild%d", 1, 4), "landscapeParent");
        EXPECT_EQ(s.insertions(), expected);
        s.set("followDeviceOrientation", PlistValue(false));
        EXPECT_EQ(s.removals(), (std::vector<std::string>{"topLevelChild"} + numbered("landscapeChild%d", 1, 4)));
    }
}

TEST(ModuleColourPages, EachColourFollowsItsSwitchAndUsesThePicker)
{
    struct ColourPage {
        std::string page, key, child, parent;
    };
    const std::vector<ColourPage> pages{
        {"NIMCPUInfoBackgroundPrefsListController", "customBackgroundColorEnabled", "topLevelChild", "topLevelParent"},
        {"NIMRAMInfoLabelPrefsListController", "customTextColorEnabled", "topLevelChild", "topLevelParent"},
        {"NIMNetworkSpeedLabelPrefsListController", "customTextColorEnabled", "topLevelChild", "topLevelParent"},
        {"NIMBluetoothBatteryInfoDeviceNameLabelPrefsListController", "enableCustomDeviceNameColor", "topLevelChild", "topLevelParent"},
        {"NIMBluetoothBatteryInfoGlyphPrefsListController", "enableGlyphCustomTintColor", "topLevelChild", "topLevelParent"},
        {"NIMBluetoothBatteryInfoPercentageLabelPrefsListController", "defaultColorEnabled", "defaultChild", "defaultParent"},
        {"NIMBluetoothBatteryInfoPercentageLabelPrefsListController", "lowBatteryColorEnabled", "lowBatteryChild", "lowBatteryParent"},
        {"NIMBatteryLineColorsPrefsListController", "chargingColorEnabled", "chargingChild", "chargingParent"},
    };
    for (auto& page : pages) {
        SCOPED_TRACE(page.page + " " + page.key);
        test::PageSession s;
        test::writeFile(test::under(s.root.path(), "/var/jb/usr/lib/libsparkcolourpicker.dylib"), "library");
        s.open(page.page);
        EXPECT_FALSE(s.shows(page.child));
        s.set(page.key, PlistValue(true));
        EXPECT_EQ(s.insertions(), (std::vector<std::string>{page.child + " after " + page.parent}));
        auto rows = s->rows()["rows"];
        auto colour = std::find_if(rows.begin(), rows.end(), [&](auto& row) { return row["properties"].value("id", "") == page.child; });
        ASSERT_NE(colour, rows.end());
        EXPECT_EQ((*colour)["cellClass"], "SparkColourPickerCell");
        std::string key = (*colour)["properties"]["libsparkcolourpicker"]["key"];
        s.set(key, PlistValue("#123456:0.50"));
        EXPECT_EQ(s->rows()["rows"][colour - rows.begin()]["value"], "#123456:0.50");
        s.set(page.key, PlistValue(false));
        EXPECT_EQ(s.removals(), std::vector<std::string>{page.child});
    }
}

TEST(ModuleActionsKind, GesturesPickOneAppEachIntoTheGestureStore)
{
    for (const char* prefix : {"CPUInfo", "RAMInfo", "NetworkSpeed"}) {
        SCOPED_TRACE(prefix);
        const Module& module = *std::find_if(kModules.begin(), kModules.end(), [&](auto& m) { return m.prefix == prefix; });
        test::PageSession s;
        s.open(controller(module, "Actions"));
        s.set("enableDoubleTap", PlistValue(true));
        s.set("enableHold", PlistValue(true));
        EXPECT_EQ(s.insertions(), (std::vector<std::string>{"doubleTapChild after doubleTapParent", "holdChild after holdParent"}));
        s->call("selectDoubleTapApp");
        auto push = s.events("push").at(0);
        EXPECT_EQ(push["identifier"], module.domain + ".gestureApps");
        EXPECT_EQ(push["key"], "doubleTapApp");
        EXPECT_EQ(push["maxEnabled"], 1);
        s->pick({"com.apple.camera"});
        s->pick({"com.apple.Maps"});
        s->back();
        s->call("selectHoldApp");
        s->pick({"com.apple.mobilenotes"});
        EXPECT_EQ(s->file("/var/jb/var/mobile/Library/Preferences/" + module.domain + ".gestureApps.plist")["value"],
                  (nlohmann::ordered_json{{"doubleTapApp", {"com.apple.Maps"}}, {"holdApp", {"com.apple.mobilenotes"}}}));
    }
}

TEST(ModuleInformationPages, EachReadingShowsItsOwnRowsAndSavesText)
{
    test::PageSession s;
    s.open("NIMCPUInfoInformationToShowPrefsListController");
    s.set("showCPULoad", PlistValue(true));
    s.set("showCPUTemperature", PlistValue(true));
    auto expected = chainLines({"loadChild1", "loadChild2", "loadChild3"}, "loadParent");
    expected.push_back("temperatureChild after temperatureParent");
    EXPECT_EQ(s.insertions(), expected);
    s->call("saveTextCell");
    EXPECT_EQ(s.events("endEditing").size(), 1u);

    test::PageSession plain;
    plain.store("com.veltram.nimbraprefs.bluetoothbatteryinfo", "showDeviceName", PlistValue(false));
    plain->open("NIMBluetoothBatteryInfoInformationToShowPrefsListController");
    auto events = plain.events();
    EXPECT_TRUE(std::none_of(events.begin(), events.end(), [](auto& e) { return e["event"] == "remove" || e["event"] == "reload"; }))
        << "a plain page shows every row of its definition";
}

TEST(BatteryLineRoot, TheStyleSubOptionsAreHiddenExactlyForStyleThree)
{
    test::PageSession s;
    s.store("com.veltram.nimbraprefs.batteryline", "style", PlistValue(3));
    s.open("NIMBatteryLineRootPrefsListController");
    s.set("enabled", PlistValue(true));
    EXPECT_EQ(s.insertions(), chainLines(numbered("topLevelChild%d", 1, 10), "topLevelSwitch"));
    s.set("style", PlistValue(0));
    EXPECT_EQ(s.insertions(), chainLines({"topLevelChild2Child1", "topLevelChild2Child2"}, "topLevelChild2"));
    s.set("style", PlistValue(3));
    EXPECT_EQ(s.removals(), (std::vector<std::string>{"topLevelChild2Child1", "topLevelChild2Child2"}));
    s.set("style", PlistValue(1));
    s.set("enabled", PlistValue(false));
    EXPECT_EQ(s.removals(), (numbered("topLevelChild%d", 1, 10) + std::vector<std::string>{"topLevelChild2Child1", "topLevelChild2Child2"}));

    s.store("com.veltram.nimbraprefs.batteryline", "enabled", PlistValue(true));
    s.store("com.veltram.nimbraprefs.batteryline", "style", PlistValue(3));
    s->reload();
    EXPECT_EQ(s.removals(), unanimated({"topLevelChild2Child1", "topLevelChild2Child2"}));
}

TEST(GlimraRoot, TheColourModeIsTestedTwoWays)
{
    test::PageSession s;
    const std::string glimra = "com.veltram.nimbraprefs.glimra";
    s.store(glimra, "colorsType", PlistValue(1));
    s.open("NIMGlimraRootPrefsListController");
    auto everything = numbered("topLevelChild%d", 1, 12) + numbered("notificationsChild%d", 1, 4) + numbered("colorChild%d", 1, 4);
    EXPECT_TRUE(s.shownOf(everything).empty());

    s.set("enabled", PlistValue(true));
    EXPECT_EQ(s.shownOf(everything), (numbered("topLevelChild%d", 1, 8) + std::vector<std::string>{"colorChild1"} +
                                      numbered("topLevelChild%d", 9, 12)));
    s.insertions();
    s.set("colorsType", PlistValue(2));
    EXPECT_EQ(s.insertions(), chainLines(numbered("colorChild%d", 2, 4), "colorChild1"));
    s.set("colorsType", PlistValue(1));
    EXPECT_EQ(s.removals(), numbered("colorChild%d", 2, 4));
    s.set("colorsType", PlistValue(3));
    EXPECT_TRUE(s.insertions().empty() && s.removals().empty()) << "choosing 3 changes nothing";

    s.set("enabled", PlistValue(false));
    EXPECT_EQ(s.removals(), (numbered("topLevelChild%d", 1, 12) + std::vector<std::string>{"colorChild1"}));
    s.set("enabled", PlistValue(true));
    EXPECT_EQ(s.shownOf(numbered("colorChild%d", 1, 4)), numbered("colorChild%d", 1, 4)) << "a stored 3 shows all four";

    s.forget();
    s.set("colorsType", PlistValue(0));
    EXPECT_EQ(s.removals(), numbered("colorChild%d", 1, 4));
    s.set("adaptColorsToNotifications", PlistValue(true));
    EXPECT_EQ(s.insertions(), chainLines(numbered("notificationsChild%d", 1, 4), "topLevelChild6"));
    s->topPage()->removeContiguousSpecifiers({s->topPage()->specifierForID("topLevelChild1")}, false);
    s.set("colorsType", PlistValue(2));
    EXPECT_EQ(s.insertions(), chainLines(numbered("colorChild%d", 1, 4), "topLevelChild8"));
}

TEST(GlimraRoot, ColourTwoWithTheSecondRowShownInsertsOnlyTheFirst)
{
    test::PageSession s;
    s.store("com.veltram.nimbraprefs.glimra", "enabled", PlistValue(true));
    s.store("com.veltram.nimbraprefs.glimra", "colorsType", PlistValue(2));
    s.open("NIMGlimraRootPrefsListController");
    auto page = s->topPage();
    page->removeContiguousSpecifiers({page->specifierForID("colorChild1")}, false);
    s.events();
    s.set("colorsType", PlistValue(2));
    EXPECT_EQ(s.insertions(), std::vector<std::string>{"colorChild1 after topLevelChild8"});
}

TEST(TovinPages, OneSelectorThreeTests)
{
    test::PageSession s;
    s.open("NIMTovinAppNamePrefsListController");
    EXPECT_EQ(s.shownOf(numbered("topLevelChild%d", 1, 4) + std::vector<std::string>{"colorChild"}), (numbered("topLevelChild%d", 1, 4)))
        << "a fresh install shows the name's rows, without the custom colour";

    test::PageSession title;
    title.open("NIMTovinNotificationTitlePrefsListController");
    title.set("titleColorType", PlistValue(0));
    EXPECT_EQ(title.insertions(), std::vector<std::string>{"colorChild after topLevelChild4"}) << "the selector: every type but 1";
    title.set("showTitle", PlistValue(false));
    title.set("showTitle", PlistValue(true));
    EXPECT_FALSE(title.shows("colorChild")) << "the switch: only type 2";
    title->reload();
    EXPECT_TRUE(title.shows("colorChild")) << "the reload hides it only for type 1";

    test::PageSession icon;
    icon.open("NIMTovinAppIconPrefsListController");
    icon.set("showAppIcon", PlistValue(false));
    icon.set("showAppIcon", PlistValue(true));
    EXPECT_EQ(icon.insertions(), chainLines(numbered("topLevelChild%d", 1, 5), "topLevelSwitch")) << "no glow while it is off";
    icon.set("appIconAddGlow", PlistValue(true));
    EXPECT_EQ(icon.insertions(), chainLines({"glowChild1", "glowChild2"}, "topLevelChild5"));
    icon.set("appIconGlowColorType", PlistValue(2));
    EXPECT_EQ(icon.insertions(), std::vector<std::string>{"glowChild2Child after glowChild2"});

    test::PageSession background;
    background.open("NIMTovinBackgroundPrefsListController");
    EXPECT_FALSE(background.shows("bgChild"));
    background.set("backgroundColorType", PlistValue(2));
    EXPECT_TRUE(background.shows("bgChild"));
}

TEST(TovinRoot, TheTestBannerPostsOneNotificationAndStoresNothing)
{
    test::PageSession s;
    s.open("NIMTovinRootPrefsListController");
    s->call("testNotifications");
    auto events = s.events();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].dump(), R"({"event":"notify","name":"com.veltram.nimbraprefs.tovin/TestNotification"})");
    EXPECT_FALSE(std::filesystem::exists(test::under(s.root.path(), "/var/jb/var/mobile/Library/Preferences")));
}
