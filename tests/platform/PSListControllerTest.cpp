#include "TestSupport.h"

#include "platform/Darwin.h"
#include "platform/DarwinNotifyCenter.h"
#include "platform/HBPreferences.h"
#include "platform/PSListController.h"
#include "platform/ProcessScope.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

namespace {

PlistDictionary row(std::string id, std::string cell = "PSSwitchCell")
{
    return {{"cell", PlistValue(cell)}, {"id", PlistValue(id)}, {"label", PlistValue("Row " + id)}};
}

struct ModelTest : ::testing::Test {
    test::TempDir root, resources;
    std::unique_ptr<Process> process;
    std::shared_ptr<PSListController> page;

    ModelTest()
    {
        process = std::make_unique<Process>(Process::Options{.root = root.path(), .resources = resources.path()});
        page = NSObject::make<PSListController>();
    }
    void define(const std::string& name, const PlistValue& definition)
    {
        test::writePlist(resources / (name + ".plist"), definition, PropertyListSerialization::Format::XML);
    }
    void show(std::vector<std::string> ids)
    {
        SpecifierArray rows;
        for (auto& id : ids) {
            rows.push_back(std::make_shared<PSSpecifier>(id));
            rows.back()->setProperty(PlistValue(id), "id");
        }
        page->setSpecifiers(rows);
    }
    std::vector<std::string> ids()
    {
        std::vector<std::string> shown;
        for (auto& s : page->specifiers())
            shown.push_back(s->identifier());
        return shown;
    }
    std::vector<std::string> errors()
    {
        std::vector<std::string> messages;
        for (auto& event : process->events().drain())
            if (auto* error = std::get_if<Events::Error>(&event))
                messages.push_back(error->message);
        return messages;
    }
};

}  // namespace

TEST_F(ModelTest, InsertionAndRemovalFollowIdentityAndAnchors)
{
    show({"a", "b"});
    auto shownA = page->specifierForID("a");
    auto copyOfA = std::make_shared<PSSpecifier>(*shownA);
    EXPECT_TRUE(page->containsSpecifier(shownA));
    EXPECT_FALSE(page->containsSpecifier(copyOfA)) << "a copy with the same id is another row";

    auto x = std::make_shared<PSSpecifier>("x");
    x->setProperty(PlistValue("x"), "id");
    page->insertContiguousSpecifiers({x}, "nowhere", true);
    EXPECT_EQ(ids(), (std::vector<std::string>{"a", "b"})) << "an unknown anchor inserts nothing";
    page->insertContiguousSpecifiers({x}, "a", true);
    page->insertContiguousSpecifiers({x}, "a", true);
    EXPECT_EQ(ids(), (std::vector<std::string>{"a", "x", "x", "b"})) << "the model does not de-duplicate";

    process->events().drain();
    page->removeContiguousSpecifiers({copyOfA}, true);
    EXPECT_TRUE(process->events().drain().empty()) << "removing a row that is not shown changes nothing";
    page->removeContiguousSpecifiers({shownA, x}, false);
    EXPECT_EQ(ids(), (std::vector<std::string>{"x", "b"}));
    auto events = process->events().drain();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(EventLog::json(events[0]).dump(), R"({"event":"remove","ids":["a","x"],"animated":false})");
}

TEST_F(ModelTest, DefinitionsLoadInOrderAndResolveClassesByName)
{
    auto colorRow = row("color", "PSLinkCell");
    colorRow["cellClass"] = PlistValue("SparkColourPickerCell");
    auto linkRow = row("link", "PSLinkCell");
    linkRow["detail"] = PlistValue("NoSuchController");
    define("pages/Test/Page", PlistValue(PlistDictionary{
                                  {"title", PlistValue("Test")},
                                  {"items", PlistValue(PlistArray{PlistValue(row("first")), PlistValue(colorRow), PlistValue(linkRow)})},
                              }));
    auto loaded = page->loadSpecifiersFromPlistName("pages/Test/Page", page);
    ASSERT_EQ(loaded.size(), 3u);
    EXPECT_EQ(loaded[0]->identifier(), "first");
    EXPECT_EQ(loaded[0]->cellType(), PSCellType::Switch);
    EXPECT_EQ(loaded[0]->target(), page);
    EXPECT_EQ(loaded[1]->cellClass(), nullptr) << "the library defining the class is not loaded";
    EXPECT_EQ(loaded[2]->detailControllerClass(), nullptr);
    EXPECT_EQ(loaded[2]->detailClassName(), "NoSuchController");
    EXPECT_EQ(page->navigationItem().title, "Test");

    test::writeFile(test::under(root.path(), "/var/jb/usr/lib/libsparkcolourpicker.dylib"), "library");
    ASSERT_TRUE(Darwin::dlopen("/var/jb/usr/lib/libsparkcolourpicker.dylib", Darwin::kRTLDLazy));
    loaded = page->loadSpecifiersFromPlistName("pages/Test/Page", page);
    ASSERT_NE(loaded[1]->cellClass(), nullptr);
    EXPECT_EQ(loaded[1]->cellClass()->name, "SparkColourPickerCell");
    EXPECT_TRUE(errors().empty());
}

TEST_F(ModelTest, ADefinitionIsParsedOnceWhileItsFileStaysTheSameAndEveryLoadMakesFreshRows)
{
    auto items = [](std::vector<std::string> ids) {
        PlistArray rows;
        for (auto& id : ids)
            rows.push_back(PlistValue(row(id)));
        return PlistValue(PlistDictionary{{"items", PlistValue(rows)}});
    };
    define("pages/Test/Cached", items({"a1", "b1"}));
    auto first = page->loadSpecifiersFromPlistName("pages/Test/Cached", page);
    auto second = page->loadSpecifiersFromPlistName("pages/Test/Cached", page);
    ASSERT_EQ(second.size(), 2u);
    EXPECT_NE(first[0], second[0]) << "rows are distinct objects";
    first[0]->setProperty(PlistValue("changed"), "label");
    EXPECT_EQ(second[0]->propertyForKey("label").stringValue(), "Row a1") << "a change stays with its row";

    // Same path, inode, size and modification time: the kept parse is used, the bytes are not read.
    auto file = resources / "pages/Test/Cached.plist";
    struct stat before {};
    ASSERT_EQ(::stat(file.c_str(), &before), 0);
    std::string text = test::readFile(file);
    for (std::size_t at = text.find("a1"); at != std::string::npos; at = text.find("a1", at))
        text.replace(at, 2, "z9");
    test::writeFile(file, text);
    const timespec times[2] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    EXPECT_EQ(page->loadSpecifiersFromPlistName("pages/Test/Cached", page)[0]->identifier(), "a1");

    define("pages/Test/Cached", items({"a1", "b1", "c1"}));
    EXPECT_EQ(page->loadSpecifiersFromPlistName("pages/Test/Cached", page).size(), 3u) << "a changed file is read again";
    EXPECT_TRUE(errors().empty());
}

TEST_F(ModelTest, EveryProcessSharesOneParseAndResolvesItsClassesForItself)
{
    auto colorRow = row("color", "PSLinkCell");
    colorRow["cellClass"] = PlistValue("SparkColourPickerCell");
    define("pages/Test/Shared", PlistValue(PlistDictionary{{"items", PlistValue(PlistArray{PlistValue(row("plain")), PlistValue(colorRow)})}}));
    auto mine = page->loadSpecifiersFromPlistName("pages/Test/Shared", page);
    ASSERT_EQ(mine.size(), 2u);

    // Another session's process, which has opened the colour-picker library this one has not.
    test::TempDir otherRoot;
    test::writeFile(test::under(otherRoot.path(), "/var/jb/usr/lib/libsparkcolourpicker.dylib"), "library");
    SpecifierArray theirs;
    {
        ProcessScope none(nullptr);
        Process other(Process::Options{.root = otherRoot.path(), .resources = resources.path()});
        ASSERT_TRUE(Darwin::dlopen("/var/jb/usr/lib/libsparkcolourpicker.dylib", Darwin::kRTLDLazy));
        auto theirPage = NSObject::make<PSListController>();
        theirs = theirPage->loadSpecifiersFromPlistName("pages/Test/Shared", theirPage);
        ASSERT_EQ(theirs.size(), 2u);
        ASSERT_NE(theirs[1]->cellClass(), nullptr);
        EXPECT_EQ(theirs[1]->cellClass()->name, "SparkColourPickerCell");
    }
    EXPECT_EQ(&mine[0]->properties(), &theirs[0]->properties()) << "one parsed row serves both processes";
    auto again = page->loadSpecifiersFromPlistName("pages/Test/Shared", page);
    EXPECT_EQ(again[1]->cellClass(), nullptr) << "this process has not opened the library";
    EXPECT_EQ(&again[1]->properties(), &mine[1]->properties()) << "each resolution is made once";
    EXPECT_NE(&again[1]->properties(), &theirs[1]->properties());

    // Sessions on threads of their own open pages at once.
    std::vector<std::thread> threads;
    std::atomic<int> whole = 0;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            ProcessScope none(nullptr);
            Process process(Process::Options{.root = root.path(), .resources = resources.path()});
            auto threadPage = NSObject::make<PSListController>();
            for (int i = 0; i < 50; ++i)
                if (threadPage->loadSpecifiersFromPlistName("pages/Test/Shared", threadPage).size() == 2)
                    ++whole;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(whole, 200);
    EXPECT_TRUE(errors().empty());
}

TEST_F(ModelTest, MissingOrMalformedDefinitionsOpenEmptyAndSaySo)
{
    EXPECT_TRUE(page->loadSpecifiersFromPlistName("pages/Test/Missing", page).empty());
    test::writeFile(resources / "pages/Test/Broken.plist", "<plist><dict><key>items</key>");
    EXPECT_TRUE(page->loadSpecifiersFromPlistName("pages/Test/Broken", page).empty());
    define("pages/Test/NoItems", PlistValue(PlistDictionary{{"title", PlistValue("x")}}));
    EXPECT_TRUE(page->loadSpecifiersFromPlistName("pages/Test/NoItems", page).empty());
    define("pages/Test/BadItem", PlistValue(PlistDictionary{{"items", PlistValue(PlistArray{PlistValue(row("a")), PlistValue(3)})}}));
    EXPECT_TRUE(page->loadSpecifiersFromPlistName("pages/Test/BadItem", page).empty());
    EXPECT_TRUE(page->loadSpecifiersFromPlistName("../../etc/passwd", page).empty());

    auto messages = errors();
    ASSERT_EQ(messages.size(), 5u);
    EXPECT_NE(messages[0].find("pages/Test/Missing.plist"), std::string::npos);
    EXPECT_NE(messages[1].find("pages/Test/Broken.plist"), std::string::npos);
    EXPECT_NE(messages[2].find("\"items\""), std::string::npos);
    EXPECT_NE(messages[3].find("item 1"), std::string::npos);
}

TEST_F(ModelTest, ValuesAreStoredInTheRowsDomainAndPostedOnlyOnceOnDisk)
{
    auto row = std::make_shared<PSSpecifier>("Enabled", PSCellType::Switch);
    row->setProperty(PlistValue("enabled"), "key");
    row->setProperty(PlistValue("com.veltram.nimbraprefs.test"), "defaults");
    row->setProperty(PlistValue(true), "default");
    row->setProperty(PlistValue("com.veltram.nimbraprefs.test/Changed"), "PostNotification");
    EXPECT_EQ(page->readPreferenceValue(row), PlistValue(true)) << "the default while nothing is stored";

    std::vector<std::string> posted;
    process->notifyCenter().addObserver("com.veltram.nimbraprefs.test/Changed", [&](const std::string& name) {
        posted.push_back(name);
        // The observer, like the tweak in another process, finds the value already on disk.
        EXPECT_FALSE(HBPreferences::preferencesForIdentifier("com.veltram.nimbraprefs.test")->boolForKey("enabled", true));
    });
    page->setPreferenceValue(PlistValue(false), row);
    EXPECT_EQ(page->readPreferenceValue(row), PlistValue(false));
    EXPECT_EQ(posted.size(), 1u);

    row->setProperty(PlistValue("bad/domain"), "defaults");
    page->setPreferenceValue(PlistValue(true), row);
    EXPECT_EQ(posted.size(), 1u) << "nothing is posted when nothing could be stored";
}
