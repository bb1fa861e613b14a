#include "TestSupport.h"

#include "platform/HBPreferences.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kDomain = "com.veltram.nimbraprefs.test";

struct PreferencesTest : ::testing::Test {
    test::TempDir root;
    Process process{{.root = root.path()}};
    fs::path file = test::under(root.path(), HBPreferences::pathForIdentifier(kDomain));

    PlistDictionary onDisk()
    {
        auto parsed = PropertyListSerialization::propertyListWithData(test::readFile(file));
        return parsed ? parsed->dictionaryValue() : PlistDictionary{};
    }
    void writeOnDisk(const PlistDictionary& values)
    {
        test::writePlist(file, PlistValue(values), PropertyListSerialization::Format::XML);
    }
    std::vector<fs::path> asideFiles()
    {
        std::vector<fs::path> found;
        for (auto& entry : fs::directory_iterator(file.parent_path()))
            if (entry.path().filename().string().find(".corrupt-") != std::string::npos)
                found.push_back(entry.path());
        return found;
    }
};

}  // namespace

TEST_F(PreferencesTest, AbsentDomainAndKeysReadAsDefaults)
{
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    EXPECT_EQ(preferences, HBPreferences::preferencesForIdentifier(kDomain));
    EXPECT_FALSE(preferences->boolForKey("enabled"));
    EXPECT_TRUE(preferences->boolForKey("enabled", true));
    EXPECT_EQ(preferences->integerForKey("style"), 0);
    EXPECT_EQ(preferences->integerForKey("style", 1), 1);
    EXPECT_TRUE(preferences->objectForKey("style").isNil());
}

TEST_F(PreferencesTest, WritesARealBinaryPropertyListAndKeepsForeignKeys)
{
    writeOnDisk({{"writtenByTheTweak", PlistValue("keep me")}});
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    ASSERT_TRUE(preferences->setObject(PlistValue(true), "enabled"));
    ASSERT_TRUE(preferences->setObject(PlistValue(2), "style"));
    EXPECT_EQ(test::readFile(file).rfind("bplist00", 0), 0u);
    PlistDictionary expected{{"enabled", PlistValue(true)}, {"style", PlistValue(2)}, {"writtenByTheTweak", PlistValue("keep me")}};
    EXPECT_EQ(onDisk(), expected);
    ASSERT_TRUE(preferences->removeObjectForKey("style"));
    EXPECT_FALSE(onDisk().contains("style"));
}

TEST_F(PreferencesTest, SeesWhatAnotherProcessWrote)
{
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    ASSERT_TRUE(preferences->setObject(PlistValue(1), "style"));
    EXPECT_EQ(preferences->integerForKey("style"), 1);
    writeOnDisk({{"style", PlistValue(3)}});
    EXPECT_EQ(preferences->integerForKey("style"), 3);
    fs::remove(file);
    EXPECT_EQ(preferences->integerForKey("style"), 0);
}

TEST_F(PreferencesTest, ConcurrentWritersOfDifferentKeysLoseNothing)
{
    constexpr int kWrites = 40;
    std::vector<pid_t> children;
    for (int writer = 0; writer < 2; ++writer) {
        pid_t pid = ::fork();
        if (pid == 0) {
            Process child({.root = root.path()});
            auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
            bool ok = true;
            for (int i = 0; i < kWrites; ++i)
                ok = preferences->setObject(PlistValue(i), "writer" + std::to_string(writer) + "_" + std::to_string(i)) && ok;
            ::_exit(ok ? 0 : 1);
        }
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        ::waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_EQ(onDisk().size(), 2u * kWrites);
}

TEST_F(PreferencesTest, ACorruptFileReadsEmptyAndIsKeptAsideBeforeTheFirstWrite)
{
    test::writeFile(file, "this is not a property list");
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    EXPECT_TRUE(preferences->dictionaryRepresentation().empty());
    EXPECT_TRUE(asideFiles().empty()) << "reading never moves anything";
    ASSERT_TRUE(preferences->setObject(PlistValue(true), "enabled"));
    auto aside = asideFiles();
    ASSERT_EQ(aside.size(), 1u);
    EXPECT_EQ(test::readFile(aside[0]), "this is not a property list");
    EXPECT_EQ(onDisk(), (PlistDictionary{{"enabled", PlistValue(true)}}));
}

TEST_F(PreferencesTest, ANonDictionaryOrOversizedFileCountsAsCorrupt)
{
    test::writePlist(file, PlistValue(PlistArray{PlistValue(1)}), PropertyListSerialization::Format::XML);
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    EXPECT_TRUE(preferences->dictionaryRepresentation().empty());
    ASSERT_TRUE(preferences->removeAllObjects());
    EXPECT_EQ(asideFiles().size(), 1u);
    EXPECT_TRUE(onDisk().empty());

    test::writeFile(file, std::string(HBPreferences::kMaximumFileSize + 1, ' '));
    EXPECT_TRUE(preferences->dictionaryRepresentation().empty());
    ASSERT_TRUE(preferences->setObject(PlistValue(1), "style"));
    EXPECT_EQ(asideFiles().size(), 2u);
}

TEST_F(PreferencesTest, RemoveAllObjectsLeavesAnEmptyDomain)
{
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    ASSERT_TRUE(preferences->setObject(PlistValue(true), "enabled"));
    ASSERT_TRUE(preferences->removeAllObjects());
    EXPECT_TRUE(fs::exists(file));
    EXPECT_TRUE(onDisk().empty());
    EXPECT_FALSE(preferences->boolForKey("enabled"));
}

TEST_F(PreferencesTest, IdentifiersThatAreNoFileNameNameNoFile)
{
    for (const char* bad : {"", ".", "..", "../escape", "a/b"}) {
        auto preferences = HBPreferences::preferencesForIdentifier(bad);
        EXPECT_FALSE(preferences->setObject(PlistValue(true), "enabled")) << bad;
        EXPECT_FALSE(preferences->boolForKey("enabled")) << bad;
    }
    EXPECT_FALSE(fs::exists(root / "var/mobile/Library/escape.plist"));
}
