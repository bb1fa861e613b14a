// Control Center, App Switcher, battery and gesture pages, by behaviour: shared groups, generated
// pages, rearrangement, version gates and the modules alert.

#include "pages/PageTestSupport.h"

#include "frame/CollapsibleGroupRule.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

using test::chainLines;
using test::unanimated;

namespace {

const std::string kControlCenter = "com.veltram.nimbraprefs.controlcenter";
const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/";

const std::vector<std::string> kVolumeGroup{
    "volumeColorsChild",       "volumeBackgroundColorParent", "volumeBackgroundColorChild1", "volumeBackgroundColorChild2",
    "volumeSliderColorParent", "volumeSliderColorChild1",     "volumeSliderColorChild2",     "volumeIconColorParent",
    "volumeIconColorChild1",   "volumeIconColorChild2"};

}  // namespace

TEST(SharedGroups, TheVolumeColoursStayUntilBothSwitchesAreOff)
{
    test::PageSession s;
    s.store(kControlCenter, "volumeColorizeSlider", PlistValue(true));
    s.open("NIMControlCenterSlidersPrefsListController");
    s.set("colorizeVolumeSlider", PlistValue(true));
    EXPECT_EQ(s.insertions(), (chainLines({"volumeColorsChild", "volumeBackgroundColorParent", "volumeSliderColorParent", "volumeIconColorParent"},
                                          "volumeColorsParent2") +
                               chainLines({"volumeSliderColorChild1", "volumeSliderColorChild2"}, "volumeSliderColorParent")));
    s.set("colorizeVolumeHUD", PlistValue(true));
    EXPECT_TRUE(s.insertions().empty());
    s.set("colorizeVolumeSlider", PlistValue(false));
    EXPECT_TRUE(s.removals().empty()) << "the HUD's switch keeps the group";
    s->reload();
    EXPECT_EQ(s.shownOf(kVolumeGroup).size(), 6u);
    s.events();
    s.set("colorizeVolumeHUD", PlistValue(false));
    EXPECT_EQ(s.removals(), (std::vector<std::string>{"volumeColorsChild", "volumeBackgroundColorParent", "volumeSliderColorParent",
                                                      "volumeSliderColorChild1", "volumeSliderColorChild2", "volumeIconColorParent"}));
    s->reload();
    EXPECT_TRUE(s.shownOf(kVolumeGroup).empty());
}

TEST(SharedGroups, TheKillAllRowStaysWhileEitherGestureIsOn)
{
    test::PageSession s;
    s.store("com.veltram.nimbraprefs.appswitcher", "enabled", PlistValue(true));
    s.open("NIMAppSwitcherRootPrefsListController");
    s.set("swipeDownToKillAllApps", PlistValue(true));
    EXPECT_EQ(s.insertions(), chainLines({"swipeDownChild", "killAllChild"}, "topLevelChild12"));
    s.set("longPressToKillAllApps", PlistValue(true));
    EXPECT_TRUE(s.insertions().empty());
    s.set("swipeDownToKillAllApps", PlistValue(false));
    EXPECT_EQ(s.removals(), std::vector<std::string>{"swipeDownChild"});
    s.set("longPressToKillAllApps", PlistValue(false));
    EXPECT_EQ(s.removals(), std::vector<std::string>{"killAllChild"});
    s.set("longPressToKillAllApps", PlistValue(true));
    EXPECT_EQ(s.insertions(), std::vector<std::string>{"killAllChild after topLevelChild12"});
}

TEST(SharedGroups, TheMasterSwitchShowsEachOptionRowOnceWhenTheReloadKeptThem)
{
    // With the master switch off, the reload keeps the rows of options that are on; switching the
    // master on then shows each of them once, in its place.
    for (const char* gesture : {"longPressToKillAllApps", "swipeDownToKillAllApps"}) {
        SCOPED_TRACE(gesture);
        test::PageSession s;
        s.store("com.veltram.nimbraprefs.appswitcher", gesture, PlistValue(true));
        s.store("com.veltram.nimbraprefs.appswitcher", "enableCustomSwitcherLayout", PlistValue(true));
        s.store("com.veltram.nimbraprefs.appswitcher", "enabled", PlistValue(false));
        s.open("NIMAppSwitcherRootPrefsListController");
        s.set("enabled", PlistValue(true));
        auto ids = s.shownIds();
        for (const char* id : {"killAllChild", "customLayoutChild"})
            EXPECT_EQ(std::count(ids.begin(), ids.end(), id), 1) << id;
        // The rows the reload kept stay where they are; the fourteen go in after the switch.
        std::vector<std::string> expected = numbered("topLevelChild%d", 1, 14);
        if (std::string(gesture) == "swipeDownToKillAllApps")
            expected.push_back("swipeDownChild");
        expected = expected + std::vector<std::string>{"killAllChild", "customLayoutChild"};
        EXPECT_EQ(s.shownOf(expected), expected);
        s.set("enabled", PlistValue(false));
        EXPECT_TRUE(s.shownOf(expected).empty());
    }
}

TEST(SharedGroups, BackgroundStyleThreeChangesNothingInTheHookAndRemovesNothingOnReload)
{
    test::PageSession s;
    s.store(kControlCenter, "backgroundStyle", PlistValue(1));
    s.store(kControlCenter, "showDateTimeInStatusBar", PlistValue(true));
    s.open("NIMControlCenterRootPrefsListController");
    s.set("enabled", PlistValue(true));
    auto lines = s.insertions();
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 24), chainLines(numbered("topLevelChild%d", 1, 24), "topLevelSwitch"));
    EXPECT_EQ(std::vector<std::string>(lines.begin() + 24, lines.end()),
              (chainLines({"backgroundColorChild1", "backgroundColorChild2"}, "topLevelChild17") +
               chainLines(numbered("dateTimeChild%d", 1, 6), "topLevelChild21")));
    s.set("backgroundStyle", PlistValue(3));
    EXPECT_TRUE(s.insertions().empty());
    EXPECT_TRUE(s.removals().empty());
    s->reload();
    EXPECT_EQ(s.shownOf({"backgroundColorChild1", "backgroundImageChild1"}), (std::vector<std::string>{"backgroundImageChild1", "backgroundColorChild1"}))
        << "the reload removes neither group for 3: both show";
    s.events();
    s.set("backgroundStyle", PlistValue(2));
    EXPECT_EQ(s.removals(), (std::vector<std::string>{"backgroundColorChild1", "backgroundColorChild2"}));
    s.set("backgroundStyle", PlistValue(0));
    EXPECT_EQ(s.removals(), numbered("backgroundImageChild%d", 1, 6));
    s.set("backgroundStyle", PlistValue(2));
    EXPECT_EQ(s.insertions(), chainLines(numbered("backgroundImageChild%d", 1, 6), "topLevelChild17"));
}

TEST(SharedGroups, TheTogglesChooserHidesWithoutBackgroundOrIconColoursEvenWithABorder)
{
    test::PageSession s;
    s.store(kControlCenter, "enableTogglesColorization", PlistValue(true));
    s.store(kControlCenter, "enableTogglesBorder", PlistValue(true));
    s.open("NIMControlCenterTogglesPrefsListController");
    EXPECT_EQ(s.shownOf({"setAllOrSeparChild1", "setAllOrSeparChild2", "borderChild1", "allColorsChildLightModeBorder1"}),
              (std::vector<std::string>{"borderChild1", "allColorsChildLightModeBorder1"}));
    s.set("togglesBackgroundColorStyle", PlistValue(3));
    EXPECT_EQ(s.insertions(), (std::vector<std::string>{"setAllOrSeparChild1 after borderChild2", "setAllOrSeparChild2 after setAllOrSeparChild1",
                                                        "allColorsChildLightMode after setAllOrSeparChild2",
                                                        "allColorsChildLightModeBG1 after allColorsChildLightMode",
                                                        "allColorsChildLightModeBG2 after allColorsChildLightModeBG1",
                                                        "allColorsChildDarkMode after allColorsChildLightModeBorder2",
                                                        "allColorsChildDarkModeBG1 after allColorsChildDarkMode",
                                                        "allColorsChildDarkModeBG2 after allColorsChildDarkModeBG1"}));
    auto shownAfterHook = s.shownIds();
    s->reload();
    EXPECT_EQ(s.shownIds(), shownAfterHook) << "the hook leaves what the reload leaves";
    s.set("togglesColorsMode", PlistValue(2));
    s->reload();
    EXPECT_EQ(s.shownOf(numbered("separateColorsChild%d", 1, 4)).size(), 4u);
    EXPECT_TRUE(s.shownOf({"allColorsChildLightMode", "allColorsChildDarkModeBorder1"}).empty());
}

TEST(GeneratedPages, OneSectionPerEnabledModuleWithEqualityTests)
{
    test::PageSession s;
    auto root = s.root.path();
    auto bundle = [&](const std::string& folder, const std::string& name, PlistDictionary info, PlistDictionary localized = {}) {
        auto dir = root / folder / (name + ".bundle");
        test::writePlist(dir / "Info.plist", PlistValue(info), PropertyListSerialization::Format::XML);
        if (!localized.empty())
            test::writePlist(dir / "en.lproj/InfoPlist.strings", PlistValue(localized), PropertyListSerialization::Format::XML);
    };
    auto id = [](const char* identifier, const char* name) {
        return PlistDictionary{{"CFBundleIdentifier", PlistValue(identifier)}, {"CFBundleName", PlistValue(name)}};
    };
    std::filesystem::remove_all(root / "System/Library/ControlCenter");
    std::filesystem::remove_all(root / "Library/ControlCenter");
    bundle("System/Library/ControlCenter/Bundles", "Lock", id("com.apple.control-center.OrientationLockModule", "Lock"));
    bundle("System/Library/ControlCenter/Bundles", "Unnamed", id("com.apple.control-center.UnnamedModule", "Unnamed"));
    bundle("System/Library/ControlCenter/Bundles", "Torch", id("com.apple.control-center.FlashlightModule", "Torch"),
           {{"CFBundleDisplayName", PlistValue("Flashlight")}});
    bundle("Library/ControlCenter/Bundles", "Power", id("com.veltram.nimbrapowercontrolmodule", "Power"));
    bundle("Library/ControlCenter/Bundles", "Vendor", id("com.vendor.WeatherModule", "Weather"));
    PlistArray order{PlistValue("com.vendor.WeatherModule"), PlistValue("com.veltram.nimbrapowercontrolmodule"),
                     PlistValue("com.apple.control-center.UnnamedModule"), PlistValue("com.example.NoBundle"),
                     PlistValue("com.apple.control-center.FlashlightModule"), PlistValue("com.apple.control-center.OrientationLockModule")};
    test::writePlist(root / "var/mobile/Library/ControlCenter/ModuleConfiguration.plist", PlistValue(PlistDictionary{{"module-identifiers",
                     PlistValue(order)}}), PropertyListSerialization::Format::XML);
    s.store(kControlCenter, "togglesBackgroundColorStyle", PlistValue(3));
    s.store(kControlCenter, "togglesIconColorStyle", PlistValue(1));
    s.open("NIMControlCenterTogglesLightModePrefsListController");
    std::vector<std::string> labels, keys;
    auto rows = s->rows()["rows"];
    for (auto& row : rows) {
        labels.push_back(row["label"]);
        if (row["properties"].contains("key"))
            keys.push_back(row["properties"]["key"]);
    }
    EXPECT_EQ(labels, (std::vector<std::string>{"Weather", "Icon Enabled Color", "Icon Disabled Color", "Flashlight", "Icon Enabled Color",
                                                "Icon Disabled Color", "Orientation Lock", "Icon Enabled Color", "Icon Disabled Color"}))
        << "background style 3 is not 2; no power module, no unnamed system module, no module without a bundle";
    EXPECT_EQ(keys.front(), "com.vendor.WeatherModule_IconEnabledColorLightMode");
    EXPECT_EQ(rows[1]["properties"]["fallback"], "#e67e22");
}

TEST(Rearrangement, ConnectivityShowsAMessageUntilItsOrderExistsThenStoresEverySlot)
{
    test::PageSession s;
    s.open("NIMControlCenterConnectivityModuleRearrangePrefsListController");
    auto rows = s->rows()["rows"];
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["label"], "Respring The Device For This Page To Be Populated With The Connectivity Toggles");
    EXPECT_EQ(rows[0]["properties"]["alignment"], 1);

    const std::string file = kPreferences + kControlCenter + ".rearrangeconnectivity.plist";
    const char* names[] = {"CCUIConnectivityAirplaneViewController", "CCUIConnectivityCellularDataViewController",
                           "CCUIConnectivityWifiViewController", "CCUIConnectivityBluetoothViewController",
                           "CCUIConnectivityAirDropViewController", "CCUIConnectivityHotspotViewController"};
    PlistDictionary order{{"writtenByTheModule", PlistValue(true)}};
    for (int i = 0; i < 6; ++i)
        order["connectivityPos" + std::to_string(i)] = PlistValue(names[i]);
    test::writeFile(test::under(s.root.path(), file),
                    PropertyListSerialization::dataWithPropertyList(PlistValue(order), PropertyListSerialization::Format::Binary));
    s.open("NIMControlCenterConnectivityModuleRearrangePrefsListController");
    s->move(0, 5);
    auto labels = [&] {
        std::vector<std::string> shown;
        auto rows = s->rows()["rows"];
        for (std::size_t i = 1; i < rows.size(); ++i)
            shown.push_back(rows[i]["label"]);
        return shown;
    };
    EXPECT_EQ(labels(), (std::vector<std::string>{"Cellular", "WiFi", "Bluetooth", "AirDrop", "Hotspot", "Airplane Mode"}));
    auto stored = s->file(file)["value"];
    EXPECT_EQ(stored["connectivityPos0"], "CCUIConnectivityCellularDataViewController");
    EXPECT_EQ(stored["connectivityPos5"], "CCUIConnectivityAirplaneViewController");
    EXPECT_EQ(stored["writtenByTheModule"], true) << "the whole dictionary is written back";
    EXPECT_THROW(s->move(2, 6), CommandError);
}

TEST(Rearrangement, ThePowerPageStoresTheDefaultOrderOnFirstOpen)
{
    test::PageSession s;
    s.open("NIMControlCenterPowerModuleRearrangePrefsListController");
    auto file = s->file(kPreferences + kControlCenter + ".plist")["value"];
    EXPECT_EQ(file["powerModulePos0"], "NimbraRespringButtonController");
    EXPECT_EQ(file["powerModulePos7"], "NimbraUserspaceRebootButtonController");
    s->move(7, 0);
    file = s->file(kPreferences + kControlCenter + ".plist")["value"];
    EXPECT_EQ(file["powerModulePos0"], "NimbraUserspaceRebootButtonController");
    EXPECT_EQ(file["powerModulePos1"], "NimbraRespringButtonController");
    EXPECT_EQ(s->rows()["rows"][1]["label"], "Userspace Reboot");
}

TEST(ColourModes, PowerTestsEqualityWhereConnectivityTestsAtLeast)
{
    test::PageSession power;
    power.store(kControlCenter, "powerModuleColorsMode", PlistValue(3));
    power.open("NIMControlCenterPowerModulePrefsListController");
    power.set("enableCustomPowerModuleTogglesColor", PlistValue(true));
    EXPECT_EQ(power.insertions(), (std::vector<std::string>{"customColorChild after customColorParent"} +
                                   chainLines({"customColorAll1", "customColorAll2"}, "customColorChild")));
    power.set("powerModuleColorsMode", PlistValue(2));
    EXPECT_EQ(power.removals(), (std::vector<std::string>{"customColorAll1", "customColorAll2"}));

    test::PageSession connectivity;
    connectivity.store(kControlCenter, "connectivityColorsMode", PlistValue(3));
    connectivity.open("NIMControlCenterConnectivityModulePrefsListController");
    connectivity.set("enableCustomConnectivityTogglesColor", PlistValue(true));
    EXPECT_EQ(connectivity.insertions(), (std::vector<std::string>{"customColorChild1 after customColorParent"} +
                                          chainLines(numbered("customColor%d", 1, 4), "customColorChild1")));
    connectivity.set("connectivityColorsMode", PlistValue(1));
    EXPECT_EQ(connectivity.removals(), numbered("customColor%d", 1, 4));
}

TEST(VersionGates, MediaSizeRowsAreGreyedOutFromIOS15)
{
    for (double version : {1770.105, 1770.106}) {
        test::PageSession s({.coreFoundationVersion = version});
        s.store(kControlCenter, "customMediaModuleSizeEnabled", PlistValue(true));
        s.open("NIMControlCenterMediaModulePrefsListController");
        bool greyed = version >= 1770.106;
        auto shown = s->rows();  // kept: the loop walks into it
        for (auto& row : shown["rows"]) {
            std::string id = row["properties"].value("id", "");
            if (id == "mediaSizeParent" || id == "mediaSizeChild") {
                EXPECT_EQ(row["enabled"], !greyed) << id << " at " << version;
            }
        }
        if (greyed) {
            EXPECT_THROW(s.set("customMediaModuleSizeEnabled", PlistValue(false)), CommandError);
        }
    }
}

TEST(ControlCenterRoot, TheModulesAlertListsTheModules)
{
    test::PageSession s;
    s.open("NIMControlCenterRootPrefsListController");
    s->call("showInfoAboutNimbraModules");
    auto alert = s.events("alert").at(0);
    EXPECT_EQ(alert["actions"], nlohmann::ordered_json::parse(R"([{"title":"Dismiss","style":"cancel"}])"));
    std::string message = alert["message"];
    EXPECT_TRUE(message.starts_with("Nimbra offers 4 modules for the Control Center:\n\n1) A Power Module"));
    EXPECT_TRUE(message.ends_with("to add those modules to Control Center."));
    s->alert("Dismiss");
}

TEST(ControlCenterRoot, TheReloadRemovesTheBackgroundBeforeTheVerticalPosition)
{
    test::PageSession s;
    s.store(kControlCenter, "enabled", PlistValue(true));
    s.open("NIMControlCenterRootPrefsListController");
    s->reload();
    EXPECT_EQ(s.removals(), unanimated(std::vector<std::string>{"backgroundColorChild1", "backgroundColorChild2"} +
                                       numbered("backgroundImageChild%d", 1, 6) +
                                       std::vector<std::string>{"verticalPositionChild", "linkChild"} +
                                       numbered("dateTimeChild%d", 1, 6)));
    EXPECT_TRUE(s.insertions().empty());
}

TEST(BatteryAndGestures, ActionFourOpensAnAppPickerAndStyleTwoShowsThePercentage)
{
    test::PageSession actions;
    actions.open("NIMBatteryActionsPrefsListController");
    actions.set("doubleTapAction", PlistValue(5));
    EXPECT_FALSE(actions.shows("doubleTapChild"));
    actions.set("doubleTapAction", PlistValue(4));
    EXPECT_TRUE(actions.shows("doubleTapChild"));
    actions->call("selectDoubleTapApp");
    actions->pick({"com.apple.camera", "com.apple.Music"});
    EXPECT_EQ(actions->file(kPreferences + "com.veltram.nimbraprefs.battery.gestureApps.plist")["value"]["doubleTapApp"],
              nlohmann::ordered_json::array({"com.apple.Music"}));

    test::PageSession root;
    root.store("com.veltram.nimbraprefs.battery", "style", PlistValue(2));
    root.open("NIMBatteryRootPrefsListController");
    root.set("enabled", PlistValue(true));
    auto lines = root.insertions();
    EXPECT_EQ(std::vector<std::string>(lines.end() - 2, lines.end()), chainLines({"percentageChild1", "percentageChild2"}, "topLevelChild2"));

    test::PageSession gestures;
    gestures.open("NIMGesturesPrefsListController");
    gestures.set("enableReachabilityActions", PlistValue(true));
    EXPECT_EQ(gestures.insertions(), chainLines(numbered("reachabilityChild%d", 1, 3), "reachabilityParent"));
}
