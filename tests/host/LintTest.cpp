// The consistency check of the page definitions: the bundle passes it strictly, and a definition
// that lacks what its controller needs fails it with a message naming page, id or key.

#include "ProgramRun.h"
#include "TestSupport.h"

#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

/// A copy of the bundle's resources to break, and `nimbra-prefs` run over it.
struct Resources {
    test::TempDir folder;
    Resources() { fs::copy(test::resourcesDir(), folder.path(), fs::copy_options::recursive); }

    /// The program's output and errors together, and its exit status.
    test::ProgramRun run(std::vector<std::string> arguments, const std::string& input = "") const
    {
        auto run = test::runExecutable(test::prefsExe(), arguments, {"NIMBRA_RESOURCES=" + folder.path().string()}, input);
        run.output += run.errors;
        return run;
    }
    test::ProgramRun lint(bool strict = true) const { return strict ? run({"lint", "--strict"}) : run({"lint"}); }

    /// Changes the items of a page definition.
    void edit(const std::string& definition, const std::function<void(PlistArray&)>& change) const
    {
        fs::path file = folder / definition;
        auto page = PropertyListSerialization::propertyListWithData(test::readFile(file))->dictionaryValue();
        PlistArray items = page["items"].arrayValue();
        change(items);
        page["items"] = PlistValue(items);
        test::writePlist(file, PlistValue(page), PropertyListSerialization::Format::XML);
    }
    /// Sets (or, with nil, removes) one field of the first item that `which` picks.
    void set(const std::string& definition, const std::function<bool(PlistValue&)>& which, const std::string& field, PlistValue value) const
    {
        edit(definition, [&](PlistArray& items) {
            for (auto& item : items)
                if (which(item)) {
                    PlistDictionary row = item.dictionaryValue();
                    if (value.isNil())
                        row.erase(field);
                    else
                        row[field] = value;
                    item = PlistValue(row);
                    return;
                }
            ADD_FAILURE() << definition << ": no such item for " << field;
        });
    }
    void setById(const std::string& definition, const std::string& id, const std::string& field, PlistValue value) const
    {
        set(definition, [&](PlistValue& item) { return item["id"].stringValue() == id; }, field, std::move(value));
    }
};

auto withField(const std::string& field, const std::string& value = "")
{
    return [=](PlistValue& item) { return value.empty() ? !item[field].isNil() : item[field].stringValue() == value; };
}

}  // namespace

TEST(Lint, EveryPageOfTheBundlePassesStrictly)
{
    auto run = test::runExecutable(test::prefsExe(), {"lint", "--strict"}, {"NIMBRA_RESOURCES=" + test::resourcesDir()});
    EXPECT_EQ(run.status, 0) << run.output << run.errors;
    EXPECT_NE((run.output + run.errors).find(", 0 problems"), std::string::npos) << run.output << run.errors;
}

TEST(Lint, AMissingChildAWrongRoleAndAStrayDomainAreNamed)
{
    Resources resources;
    resources.edit("pages/Modules/CPUInfoRoot.plist", [](PlistArray& items) {
        std::erase_if(items, [](auto& item) { return item["id"].stringValue() == "topLevelChild14"; });
    });
    resources.setById("pages/SpringBoard/HomeScreenDock.plist", "topLevelChild4", "key", PlistValue("dockColorMode"));
    resources.set("pages/SystemApps/Safari.plist", withField("key"), "defaults", PlistValue("com.veltram.nimbraprefs.music"));
    auto run = resources.lint();
    EXPECT_EQ(run.status, 1);
    for (const std::string message :
         {"NIMCPUInfoRootPrefsListController (pages/Modules/CPUInfoRoot): id \"topLevelChild14\" that rule \"enabled\" shows is missing",
          "rule \"oneColor\": row \"topLevelChild4\" should edit \"dockBGColorMode\" but edits \"dockColorMode\"",
          "NIMSafariPrefsListController (pages/SystemApps/Safari): row", "which is not one of the page's domains"})
        EXPECT_NE(run.output.find(message), std::string::npos) << message << "\n" << run.output;
}

TEST(Lint, StrictlyAUserMustBeAbleToReadEveryRow)
{
    Resources resources;
    const std::string definition = "pages/SpringBoard/StatusBarRoot.plist";
    resources.setById(definition, "topLevelChild12", "default", PlistValue(2));
    resources.setById(definition, "topLevelChild13", "label", PlistValue());
    resources.setById(definition, "topLevelChild3", "label", PlistValue("Hide on Home Screen"));
    resources.setById(definition, "topLevelChild13", "validTitles", PlistValue(PlistArray{PlistValue("Bars"), PlistValue("")}));
    resources.setById(definition, "topLevelChild17", "default", PlistValue(1.5));
    resources.setById(definition, "topLevelChild14", "footerText", PlistValue("Turn hideRecordingIndicator on to hide the dot."));
    resources.setById(definition, "topLevelChild19", "subtitle", PlistValue("A bool: YES locks the device."));
    resources.setById(definition, "topLevelChild4", "label", PlistValue("Hide in control center"));
    auto strict = resources.lint();
    EXPECT_EQ(strict.status, 1);
    const std::string page = "NIMStatusBarRootPrefsListController (pages/SpringBoard/StatusBarRoot): ";
    for (const std::string& message : {page + "row \"topLevelChild12\" defaults to a value it does not offer",
                                       page + "row \"topLevelChild13\" is a control without a label",
                                       page + "row \"topLevelChild3\" reads \"Hide on Home Screen\" like another row of its section",
                                       page + "row \"topLevelChild13\" has a value without a title",
                                       page + "row \"topLevelChild17\" defaults to a value outside its range",
                                       page + "row \"topLevelChild14\" shows the developer word \"hideRecordingIndicator\" in its footer",
                                       page + "row \"topLevelChild19\" shows the developer word \"bool\" in its subtitle",
                                       page + "row \"topLevelChild4\" is labelled \"Hide in control center\", not in title case"})
        EXPECT_NE(strict.output.find(message), std::string::npos) << message << "\n" << strict.output;
    EXPECT_NE(strict.output.find(", 8 problems"), std::string::npos) << strict.output;
}

TEST(Lint, ADefinitionWithAnItemThatIsNotADictionaryIsRefusedByOpenLintAndSearchAlike)
{
    Resources resources;
    resources.edit("pages/SpringBoard/HomeScreenDock.plist", [](PlistArray& items) { items.insert(items.begin() + 1, PlistValue("not a row")); });
    const std::string refusal = "page definition \"pages/SpringBoard/HomeScreenDock.plist\": item 1 is not a dictionary";

    auto run = resources.lint();
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("NIMHomeScreenDockPrefsListController (pages/SpringBoard/HomeScreenDock): " + refusal), std::string::npos)
        << run.output;
    EXPECT_EQ(run.output.find("HomeScreenDock): id \""), std::string::npos) << "the refused page is not checked row by row\n" << run.output;

    test::TempDir root;
    std::string opened = resources.run({"--root", root.path().string(), "script"}, "open NIMHomeScreenDockPrefsListController\nshow\n").output;
    EXPECT_NE(opened.find(refusal), std::string::npos) << opened;
    EXPECT_NE(opened.find("{\"page\":\"NIMHomeScreenDockPrefsListController\",\"ids\":[]}"), std::string::npos) << opened;

    std::string found = resources.run({"search", "Dock"}).output;
    EXPECT_EQ(found.find("NIMHomeScreenDockPrefsListController"), std::string::npos) << "search leaves the refused page out\n" << found;
    EXPECT_NE(found.find("\"page\":\"NIMHomeScreenRootPrefsListController\""), std::string::npos)
        << "the link to it is still found\n" << found;
}

TEST(Lint, StrictlyASwitchShowsWhatAnAbsentKeyReads)
{
    Resources resources;
    // "Show in Apps" reads NO when nothing is stored; the Tovin title's show key reads YES.
    resources.set("pages/Modules/CPUInfoVisibility.plist", withField("key", "showInApps"), "default", PlistValue(true));
    resources.set("pages/Modules/TovinNotificationTitle.plist", withField("key", "showTitle"), "default", PlistValue());
    auto run = resources.lint();
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("row \"topLevelChild3\" shows on while nothing is stored, but \"showInApps\" reads NO when absent"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("row \"topLevelSwitch\" shows off while nothing is stored, but \"showTitle\" reads YES when absent"),
              std::string::npos)
        << run.output;
}

TEST(Lint, ALinkToAPageThatIsNotThereIsAProblemWithoutStrict)
{
    Resources resources;
    resources.set("pages/SpringBoard/HomeScreenRoot.plist", withField("detail"), "detail", PlistValue("NIMHomeScreenNowherePrefsListController"));
    auto run = resources.lint(false);
    EXPECT_EQ(run.status, 1) << run.output;
    EXPECT_NE(run.output.find("opens \"NIMHomeScreenNowherePrefsListController\", which is no page controller"), std::string::npos) << run.output;
}
