#include "TestSupport.h"

#include "frame/SharedActions.h"
#include "platform/HBPreferences.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr const char* kLibraries[] = {"/var/jb/usr/lib/libcolorpicker.dylib", "/var/jb/usr/lib/libsparkcolourpicker.dylib",
                                      "/var/jb/usr/lib/libCSColorPicker.dylib"};

struct SharedActionsTest : ::testing::Test {
    test::SessionOnFreshRoot session;
    Process& process() { return session->process(); }
    void install(const char* library) { test::writeFile(test::under(session.root.path(), library), "library"); }
    std::vector<std::string> opened()
    {
        std::vector<std::string> paths;
        for (auto& event : session.events("dlopen"))
            paths.push_back(event["path"]);
        return paths;
    }
    static std::shared_ptr<PSSpecifier> colorRow(std::string cell = "PSLinkCell")
    {
        auto row = std::make_shared<PSSpecifier>("Charging Color", PSCellTypeFromString(cell));
        row->setProperty(PlistValue(cell), "cell");
        row->setProperty(PlistValue(NSClassFromString("NimbraColorPickerTableCell")), "cellClass");
        row->setProperty(PlistValue("Charging Color"), "label");
        row->setProperty(PlistValue("com.veltram.nimbraprefs.batteryline.colors"), "defaults");
        row->setProperty(PlistValue("chargingColor"), "key");
        row->setProperty(PlistValue("#2ECC71"), "default");
        row->setProperty(PlistValue(true), "showAlpha");
        row->setProperty(PlistValue("chargingChild"), "id");
        row->setProperty(PlistValue("com.veltram.nimbraprefs.batteryline/ReloadPrefs"), "PostNotification");
        return row;
    }
};

}  // namespace

TEST_F(SharedActionsTest, TheStoredPickerWinsWhenItIsOneToThree)
{
    install(kLibraries[0]);
    HBPreferences::preferencesForIdentifier("com.veltram.nimbraprefs")->setObject(PlistValue(2), "selectedColorPicker");
    NimbraColorPickers::selectColorPicker();
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 2);
    EXPECT_EQ(opened(), (std::vector<std::string>{kLibraries[1]})) << "chosen, not probed";
}

TEST_F(SharedActionsTest, AnOutOfRangePickerIsProbedForAndNotWrittenBack)
{
    auto base = HBPreferences::preferencesForIdentifier("com.veltram.nimbraprefs");
    base->setObject(PlistValue(7), "selectedColorPicker");
    install(kLibraries[1]);
    NimbraColorPickers::selectColorPicker();
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 2);
    EXPECT_EQ(base->integerForKey("selectedColorPicker"), 7);

    install(kLibraries[0]);
    NimbraColorPickers::selectColorPicker();
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 1) << "libcolorpicker is probed first";
}

TEST_F(SharedActionsTest, WithNeitherProbedLibraryThePickerIsThreeEvenIfItIsMissing)
{
    NimbraColorPickers::selectColorPicker();
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 3);
    auto events = session.events("dlopen");
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0]["path"], kLibraries[2]);
    EXPECT_FALSE(events[0]["loaded"].get<bool>());
}

TEST_F(SharedActionsTest, ColourRowsAreRewrittenForEachPicker)
{
    auto page = NSObject::make<PSListController>();
    for (const char* library : kLibraries)
        install(library);

    NimbraColorPickers::choose(1);
    SpecifierArray rows{colorRow()};
    fixColorPicker(rows, page);
    EXPECT_EQ(rows[0]->cellClass()->name, "HBColorPickerTableCell");
    EXPECT_EQ(rows[0]->cellType(), PSCellType::Link);
    EXPECT_EQ(rows[0]->name(), "Charging Color");
    EXPECT_EQ(rows[0]->target(), page);
    EXPECT_EQ(rows[0]->propertyForKey("default"), PlistValue("#2ECC71"));
    EXPECT_EQ(rows[0]->propertyForKey("showAlphaSlider"), PlistValue(true));
    EXPECT_EQ(rows[0]->identifier(), "chargingChild");
    EXPECT_EQ(rows[0]->propertyForKey("PostNotification"), PlistValue("com.veltram.nimbraprefs.batteryline/ReloadPrefs"));
    EXPECT_TRUE(rows[0]->propertyForKey("cell").isNil()) << "the new row is made, not copied";

    NimbraColorPickers::choose(2);
    rows = {colorRow()};
    rows[0]->setProperty({}, "PostNotification");
    fixColorPicker(rows, page);
    EXPECT_EQ(rows[0]->cellClass()->name, "SparkColourPickerCell");
    EXPECT_EQ(rows[0]->identifier(), "chargingChild");
    EXPECT_TRUE(rows[0]->propertyForKey("key").isNil());
    PlistDictionary expected{{"defaults", PlistValue("com.veltram.nimbraprefs.batteryline.colors")},
                             {"key", PlistValue("chargingColor")},
                             {"fallback", PlistValue("#2ECC71")},
                             {"alpha", PlistValue(true)},
                             {"PreviewGradient", PlistValue(false)},
                             {"PreviewStyle", PlistValue(2)}};
    EXPECT_EQ(rows[0]->propertyForKey("libsparkcolourpicker"), PlistValue(expected));

    NimbraColorPickers::choose(7);
    rows = {colorRow()};
    rows[0]->setProperty({}, "id");
    fixColorPicker(rows, page);
    EXPECT_EQ(rows[0]->cellClass()->name, "CSColorDisplayCell");
    EXPECT_EQ(rows[0]->propertyForKey("fallback"), PlistValue("#2ECC71"));
    EXPECT_EQ(rows[0]->propertyForKey("alpha"), PlistValue(true));
    EXPECT_TRUE(rows[0]->propertyForKey("default").isNil());
    EXPECT_TRUE(rows[0]->propertyForKey("id").isNil()) << "a row without id gets none";
}

TEST_F(SharedActionsTest, OnlyLinkRowsMarkedAsColourRowsAreRewritten)
{
    NimbraColorPickers::choose(1);
    auto switchRow = colorRow("PSSwitchCell");
    auto plainLink = std::make_shared<PSSpecifier>("Link", PSCellType::Link);
    plainLink->setProperty(PlistValue("PSLinkCell"), "cell");
    SpecifierArray rows{switchRow, plainLink};
    fixColorPicker(rows, nullptr);
    EXPECT_EQ(rows[0], switchRow);
    EXPECT_EQ(rows[1], plainLink);
}

TEST_F(SharedActionsTest, AMissingPickerLibraryLeavesRowsWithoutACellClass)
{
    NimbraColorPickers::choose(1);
    SpecifierArray rows{colorRow()};
    fixColorPicker(rows, nullptr);
    EXPECT_EQ(rows[0]->cellClass(), nullptr);
    EXPECT_EQ(rows[0]->key(), "chargingColor");
}

TEST_F(SharedActionsTest, CloseAppTerminatesThroughBackBoardServicesAndAlwaysReportsSuccess)
{
    auto page = NSObject::make<PSListController>();
    closeApp("Phone", "com.apple.mobilephone", *page);
    auto events = session.events();
    ASSERT_GE(events.size(), 3u);
    EXPECT_EQ(events[0]["event"], "dlopen");
    EXPECT_EQ(events[0]["path"], "/System/Library/PrivateFrameworks/BackBoardServices.framework/BackBoardServices");
    EXPECT_EQ(events[1].dump(), R"({"event":"terminate","bundleID":"com.apple.mobilephone"})");
    EXPECT_EQ(events[2].dump(),
              R"({"event":"alert","title":"Nimbra","message":"Phone Closed Successfully!","actions":[{"title":"Dismiss","style":"cancel"}]})");

    page->dismissViewControllerAnimated(false);
    std::filesystem::remove(test::under(session.root.path(), "/System/Library/PrivateFrameworks/BackBoardServices.framework/BackBoardServices"));
    session.events();
    closeApp("Settings", "com.apple.Preferences", *page);
    events = session.events();
    ASSERT_EQ(events.size(), 2u) << "no termination without the framework";
    EXPECT_FALSE(events[0]["loaded"].get<bool>());
    EXPECT_EQ(events[1]["message"], "Settings Closed Successfully!");
}

TEST_F(SharedActionsTest, ALinkToAMissingLibraryIsNotProbedAsPresent)
{
    auto link = test::under(session.root.path(), kLibraries[0]);
    std::filesystem::create_directories(link.parent_path());
    std::filesystem::create_symlink(link.parent_path() / "libcolorpicker.1.dylib", link);
    install(kLibraries[1]);
    session->open("NIMRootListController");
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 2);
    EXPECT_EQ(opened(), (std::vector<std::string>{kLibraries[1]}));
    session->open("NIMBatteryLineColorsPrefsListController");
    session->set("chargingColorEnabled", PlistValue(true));
    bool sparkRow = false;
    auto rows = session->rows();
    for (auto& row : rows["rows"])
        sparkRow = sparkRow || row["cellClass"] == "SparkColourPickerCell";
    EXPECT_TRUE(sparkRow) << "the colour rows draw with the library that was opened";

    // A link to a library that is there counts as the library.
    test::writeFile(link.parent_path() / "libcolorpicker.1.dylib", "library");
    NimbraColorPickers::selectColorPicker();
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 1);
}

TEST_F(SharedActionsTest, OpeningAPageNeverProbesAgainOnceAChoiceIsMade)
{
    install(kLibraries[0]);
    session->open("NIMNimbraSettingsPrefsListController");
    EXPECT_EQ(opened(), (std::vector<std::string>{kLibraries[0]})) << "the first page opened directly finds a choice made";
    session->set("selectedColorPicker", PlistValue(0));
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 0);
    EXPECT_EQ(opened(), (std::vector<std::string>{kLibraries[2]})) << "0 opens the third library";
    session->open("NIMBatteryLineColorsPrefsListController");
    EXPECT_TRUE(opened().empty()) << "no second selection";
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 0);
    session->open("NIMRootListController");
    EXPECT_EQ(NimbraColorPickers::selectedColorPicker(), 1) << "the root page selects again when it is created";
}
