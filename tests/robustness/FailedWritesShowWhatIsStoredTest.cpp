// A value that did not reach the disk is never shown as saved: for every kind of row the row shows
// the stored value afterwards, the rows it governs follow the stored value, and the error event
// names the row and the page in the user's words (no device path).

#include "pages/PageTestSupport.h"

#include "platform/SystemCalls.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

/// Every file creation fails while one lives, as on a read-only or full disk.
struct ReadOnlyDisk {
    ReadOnlyDisk()
    {
        SystemCalls::injectFaults([](SystemCalls::Call call) { return call == SystemCalls::Call::CreateTemporary ? EROFS : 0; });
    }
    ~ReadOnlyDisk() { SystemCalls::injectFaults({}); }
};

/// The shown row whose id (or key) is name, from `rows`.
nlohmann::json row(test::PageSession& s, const std::string& name)
{
    auto rows = s->rows();
    for (auto& shown : rows["rows"])
        if (shown["properties"].value("id", "") == name || shown["properties"].value("key", "") == name)
            return shown;
    return nullptr;
}

/// Sets key on a read-only disk and checks what the page shows and says afterwards.
void failToSet(test::PageSession& s, const std::string& key, const PlistValue& value, const std::string& label)
{
    SCOPED_TRACE(key);
    auto before = row(s, key);
    ASSERT_FALSE(before.is_null()) << key << " is not shown";
    auto shownBefore = s.shownIds();
    s.forget();
    {
        ReadOnlyDisk disk;
        s.set(key, value);
    }
    auto errors = s.events("error");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0]["label"], label);
    EXPECT_FALSE(errors[0]["page"].get<std::string>().empty());
    EXPECT_EQ(errors[0]["key"], key);
    EXPECT_EQ(errors[0]["message"].get<std::string>().find("/var/jb"), std::string::npos) << errors[0];
    EXPECT_EQ(errors[0]["reason"].get<std::string>().find("/var/jb"), std::string::npos) << errors[0];
    EXPECT_TRUE(s.events("insert").empty()) << "no governed row follows a value that was not stored";
    EXPECT_TRUE(s.events("remove").empty());
    EXPECT_EQ(s.shownIds(), shownBefore);
    EXPECT_EQ(row(s, key)["value"], before["value"]) << "the row shows what is stored";
    // What is stored governs the page, as a reload shows.
    s->reload();
    EXPECT_EQ(s.shownIds(), shownBefore);
}

}  // namespace

TEST(FailedWrites, SwitchSegmentSliderListAndColourRowsShowWhatIsStored)
{
    test::PageSession s;
    s.open("NIMHomeScreenDockPrefsListController");
    failToSet(s, "enableCustomDockRadius", PlistValue(true), "Custom Corner Radius");
    EXPECT_FALSE(s.shows("customRadiusChild")) << "the governed row stays out";
    failToSet(s, "dockType", PlistValue(1), "Style");
    // Rows that need a stored value first.
    s.set("enableCustomDockRadius", PlistValue(true));
    ASSERT_TRUE(s.shows("customRadiusChild"));
    failToSet(s, "dockCornerRadius", PlistValue(25.0), "Radius");
    s.set("dockBGColorMode", PlistValue(2));
    failToSet(s, "dockBGGradientDirection", PlistValue(3), "Gradient Direction");
    failToSet(s, "dockBGColor", PlistValue("#FF0000"), "Fill Color");
    failToSet(s, "dockBGColorMode", PlistValue(0), "Fill");
    EXPECT_TRUE(s.shows("bgColorChild1")) << "a removal that was not stored removes nothing";
}

TEST(FailedWrites, TextRowsShowWhatIsStored)
{
    test::PageSession s;
    s.open("NIMNetworkSpeedInformationToShowPrefsListController");
    s.set("showUploadSpeed", PlistValue(true));
    ASSERT_TRUE(s.shows("uploadChild"));
    failToSet(s, "uploadPrefix", PlistValue("Up: "), "Prefix");
    failToSet(s, "showUploadSpeed", PlistValue(false), "Show Upload Speed");
    EXPECT_TRUE(s.shows("uploadChild"));
}

TEST(FailedWrites, AnAppPickerShowsWhatIsStored)
{
    test::PageSession s;
    s.open("NIMNetworkSpeedVisibilityPrefsListController");
    s->call("selectBlackListedApps");
    s->pick({"com.apple.camera"});
    s.forget();
    {
        ReadOnlyDisk disk;
        s->pick({"com.apple.Maps"});
    }
    auto errors = s.events("error");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0]["label"], "Maps");
    EXPECT_EQ(errors[0]["message"].get<std::string>().find("/var/jb"), std::string::npos);
    EXPECT_EQ(s->file("/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.networkspeed.blackListedApps.plist")["value"],
              (nlohmann::ordered_json{{"blackListedApps", {"com.apple.camera"}}}));
    bool mapsShownOff = false;
    auto rows = s->rows();
    for (auto& shown : rows["rows"])
        if (shown["properties"].value("bundleIdentifier", "") == "com.apple.Maps")
            mapsShownOff = shown["value"] == false;
    EXPECT_TRUE(mapsShownOff) << "the app's switch shows what is stored";
}
