// Home Screen, Lock Screen, status bar, time, notification, widget and miscellaneous pages, by
// behaviour: nesting, shared blocks, gates, deliberate departures and test actions.

#include "pages/PageTestSupport.h"

#include "frame/CollapsibleGroupRule.h"

#include <gtest/gtest.h>

using test::chainLines;

namespace {

const std::string kHome = "com.veltram.nimbraprefs.homescreen";
const std::string kLock = "com.veltram.nimbraprefs.lockscreen";
const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs";

bool enabledRow(test::PageSession& s, const std::string& id)
{
    auto rows = s->rows()["rows"];
    for (auto& row : rows)
        if (row["properties"].value("id", "") == id)
            return row["enabled"];
    ADD_FAILURE() << id << " is not shown";
    return false;
}

}  // namespace

TEST(Gates, RowsBeforeAndFromIOS14)
{
    for (double version : {1739.9, 1740.0}) {
        SCOPED_TRACE(version);
        bool old = version < 1740.0;
        test::PageSession root({.coreFoundationVersion = version});
        root.store(kHome, "enabled", PlistValue(true));
        root.open("NIMHomeScreenRootPrefsListController");
        EXPECT_EQ(enabledRow(root, "topLevelChild4"), !old);

        test::PageSession layout({.coreFoundationVersion = version});
        layout.store(kHome, "customHomeScreenLayoutEnabled", PlistValue(true));
        layout.store(kHome, "customHomeScreenRowsEnabled", PlistValue(true));
        layout.open("NIMHomeScreenLayoutPrefsListController");
        EXPECT_EQ(enabledRow(layout, "homeScreenRowsParent"), old) << "the reload greys out the switch too";
        EXPECT_EQ(enabledRow(layout, "homeScreenRowsChild"), old);
        EXPECT_TRUE(enabledRow(layout, "folderRowsParent"));

        test::PageSession status({.coreFoundationVersion = version});
        status.store("com.veltram.nimbraprefs.statusbar", "enabled", PlistValue(true));
        status.open("NIMStatusBarRootPrefsListController");
        EXPECT_EQ(enabledRow(status, "topLevelChild15"), !old);
        EXPECT_EQ(enabledRow(status, "topLevelChild15Child"), !old);

        test::PageSession force({.coreFoundationVersion = version});
        force.open("NIMHomeScreenForceTouchMenuPrefsListController");
        EXPECT_EQ(enabledRow(force, "hideForceTouchWidgetChild"), old);
    }
}

TEST(Gates, TheLayoutHookGreysOutOnlyTheValuesItShows)
{
    test::PageSession s({.coreFoundationVersion = 1740.0});
    s.store(kHome, "customHomeScreenRowsEnabled", PlistValue(true));
    s.open("NIMHomeScreenLayoutPrefsListController");
    s.set("customHomeScreenLayoutEnabled", PlistValue(true));
    EXPECT_TRUE(enabledRow(s, "homeScreenRowsParent")) << "the hook leaves the switches alone";
    EXPECT_FALSE(enabledRow(s, "homeScreenRowsChild"));
    s.store(kHome, "customHomeScreenRowsEnabled", PlistValue(false));
    s->reload();
    auto removals = s.events("remove");
    bool animated = false;
    for (auto& removal : removals)
        if (removal["ids"][0] == "homeScreenRowsChild")
            animated = removal["animated"];
    EXPECT_TRUE(animated) << "the Layout reload animates the value rows' removals";
}

TEST(Departures, DockColoursFromOneToFourWaitForAReload)
{
    test::PageSession s;
    s.open("NIMHomeScreenDockPrefsListController");
    s.set("dockBGColorMode", PlistValue(2));
    EXPECT_EQ(s.insertions(), chainLines(numbered("bgColorChild%d", 1, 4), "topLevelChild4"));
    s.set("dockBGColorMode", PlistValue(1));
    EXPECT_EQ(s.removals(), numbered("bgColorChild%d", 2, 4));
    s.set("dockBGColorMode", PlistValue(2));
    EXPECT_TRUE(s.insertions().empty()) << "1 -> 2 leaves the first row alone and adds nothing";
    s->reload();
    EXPECT_EQ(s.shownOf(numbered("bgColorChild%d", 1, 4)).size(), 4u);
}

TEST(Departures, HidingTheFolderBackgroundLeavesTheCornerRadiusRow)
{
    test::PageSession s;
    s.store(kHome, "enableCustomFolderBackgroundColor", PlistValue(true));
    s.store(kHome, "enableCustomFolderCornerRadius", PlistValue(true));
    s.open("NIMHomeScreenFoldersPrefsListController");
    s.set("hideFolderBackground", PlistValue(true));
    EXPECT_EQ(s.removals(), (std::vector<std::string>{"bgChild1", "bgChild1Child", "bgChild2"}));
    EXPECT_TRUE(s.shows("bgChild2Child"));
    s->reload();
    EXPECT_FALSE(s.shows("bgChild2Child"));
}

TEST(Nesting, NestedRowsGoInWithoutAPresenceTestOfTheirOwn)
{
    // The folder background: the corner-radius row outlives the hiding, and comes in again.
    test::PageSession folders;
    folders.open("NIMHomeScreenFoldersPrefsListController");
    folders.set("enableCustomFolderCornerRadius", PlistValue(true));
    EXPECT_EQ(folders.insertions(), (std::vector<std::string>{"bgChild2Child after bgChild2"}));
    folders.set("hideFolderBackground", PlistValue(true));
    EXPECT_TRUE(folders.shows("bgChild2Child"));
    folders.forget();
    folders.set("hideFolderBackground", PlistValue(false));
    EXPECT_EQ(folders.insertions(),
              (std::vector<std::string>{"bgChild1 after bgParent", "bgChild2 after bgChild1", "bgChild2Child after bgChild2"}));
    EXPECT_TRUE(folders.removals().empty());

    // The older widgets' border: its guard never holds, so the five rows and the colour row under
    // the first go in again.
    test::PageSession widgets;
    widgets.store("com.veltram.nimbraprefs.widgets", "customBorderColorEnabled", PlistValue(true));
    widgets.store("com.veltram.nimbraprefs.widgets", "colorizeBorder", PlistValue(true));
    widgets.open("NIMWidgetsOldPrefsListController");
    EXPECT_TRUE(widgets.shows("borderChild1Child"));
    widgets.set("colorizeBorder", PlistValue(true));
    EXPECT_EQ(widgets.insertions(), chainLines(numbered("borderChild%d", 1, 5), "borderParent") +
                                        std::vector<std::string>{"borderChild1Child after borderChild1"});
    EXPECT_TRUE(widgets.removals().empty());
}

TEST(Departures, BadgeRowsSevenAndEightReturnOnlyWithARebuild)
{
    test::PageSession s;
    s.store(kHome, "enableBadgesColorization", PlistValue(true));
    s.store(kHome, "badgesBorderColorType", PlistValue(2));
    s.open("NIMHomeScreenIconBadgesPrefsListController");
    EXPECT_TRUE(s.shows("colorsChild7") && s.shows("colorsChild8"));
    s.set("enableBadgesColorization", PlistValue(false));
    s.set("enableBadgesColorization", PlistValue(true));
    EXPECT_FALSE(s.shows("colorsChild7") || s.shows("colorsChild8"));
    EXPECT_EQ(s.shownOf({"colorsChild4", "colorsChild4Child", "colorsChild5"}),
              (std::vector<std::string>{"colorsChild4", "colorsChild4Child", "colorsChild5"}));
    s.events();
    s.set("hideBadgeNumber", PlistValue(true));
    s.set("hideBadgeNumber", PlistValue(false));
    auto lines = s.insertions();
    EXPECT_EQ(lines.front(), "colorsChild5 after colorsChild4Child") << "after the border colour's custom row, as it is shown";
    s->reload();
    EXPECT_TRUE(s.shows("colorsChild7"));
}

TEST(SharedBlocks, IconLabelsHideOnlyWhenBothKindsAreHidden)
{
    test::PageSession s;
    s.open("NIMHomeScreenIconLabelsPrefsListController");
    auto block = numbered("topLevelChild%d", 1, 4);
    s.set("hideAppLabels", PlistValue(true));
    EXPECT_EQ(s.shownOf(block), block);
    s.set("hideWidgetLabels", PlistValue(true));
    EXPECT_TRUE(s.shownOf(block).empty());
    s->reload();
    EXPECT_TRUE(s.shownOf(block).empty());
    s.set("hideAppLabels", PlistValue(false));
    EXPECT_EQ(s.insertions(), chainLines(block, "topLevelSwitch"));
}

TEST(Departures, TheAppLibraryGuardNeverHoldsAndItsSwitchLivesWithTheWidgets)
{
    test::PageSession s;
    s.store("com.veltram.nimbraprefs.widgets", "disableAppLibrary", PlistValue(true));
    s.store(kHome, "disableAppLibrary", PlistValue(false));
    s.open("NIMHomeScreenAppLibraryPrefsListController");
    EXPECT_TRUE(s.shownOf(numbered("topLevelChild%d", 1, 4)).empty()) << "the widgets domain decides";
    s.set("disableAppLibrary", PlistValue(false));
    s.set("disableAppLibrary", PlistValue(false));
    auto shown = s.shownIds();
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "topLevelChild1"), 2);
}

TEST(Nesting, HomeScreenGeneralShowsThePickerWhileHiding)
{
    test::PageSession s;
    s.store(kHome, "enableCustomProgressBarColor", PlistValue(true));
    s.open("NIMHomeScreenGeneralPrefsListController");
    s.set("progressBarWhenDownloading", PlistValue(true));
    EXPECT_EQ(s.insertions(), chainLines({"customProgressBarChild", "customProgressBarGrandChild"}, "customProgressBarParent"));
    s.set("hideAppIcons", PlistValue(true));
    s->call("selectAppsToHide");
    EXPECT_EQ(s.events("push").at(0)["identifier"], "com.veltram.nimbraprefs.homescreen.hiddenApps");
}

TEST(Nesting, LockScreenMediaModuleColourStyles)
{
    test::PageSession s;
    s.store(kLock, "addMediaModuleBorderDynamicColor", PlistValue(true));
    s.open("NIMLockScreenMediaModulePrefsListController");
    s.set("mediaModuleTransparentBackground", PlistValue(false));
    EXPECT_TRUE(s.insertions().empty()) << "colour style 0: no alpha rows";

    s.set("mediaModuleColorsStyle", PlistValue(3));
    EXPECT_EQ(s.insertions(), (chainLines({"backgroundAlphaChild1", "backgroundAlphaChild2"}, "backgroundAlphaParent") +
                               chainLines({"borderGrandParent", "borderParent"}, "backgroundAlphaChild2") +
                               chainLines(numbered("borderChild%d", 1, 4), "borderParent")));
    s.set("mediaModuleColorsStyle", PlistValue(1));
    EXPECT_EQ(s.insertions(), chainLines(numbered("staticColorsChild%d", 1, 3), "colorStyleParent"));
    s.set("mediaModuleColorsStyle", PlistValue(2));
    EXPECT_EQ(s.removals(), numbered("staticColorsChild%d", 1, 3));
    s.set("mediaModuleColorsStyle", PlistValue(0));
    EXPECT_EQ(s.removals().size(), 8u);

    s.set("mediaModuleTransparentBackground", PlistValue(true));
    s.set("mediaModuleColorsStyle", PlistValue(2));
    EXPECT_EQ(s.insertions().front(), "borderGrandParent after backgroundAlphaParent") << "a transparent background has no alpha rows";
}

TEST(Nesting, IndicatorsAndRecordingAndTimeLabels)
{
    test::PageSession dnd;
    dnd.store(kLock, "enableDNDTintColor", PlistValue(true));
    dnd.open("NIMLockScreenDNDSilentModeIndicatorPrefsListController");
    dnd.set("showDNDIndicator", PlistValue(true));
    EXPECT_EQ(dnd.shownOf(numbered("dndChild%d", 1, 8) + std::vector<std::string>{"dndChild1Child", "dndChild2Child"}),
              (std::vector<std::string>{"dndChild1", "dndChild1Child"} + numbered("dndChild%d", 2, 8)));

    test::PageSession status;
    status.store("com.veltram.nimbraprefs.statusbar", "hideRecordingIndicator", PlistValue(true));
    status.open("NIMStatusBarRootPrefsListController");
    status.set("enabled", PlistValue(true));
    status.set("enabled", PlistValue(false));
    status.set("enabled", PlistValue(true));
    EXPECT_EQ(status.shownOf(numbered("topLevelChild%d", 1, 19) + std::vector<std::string>{"topLevelChild15Child"}).size(), 19u);

    for (auto [page, prefix, rows] : {std::tuple{"NIMTime1LabelPrefsListController", "time1Label", 6}, {"NIMTime2LabelPrefsListController", "time2Label", 5},
                                      {"NIMTimeDateLabelPrefsListController", "timeDateLabel", 5}, {"NIMTimePillLabelPrefsListController", "timePillLabel", 6}}) {
        test::PageSession time;
        time.open(page);
        time.set(std::string(prefix) + "EnableSecondString", PlistValue(true));
        EXPECT_EQ(time.insertions(), chainLines(numbered("topLevelChild%d", 1, rows), "topLevelSwitch")) << page;
    }

    test::PageSession label;
    label.open("NIMTime2LabelPrefsListController");
    label->call("selectHoldApp");
    label->pick({"com.apple.camera"});
    label->pick({"com.apple.Maps"});
    EXPECT_EQ(label->file(kPreferences + ".time.gestureApps.plist")["value"],
              (nlohmann::ordered_json{{"time2LabelHoldApp", {"com.apple.Maps"}}}));
}

TEST(Departures, TheOlderWidgetsBorderInsertsTwice)
{
    test::PageSession s;
    s.open("NIMWidgetsOldPrefsListController");
    s.set("colorizeBorder", PlistValue(true));
    s.set("colorizeBorder", PlistValue(true));
    s.set("colorizeBackground", PlistValue(true));
    s.set("colorizeBackground", PlistValue(true));
    auto shown = s.shownIds();
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "borderChild3"), 2);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "bgChild3"), 1);

    test::PageSession misc;
    misc.store("com.veltram.nimbraprefs.misc", "enableLockAnimation", PlistValue(true));
    misc.open("NIMMiscellaneousRootPrefsListController");
    misc.set("enabled", PlistValue(true));
    EXPECT_EQ(misc.shownOf(std::vector<std::string>{"topLevelChild10", "topLevelChild11"} + numbered("lockAnimationChild%d", 1, 3)),
              (std::vector<std::string>{"topLevelChild10"} + numbered("lockAnimationChild%d", 1, 3) + std::vector<std::string>{"topLevelChild11"}));
}

TEST(Independence, EachSwipeUpSwitchGovernsOneRow)
{
    test::PageSession s;
    s.open("NIMSwipeUpGesturesPrefsListController");
    s.set("enableHomeScreenSwipeUpCenterAction", PlistValue(true));
    EXPECT_EQ(s.insertions(), std::vector<std::string>{"homeScreenCenterChild after homeScreenCenterParent"});
    s.set("enableInsideAppsSwipeUpRightSideAction", PlistValue(true));
    s.set("enableHomeScreenSwipeUpCenterAction", PlistValue(false));
    EXPECT_EQ(s.removals(), std::vector<std::string>{"homeScreenCenterChild"});
    EXPECT_TRUE(s.shows("insideAppsRightSideChild"));
}

TEST(TestActions, NotificationsPostOneEachAndChangeNothing)
{
    test::PageSession s;
    s.open("NIMNotificationsRootPrefsListController");
    s->call("testNotifications");
    s->call("testBanner");
    auto events = s.events();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0]["name"], "com.veltram.nimbraprefs.notifications/TestNotifications");
    EXPECT_EQ(events[1]["name"], "com.veltram.nimbraprefs.notifications/TestBanner");
    EXPECT_FALSE(s->file(kPreferences + ".notifications.plist")["exists"]);
}
