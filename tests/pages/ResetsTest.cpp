// The reset buttons of every group: each asks in its group's words, deletes exactly its own files
// (in order), keeps the files it means to keep, and resprings.

#include "pages/PageTestSupport.h"

#include <gtest/gtest.h>

namespace {

struct Reset {
    std::string page, action;
    std::string message;  // "": not checked
    /// Files of the group (suffixes of the product's domain) that the reset deletes, in order.
    std::vector<std::string> deleted;
    /// Files stored beside them that it leaves.
    std::vector<std::string> kept = {};
};

std::vector<Reset> resets()
{
    std::vector<Reset> resets{
        {"NIMHomeScreenRootPrefsListController", "resetSettings", "Do you really want to reset Home Screen Settings?",
         {".homescreen", ".homescreen.renamedApps", ".homescreen.hiddenApps"}},
        {"NIMHomeScreenRootPrefsListController", "resetColors", "Do you really want to reset Home Screen Colors?", {".homescreen.colors"}},
        {"NIMLockScreenRootPrefsListController", "resetSettings", "Do you really want to reset Lock Screen Settings?", {".lockscreen"}},
        {"NIMStatusBarRootPrefsListController", "resetSettings", "Do you really want to reset Status Bar Settings?",
         {".statusbar", ".battery", ".battery.gestureApps", ".time", ".time.gestureApps"}},
        {"NIMStatusBarRootPrefsListController", "resetColors", "Do you really want to reset Status Bar Colors?",
         {".statusbar.colors", ".battery.colors", ".time.colors"}},
        {"NIMNotificationsRootPrefsListController", "resetSettings", "Do you really want to reset Notifications Settings?", {".notifications"}},
        {"NIMWidgetsRootPrefsListController", "resetSettings", "Do you really want to reset Widgets Settings?", {".widgets"}},
        {"NIMMiscellaneousRootPrefsListController", "resetSettings", "Do you really want to reset Miscellaneous Settings?", {".misc"}},
        {"NIMControlCenterRootPrefsListController", "resetSettings", "", {".controlcenter", ".controlcenter.rearrangeconnectivity"},
         {".controlcenter.colors"}},
        {"NIMControlCenterRootPrefsListController", "resetColors", "", {".controlcenter.colors"}},
        {"NIMAppSwitcherRootPrefsListController", "resetSettings", "", {".appswitcher"}},
    };
    // The overlay modules: their app lists go with the settings (but for Tovin's blacklist), their
    // gesture apps stay, and the colours go only with the colours.
    struct Module {
        std::string prefix, name, suffix;
        std::vector<std::string> lists;  // deleted after the settings file, in order
    };
    const std::vector<std::string> allLists{".blackListedApps", ".holdApp", ".doubleTapApp"};
    for (auto& module : std::vector<Module>{
             {"CPUInfo", "CPU Info", ".cpuinfo", allLists},
             {"RAMInfo", "RAM Info", ".raminfo", allLists},
             {"NetworkSpeed", "Network Speed", ".networkspeed", allLists},
             {"BatteryLine", "Battery Line", ".batteryline", {".blackListedApps"}},
             {"BluetoothBatteryInfo", "Bluetooth Battery Info", ".bluetoothbatteryinfo", {".blackListedApps"}},
             {"Glimra", "Glimra", ".glimra", {".blackListedApps"}},
             {"Tovin", "Tovin", ".tovin", {}},
         }) {
        Reset settings{"NIM" + module.prefix + "RootPrefsListController", "resetSettings",
                       "Do you really want to reset " + module.name + " Settings?", {module.suffix}, {module.suffix + ".colors", module.suffix + ".gestureApps"}};
        for (auto& list : allLists)
            (std::find(module.lists.begin(), module.lists.end(), list) != module.lists.end() ? settings.deleted : settings.kept)
                .push_back(module.suffix + list);
        resets.push_back(settings);
        resets.push_back({settings.page, "resetColors", "", {module.suffix + ".colors"}, {module.suffix, module.suffix + ".gestureApps"}});
    }
    return resets;
}

}  // namespace

TEST(Resets, EachGroupDeletesItsOwnFilesAndKeepsTheRest)
{
    const std::string domain = "com.veltram.nimbraprefs", preferences = "/var/jb/var/mobile/Library/Preferences/" + domain;
    for (auto& reset : resets()) {
        SCOPED_TRACE(reset.page + " " + reset.action);
        test::PageSession s;
        std::vector<std::string> expected;
        for (auto& suffix : reset.deleted) {
            s.store(domain + suffix, "stored", PlistValue(true));
            expected.push_back(preferences + suffix + ".plist");
        }
        for (auto& suffix : reset.kept)
            s.store(domain + suffix, "kept", PlistValue(true));
        s.open(reset.page);
        EXPECT_EQ(s.confirm(reset.action), expected);
        if (!reset.message.empty()) {
            EXPECT_EQ(s.alertMessage, reset.message);
        }
        EXPECT_TRUE(s.resprung);
        for (auto& suffix : reset.kept)
            EXPECT_TRUE(s->file(preferences + suffix + ".plist")["exists"]) << suffix << " stays";
    }
}
