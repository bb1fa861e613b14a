// The collapsible-group engine, driven through a page made for the purpose: a master switch with
// a nested selector (as the Battery Line root), a two-row rule, a rule whose reload reads a default,
// a guard on an id the page never captures, and a selector whose reload and hook disagree.

#include "TestSupport.h"

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* kDomain = "com.veltram.nimbraprefs.enginetest";

class NIMEngineTestPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMEngineTestPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description()
    {
        static const PageDescription page{
            .definition = "pages/Test/Engine",
            .domain = kDomain,
            .rules = {
                when("enabled", Condition::on()).chain(numbered("topLevelChild%d", 1, 3), "topLevelSwitch").nests({"style"}),
                when("style", Condition::notEqual(3)).editedBy("topLevelChild2")
                    .chain({"topLevelChild2Child1", "topLevelChild2Child2"}, "topLevelChild2"),
                when("extras", Condition::on()).chain({"extraChild1", "extraChild2"}, "extraParent"),
                when("showThing", Condition::on()).chain({"thingChild"}, "thingParent").reloadDefaulting(PlistValue(true)),
                when("repeat", Condition::on()).chain({"repeatChild"}, "repeatParent").guardedOnUncaptured("neverCaptured"),
                when("visibility", Condition::notEqual(1)).chain({"visibilityChild"}, "visibilityParent")
                    .reloadRemovingWhen(Condition::below(2)),
            },
        };
        return page;
    }
    using NIMCollapsibleListController::remove;
    using NIMCollapsibleListController::saved;
};

NIM_REGISTER_PAGE(NIMEngineTestPrefsListController, NIMGeneralListControllerWithRespringButton);

PlistValue item(const std::string& id, const std::string& key = {}, PlistValue defaultValue = {})
{
    PlistDictionary row{{"cell", PlistValue(key.empty() ? "PSStaticTextCell" : "PSSwitchCell")}, {"id", PlistValue(id)}};
    if (!key.empty()) {
        row["key"] = PlistValue(key);
        row["defaults"] = PlistValue(kDomain);
    }
    if (!defaultValue.isNil())
        row["default"] = defaultValue;
    return PlistValue(row);
}

const std::vector<std::string> kEverything{
    "topLevelSwitch", "topLevelChild1", "topLevelChild2", "topLevelChild2Child1", "topLevelChild2Child2", "topLevelChild3",
    "extraParent", "extraChild1", "extraChild2", "thingParent", "thingChild", "repeatParent", "repeatChild",
    "visibilityParent", "visibilityChild"};

struct EngineTest : ::testing::Test {
    test::TempDir resources;
    std::unique_ptr<test::SessionOnFreshRoot> session;

    EngineTest()
    {
        PlistArray items{item("topLevelSwitch", "enabled"), item("topLevelChild1"), item("topLevelChild2", "style", PlistValue(0)),
                         item("topLevelChild2Child1"), item("topLevelChild2Child2"), item("topLevelChild3"),
                         item("extraParent", "extras"), item("extraChild1"), item("extraChild2"),
                         item("thingParent", "showThing", PlistValue(true)), item("thingChild"),
                         item("repeatParent", "repeat"), item("repeatChild"),
                         item("visibilityParent", "visibility"), item("visibilityChild")};
        test::writePlist(resources / "pages/Test/Engine.plist", PlistValue(PlistDictionary{{"items", PlistValue(items)}}),
                         PropertyListSerialization::Format::XML);
        session = std::make_unique<test::SessionOnFreshRoot>(Session::Options{.resources = resources.path()});
    }
    test::SessionOnFreshRoot& s() { return *session; }
    void open()
    {
        s()->open("NIMEngineTestPrefsListController");
        s().events();
    }
    std::shared_ptr<NIMEngineTestPrefsListController> page()
    {
        return std::dynamic_pointer_cast<NIMEngineTestPrefsListController>(s()->topPage());
    }
    std::vector<std::string> without(std::vector<std::string> hidden)
    {
        std::vector<std::string> ids;
        for (auto& id : kEverything)
            if (std::find(hidden.begin(), hidden.end(), id) == hidden.end())
                ids.push_back(id);
        return ids;
    }
};

const std::vector<std::string> kHiddenOnAFreshRoot{
    "topLevelChild1", "topLevelChild2", "topLevelChild2Child1", "topLevelChild2Child2", "topLevelChild3",
    "extraChild1", "extraChild2", "repeatChild", "visibilityChild"};

}  // namespace

TEST_F(EngineTest, AFreshPageShowsOnlyTheParentsWithoutAnimation)
{
    s()->open("NIMEngineTestPrefsListController");
    EXPECT_EQ(s().shownIds(), without(kHiddenOnAFreshRoot));
    auto removals = s().events("remove");
    ASSERT_FALSE(removals.empty());
    for (auto& removal : removals)
        EXPECT_FALSE(removal["animated"].get<bool>());
    EXPECT_EQ(removals.front()["ids"], nlohmann::ordered_json::array({"topLevelChild1"})) << "one removal per child";
}

TEST_F(EngineTest, ASwitchInsertsItsRowsOnceAndRemovesThemAnimated)
{
    open();
    s()->set("extras", PlistValue(true));
    auto inserts = s().events("insert");
    ASSERT_EQ(inserts.size(), 2u);
    EXPECT_EQ(inserts[0].dump(), R"({"event":"insert","ids":["extraChild1"],"after":"extraParent","animated":true})");
    EXPECT_EQ(inserts[1].dump(), R"({"event":"insert","ids":["extraChild2"],"after":"extraChild1","animated":true})");

    s()->set("extras", PlistValue(true));
    EXPECT_TRUE(s().events("insert").empty());

    auto detached = page()->saved("extraChild1");
    s()->set("extras", PlistValue(false));
    auto removals = s().events("remove");
    ASSERT_EQ(removals.size(), 2u);
    EXPECT_TRUE(removals[0]["animated"].get<bool>());
    s()->set("extras", PlistValue(false));
    EXPECT_TRUE(s().events("remove").empty()) << "hiding hidden rows changes nothing";

    s()->set("extras", PlistValue(true));
    EXPECT_EQ(page()->specifierForID("extraChild1"), detached) << "a detached row comes back as the same object";
}

TEST_F(EngineTest, AGuardOnTheFirstChildStopsTheWholeRule)
{
    open();
    s()->set("extras", PlistValue(true));
    page()->remove({"extraChild2"});
    s().events();
    s()->set("extras", PlistValue(true));
    EXPECT_TRUE(s().events("insert").empty()) << "extraChild1 is shown, so extraChild2 stays missing";
}

TEST_F(EngineTest, NestedRowsFollowTheValueOfTheirRow)
{
    open();
    s()->write(kDomain, "style", PlistValue(3));
    s()->set("enabled", PlistValue(true));
    EXPECT_EQ(s().shownIds(), without({"topLevelChild2Child1", "topLevelChild2Child2", "extraChild1", "extraChild2",
                                       "repeatChild", "visibilityChild"}));
    s().events();
    s()->set("style", PlistValue(0));
    auto inserts = s().events("insert");
    ASSERT_EQ(inserts.size(), 2u);
    EXPECT_EQ(inserts[0]["after"], "topLevelChild2");
    EXPECT_EQ(inserts[1]["after"], "topLevelChild2Child1");

    s()->set("enabled", PlistValue(false));
    auto removed = s().events("remove");
    std::vector<std::string> order;
    for (auto& r : removed)
        order.push_back(r["ids"][0]);
    EXPECT_EQ(order, (std::vector<std::string>{"topLevelChild1", "topLevelChild2", "topLevelChild3", "topLevelChild2Child1",
                                               "topLevelChild2Child2"}));

    s()->set("enabled", PlistValue(true));
    EXPECT_EQ(s().shownIds(), without({"extraChild1", "extraChild2", "repeatChild", "visibilityChild"}))
        << "style 0 is stored, so the nested rows come with the parent";
    s()->set("style", PlistValue(3));
    s()->reload();
    EXPECT_EQ(s().shownIds(), without({"topLevelChild2Child1", "topLevelChild2Child2", "extraChild1", "extraChild2",
                                       "repeatChild", "visibilityChild"}));
}

TEST_F(EngineTest, TheReloadUsesItsOwnDefaultsAndTests)
{
    open();
    EXPECT_TRUE(page()->containsSpecifier(page()->saved("thingChild"))) << "absent showThing reads as its default YES";
    EXPECT_FALSE(page()->containsSpecifier(page()->saved("visibilityChild"))) << "visibility 0 is below 2";

    s()->set("visibility", PlistValue(0));
    EXPECT_TRUE(page()->containsSpecifier(page()->saved("visibilityChild"))) << "the hook shows it for every value but 1";
    s()->reload();
    EXPECT_FALSE(page()->containsSpecifier(page()->saved("visibilityChild"))) << "the reload hides it again";
    s()->set("visibility", PlistValue(2));
    s()->reload();
    EXPECT_TRUE(page()->containsSpecifier(page()->saved("visibilityChild")));
}

TEST_F(EngineTest, AGuardOnAnUncapturedIdNeverHolds)
{
    open();
    s()->set("repeat", PlistValue(true));
    s()->set("repeat", PlistValue(true));
    auto shown = s().shownIds();
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "repeatChild"), 2) << "the same row is inserted twice";
}

TEST_F(EngineTest, ClearingTheDomainHidesEverythingThatDefaultsToOff)
{
    open();
    s()->set("enabled", PlistValue(true));
    s()->set("extras", PlistValue(true));
    HBPreferences::preferencesForIdentifier(kDomain)->removeAllObjects();
    s()->reload();
    EXPECT_EQ(s().shownIds(), without(kHiddenOnAFreshRoot));
}
