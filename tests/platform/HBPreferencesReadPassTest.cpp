// Reading a domain once per rebuild, and not rewriting what is already stored.

#include "TestSupport.h"

#include "platform/HBPreferences.h"
#include "platform/HBPreferencesReadPass.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr const char* kDomain = "com.veltram.nimbraprefs.test";

struct ReadPassTest : ::testing::Test {
    test::TempDir root;
    Process process{{.root = root.path()}};
    std::filesystem::path file = test::under(root.path(), HBPreferences::pathForIdentifier(kDomain));
    std::shared_ptr<HBPreferences> preferences = HBPreferences::preferencesForIdentifier(kDomain);

    /// Another process replaces the file.
    void writeElsewhere(const PlistDictionary& values)
    {
        std::filesystem::path other = file.string() + ".other";
        test::writePlist(other, PlistValue(values));
        std::filesystem::rename(other, file);
    }
    /// The file's inode and modification time, which any replacement changes.
    std::pair<ino_t, long long> identity()
    {
        struct stat st {};
        if (::stat(file.c_str(), &st) != 0)
            return {0, 0};
        return {st.st_ino, st.st_mtim.tv_sec * 1000000000LL + st.st_mtim.tv_nsec};
    }
};

}  // namespace

TEST_F(ReadPassTest, APassReadsTheFileOnceAndSeesItsOwnWrites)
{
    writeElsewhere({{"a", PlistValue(1)}});
    {
        HBPreferencesReadPass pass;
        EXPECT_EQ(preferences->integerForKey("a"), 1);
        writeElsewhere({{"a", PlistValue(2)}});
        EXPECT_EQ(preferences->integerForKey("a"), 1) << "the pass keeps what it read";
        {
            HBPreferencesReadPass inner;
        }
        EXPECT_EQ(preferences->integerForKey("a"), 1) << "an inner pass does not end the outer one";
        ASSERT_TRUE(preferences->setObject(PlistValue(3), "b"));
        EXPECT_EQ(preferences->integerForKey("a"), 2) << "its own write makes it read again";
        EXPECT_EQ(preferences->integerForKey("b"), 3);
    }
    writeElsewhere({{"a", PlistValue(4)}});
    EXPECT_EQ(preferences->integerForKey("a"), 4) << "outside a pass every read sees the file";

    std::filesystem::remove(file);
    HBPreferencesReadPass pass;
    EXPECT_TRUE(preferences->objectForKey("a").isNil());
    ASSERT_TRUE(preferences->setObject(PlistValue(5), "a"));
    EXPECT_EQ(preferences->integerForKey("a"), 5) << "a file made in the pass is read";
}

TEST_F(ReadPassTest, TheSameValueOfTheSameKindIsNotWrittenAgain)
{
    ASSERT_TRUE(preferences->setObject(PlistValue(true), "on"));
    auto first = identity();
    ASSERT_TRUE(preferences->setObject(PlistValue(true), "on"));
    EXPECT_EQ(identity(), first) << "nothing was replaced";
    ASSERT_TRUE(preferences->setObject(PlistValue(1), "on"));
    auto stored = PropertyListSerialization::propertyListWithData(test::readFile(file));
    ASSERT_TRUE(stored);
    EXPECT_EQ((*stored)["on"].kind(), PlistValue::Kind::Integer) << "an integer 1 is not the boolean YES on disk";
}
