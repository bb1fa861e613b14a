// The root page: master switch over thirty rows, the colour-picker choice it makes for the process,
// the title that fades at the header's threshold, the blur it fades in from, and support mail.

#include "TestSupport.h"

#include "frame/NIMRootHeaderView.h"
#include "frame/NIMRootListController.h"
#include "platform/HBPreferences.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

namespace {

struct RootPageTest : ::testing::Test {
    test::SessionOnFreshRoot session;
    /// The shown rows the master switch governs (and the switch).
    std::vector<std::string> topLevelIds()
    {
        std::vector<std::string> ids;
        for (auto& id : session.shownIds())
            if (id.starts_with("topLevel"))
                ids.push_back(id);
        return ids;
    }
    void open()
    {
        session->open("NIMRootListController");
        session.events();
    }
    std::shared_ptr<NIMRootListController> root()
    {
        return std::dynamic_pointer_cast<NIMRootListController>(session->topPage());
    }
};

}  // namespace

TEST_F(RootPageTest, TheMasterSwitchGovernsThirtyRowsOneAtATime)
{
    open();
    EXPECT_EQ(topLevelIds(), (std::vector<std::string>{"topLevelSwitch"}));
    session->set("nimbraEnabled", PlistValue(true));
    auto inserts = session.events("insert");
    ASSERT_EQ(inserts.size(), 30u);
    EXPECT_EQ(inserts[0]["after"], "topLevelSwitch");
    EXPECT_EQ(inserts[29].dump(), R"({"event":"insert","ids":["topLevelChild30"],"after":"topLevelChild29","animated":true})");
    EXPECT_EQ(topLevelIds(), std::vector<std::string>{"topLevelSwitch"} + numbered("topLevelChild%d", 1, 30));

    root()->removeContiguousSpecifiers({root()->specifierForID("topLevelChild30")}, false);
    session.events();
    session->set("nimbraEnabled", PlistValue(true));
    EXPECT_TRUE(session.events("insert").empty()) << "only topLevelChild1 is tested";

    session->set("nimbraEnabled", PlistValue(false));
    auto removals = session.events("remove");
    EXPECT_EQ(removals.size(), 29u);
    for (auto& removal : removals)
        EXPECT_TRUE(removal["animated"].get<bool>());
}

TEST_F(RootPageTest, ItChoosesTheColourPickerForPagesOpenedAfterIt)
{
    test::writeFile(test::under(session.root.path(), "/var/jb/usr/lib/libcolorpicker.dylib"), "library");
    HBPreferences::preferencesForIdentifier("com.veltram.nimbraprefs")->setObject(PlistValue(0), "selectedColorPicker");
    session->open("NIMRootListController");
    auto opened = session.events("dlopen");
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0]["path"], "/var/jb/usr/lib/libcolorpicker.dylib");
    EXPECT_TRUE(opened[0]["loaded"].get<bool>());

    session->open("NIMBatteryLineColorsPrefsListController");
    session->set("chargingColorEnabled", PlistValue(true));
    auto rows = session->rows()["rows"];
    for (auto& row : rows) {
        if (row["properties"].value("id", "") != "chargingChild")
            continue;
        EXPECT_EQ(row["cellClass"], "HBColorPickerTableCell");
        EXPECT_EQ(row["properties"]["showAlphaSlider"], true);
        EXPECT_EQ(row["properties"]["defaults"], "com.veltram.nimbraprefs.batteryline.colors");
        return;
    }
    ADD_FAILURE() << "no charging colour row";
}

TEST_F(RootPageTest, TheHeaderSitsAtTheTopWithAnImageThirtyFivePointsTaller)
{
    open();
    auto header = NSObject::make<NIMRootHeaderView>();
    header->initWithSpecifier(nullptr);
    EXPECT_DOUBLE_EQ(header->preferredHeightForWidth(375), 375 / (1200.0 / 560.0) - 26);
    header->setFrame(CGRect{0, 50, 375, 149});
    EXPECT_EQ(header->frame(), (CGRect{0, 0, 375, 149}));
    EXPECT_EQ(header->headerImageView()->frame(), (CGRect{0, 0, 375, 184}));
    EXPECT_FLOAT_EQ(NIMRootHeaderView::headerH(), 184.0f);
}

TEST_F(RootPageTest, TheTitleFadesOnlyWhenTheThresholdIsCrossed)
{
    open();
    double threshold = 0.75 * NIMRootHeaderView::headerH();
    ASSERT_GT(threshold, 0) << "the table laid the header out";
    auto fades = [&] {
        std::vector<double> alphas;
        for (auto& event : session.events("animate"))
            if (event["view"] == "titleStack" && event.contains("alpha"))
                alphas.push_back(event["alpha"]);
        return alphas;
    };
    session->scroll(threshold);
    EXPECT_TRUE(fades().empty()) << "at the threshold the title stays hidden";
    session->scroll(threshold + 1);
    session->scroll(threshold + 80);
    EXPECT_EQ(fades(), std::vector<double>{1.0});
    EXPECT_EQ(root()->stackView()->translation()[1], 0);
    session->scroll(10);
    session->scroll(0);
    EXPECT_EQ(fades(), std::vector<double>{0.0});
    EXPECT_EQ(root()->stackView()->translation()[1], 40);
}

TEST_F(RootPageTest, BeforeAnyHeaderLayoutAnyOffsetShowsTheTitle)
{
    HBPreferences::preferencesForIdentifier("com.veltram.nimbraprefs")->setObject(PlistValue(true), "nimbraEnabled");
    // The same page without its header row: nothing ever lays a header out.
    auto root = PropertyListSerialization::propertyListWithData(test::readFile(std::filesystem::path(test::resourcesDir()) / "Root.plist"));
    ASSERT_TRUE(root);
    PlistDictionary definition = root->dictionaryValue();
    PlistArray items;
    for (auto& item : definition["items"].arrayValue())
        if (item["headerCellClass"].isNil())
            items.push_back(item);
    definition["items"] = PlistValue(items);
    test::TempDir resources;
    test::writePlist(resources / "Root.plist", PlistValue(definition), PropertyListSerialization::Format::XML);
    test::SessionOnFreshRoot bare({.resources = resources.path()});
    ASSERT_EQ(NIMRootHeaderView::headerH(), 0.0f);
    bare->open("NIMRootListController");
    bare.events();
    bare->scroll(0.5);
    EXPECT_EQ(bare.events("animate").size(), 2u) << "alpha and translation";
}

TEST_F(RootPageTest, EveryAppearanceFadesInFromABlur)
{
    session->open("NIMRootListController");
    auto blur = session.events("blur");
    ASSERT_EQ(blur.size(), 1u);
    EXPECT_EQ(blur[0]["style"], 4);
    session->tap("nimbraSettingsLink");
    EXPECT_EQ(session->topPage()->className(), "NIMNimbraSettingsPrefsListController");
    session.events();
    session->back();
    blur = session.events("blur");
    ASSERT_EQ(blur.size(), 1u) << "appearing again after the page above it closed";
    session->wait(0.4);
}

TEST_F(RootPageTest, SupportMailIsComposedAndLeavesTheRootWhereItWas)
{
    open();
    session->call("email");
    auto events = session.events();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0]["event"], "compose");
    EXPECT_EQ(events[0]["to"], nlohmann::ordered_json::array({"support@veltram.com"}));
    EXPECT_EQ(events[1]["event"], "present");
    session->cancel();
    events = session.events();
    ASSERT_EQ(events.size(), 1u) << "one controller to dismiss; the second dismissal finds nothing";
    EXPECT_EQ(events[0]["event"], "dismiss");
}
