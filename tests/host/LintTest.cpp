// The consistency check of the page definitions: the bundle passes it strictly, and a definition
// that lacks what its controller needs fails it with a message naming page, id or key.

#include "TestSupport.h"

#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>

namespace fs = std::filesystem;

namespace {

struct LintRun {
    int status;
    std::string output;
};

LintRun lint(const fs::path& resources)
{
    std::string command = "NIMBRA_RESOURCES='" + resources.string() + "' '" + test::prefsExe() + "' lint --strict 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, n);
    int status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

void edit(const fs::path& file, const std::function<void(PlistArray&)>& change)
{
    auto definition = PropertyListSerialization::propertyListWithData(test::readFile(file))->dictionaryValue();
    PlistArray items = definition["items"].arrayValue();
    change(items);
    definition["items"] = PlistValue(items);
    test::writeFile(file, PropertyListSerialization::dataWithPropertyList(PlistValue(definition), PropertyListSerialization::Format::XML));
}

}  // namespace

TEST(Lint, EveryPageOfTheBundlePassesStrictly)
{
    auto run = lint(test::resourcesDir());
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find(", 0 problems"), std::string::npos) << run.output;
}

TEST(Lint, AMissingChildAWrongRoleAndAStrayDomainAreNamed)
{
    test::TempDir resources;
    fs::copy(test::resourcesDir(), resources.path(), fs::copy_options::recursive);
    edit(resources / "pages/Modules/CPUInfoRoot.plist", [](PlistArray& items) {
        std::erase_if(items, [](auto& item) { return item["id"].stringValue() == "topLevelChild14"; });
    });
    edit(resources / "pages/SpringBoard/HomeScreenDock.plist", [](PlistArray& items) {
        for (auto& item : items)
            if (item["id"].stringValue() == "topLevelChild4") {
                PlistDictionary row = item.dictionaryValue();
                row["key"] = PlistValue("dockColorMode");
                item = PlistValue(row);
            }
    });
    edit(resources / "pages/SystemApps/Safari.plist", [](PlistArray& items) {
        for (auto& item : items)
            if (!item["key"].isNil()) {
                PlistDictionary row = item.dictionaryValue();
                row["defaults"] = PlistValue("com.veltram.nimbraprefs.music");
                item = PlistValue(row);
                break;
            }
    });
    auto run = lint(resources.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("NIMCPUInfoRootPrefsListController (pages/Modules/CPUInfoRoot): id \"topLevelChild14\" that rule \"enabled\" shows is missing"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("rule \"oneColor\": row \"topLevelChild4\" should edit \"dockBGColorMode\" but edits \"dockColorMode\""),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("NIMSafariPrefsListController (pages/SystemApps/Safari): row"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("which is not one of the page's domains"), std::string::npos) << run.output;
}

TEST(Lint, StrictlyAUserMustBeAbleToReadEveryRow)
{
    test::TempDir resources;
    fs::copy(test::resourcesDir(), resources.path(), fs::copy_options::recursive);
    auto change = [](PlistArray& items, const std::string& id, const std::string& key, PlistValue value) {
        for (auto& item : items)
            if (item["id"].stringValue() == id) {
                PlistDictionary row = item.dictionaryValue();
                if (value.isNil())
                    row.erase(key);
                else
                    row[key] = std::move(value);
                item = PlistValue(row);
                return;
            }
        FAIL() << id << " is not in the definition";
    };
    edit(resources / "pages/SpringBoard/StatusBarRoot.plist", [&](PlistArray& items) {
        change(items, "topLevelChild12", "default", PlistValue(2));
        change(items, "topLevelChild13", "label", PlistValue());
        change(items, "topLevelChild3", "label", PlistValue("Hide on Home Screen"));
        change(items, "topLevelChild13", "validTitles", PlistValue(PlistArray{PlistValue("Bars"), PlistValue("")}));
        change(items, "topLevelChild17", "default", PlistValue(1.5));
        change(items, "topLevelChild14", "footerText", PlistValue("Turn hideRecordingIndicator on to hide the dot."));
        change(items, "topLevelChild19", "subtitle", PlistValue("A bool: YES locks the device."));
        change(items, "topLevelChild4", "label", PlistValue("Hide in control center"));
    });
    auto strict = lint(resources.path());
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
    test::TempDir resources;
    fs::copy(test::resourcesDir(), resources.path(), fs::copy_options::recursive);
    edit(resources / "pages/SpringBoard/HomeScreenDock.plist", [](PlistArray& items) { items.insert(items.begin() + 1, PlistValue("not a row")); });
    const std::string refusal = "page definition \"pages/SpringBoard/HomeScreenDock.plist\": item 1 is not a dictionary";

    auto run = lint(resources.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("NIMHomeScreenDockPrefsListController (pages/SpringBoard/HomeScreenDock): " + refusal), std::string::npos)
        << run.output;
    EXPECT_EQ(run.output.find("HomeScreenDock): id \""), std::string::npos) << "the refused page is not checked row by row\n" << run.output;

    std::string env = "NIMBRA_RESOURCES='" + resources.path().string() + "' ";
    auto capture = [](const std::string& command) {
        FILE* pipe = ::popen(command.c_str(), "r");
        std::string output;
        char buffer[4096];
        while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
            output.append(buffer, n);
        ::pclose(pipe);
        return output;
    };
    test::TempDir root;
    std::string opened = capture(env + "'" + test::prefsExe() + "' --root '" + root.path().string() +
                                 "' script 2>&1 <<'END'\nopen NIMHomeScreenDockPrefsListController\nshow\nEND\n");
    EXPECT_NE(opened.find(refusal), std::string::npos) << opened;
    EXPECT_NE(opened.find("{\"page\":\"NIMHomeScreenDockPrefsListController\",\"ids\":[]}"), std::string::npos) << opened;

    std::string found = capture(env + "'" + test::prefsExe() + "' search Dock 2>&1");
    EXPECT_EQ(found.find("NIMHomeScreenDockPrefsListController"), std::string::npos) << "search leaves the refused page out\n" << found;
    EXPECT_NE(found.find("\"page\":\"NIMHomeScreenRootPrefsListController\""), std::string::npos)
        << "the link to it is still found\n" << found;
}

TEST(Lint, StrictlyASwitchShowsWhatAnAbsentKeyReads)
{
    test::TempDir resources;
    fs::copy(test::resourcesDir(), resources.path(), fs::copy_options::recursive);
    // "Show in Apps" reads NO when nothing is stored; the Tovin title's show key reads YES.
    edit(resources / "pages/Modules/CPUInfoVisibility.plist", [](PlistArray& items) {
        for (auto& item : items)
            if (item["key"].stringValue() == "showInApps") {
                PlistDictionary row = item.dictionaryValue();
                row["default"] = PlistValue(true);
                item = PlistValue(row);
            }
    });
    edit(resources / "pages/Modules/TovinNotificationTitle.plist", [](PlistArray& items) {
        for (auto& item : items)
            if (item["key"].stringValue() == "showTitle") {
                PlistDictionary row = item.dictionaryValue();
                row.erase("default");
                item = PlistValue(row);
            }
    });
    auto run = lint(resources.path());
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
    test::TempDir resources;
    fs::copy(test::resourcesDir(), resources.path(), fs::copy_options::recursive);
    edit(resources / "pages/SpringBoard/HomeScreenRoot.plist", [](PlistArray& items) {
        for (auto& item : items)
            if (!item["detail"].isNil()) {
                PlistDictionary row = item.dictionaryValue();
                row["detail"] = PlistValue("NIMHomeScreenNowherePrefsListController");
                item = PlistValue(row);
                break;
            }
    });
    std::string command = "NIMBRA_RESOURCES='" + resources.path().string() + "' '" + test::prefsExe() + "' lint 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, n);
    int status = ::pclose(pipe);
    EXPECT_EQ(WEXITSTATUS(status), 1) << output;
    EXPECT_NE(output.find("opens \"NIMHomeScreenNowherePrefsListController\", which is no page controller"), std::string::npos) << output;
}
