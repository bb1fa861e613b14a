// Files the platform writes: new ones follow the umask, rewritten ones keep their mode, and the
// temporary file of a write that was killed does not outlive the next write of the same file
// (pictures as domains), found without looking through the folder.

#include "TestSupport.h"

#include "platform/AtomicFile.h"
#include "platform/HBPreferences.h"
#include "platform/NSFileManager.h"
#include "platform/SystemCalls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const std::string kPicture = "/var/jb/var/mobile/Library/Nimbra/LockBackground.png";
constexpr const char* kDomain = "com.veltram.nimbraprefs.modes";

using test::modeOf;
using test::Umask;

std::vector<std::string> namesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// Runs write in a child process that dies (as if killed) once its temporary file is written,
/// before it is flushed and renamed.
void killedDuring(const std::function<void()>& write)
{
    pid_t pid = ::fork();
    if (pid == 0) {
        SystemCalls::injectFaults([](SystemCalls::Call call) {
            if (call == SystemCalls::Call::Fsync)
                ::_exit(9);
            return 0;
        });
        write();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 9) << "the writer was not stopped mid-write";
}

}  // namespace

TEST(FileModes, APictureWriteKilledMidwayLeavesNothingAfterTheNextWrite)
{
    test::TempDir root;
    Process process{{.root = root.path()}};
    fs::path picture = test::under(root.path(), kPicture);
    killedDuring([] { NSFileManager::defaultManager().writeAtomically(kPicture, "first"); });
    EXPECT_EQ(namesIn(picture.parent_path()).size(), 1u) << "the killed writer left its temporary file";
    EXPECT_FALSE(fs::exists(picture));
    ASSERT_TRUE(NSFileManager::defaultManager().writeAtomically(kPicture, "second"));
    EXPECT_EQ(namesIn(picture.parent_path()), std::vector<std::string>{"LockBackground.png"});
    EXPECT_EQ(test::readFile(picture), "second");
}

TEST(FileModes, ADomainWriteKilledMidwayLeavesNothingAfterTheNextWrite)
{
    test::TempDir root;
    Process process{{.root = root.path()}};
    fs::path file = test::under(root.path(), HBPreferences::pathForIdentifier(kDomain));
    killedDuring([] { HBPreferences::preferencesForIdentifier(kDomain)->setObject(PlistValue(1), "a"); });
    EXPECT_EQ(namesIn(file.parent_path()).size(), 1u);
    ASSERT_TRUE(HBPreferences::preferencesForIdentifier(kDomain)->setObject(PlistValue(2), "a"));
    EXPECT_EQ(namesIn(file.parent_path()), std::vector<std::string>{std::string(kDomain) + ".plist"});
}

TEST(FileModes, NewFilesFollowTheUmaskAndRewrittenOnesKeepTheirMode)
{
    test::TempDir root;
    Process process{{.root = root.path()}};
    Umask mask(027);
    ASSERT_TRUE(NSFileManager::defaultManager().writeAtomically(kPicture, "png"));
    EXPECT_EQ(modeOf(test::under(root.path(), kPicture)), 0640u);
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    ASSERT_TRUE(preferences->setObject(PlistValue(1), "a"));
    fs::path file = test::under(root.path(), HBPreferences::pathForIdentifier(kDomain));
    EXPECT_EQ(modeOf(file), 0640u);
    ::chmod(file.c_str(), 0600);
    ASSERT_TRUE(preferences->setObject(PlistValue(2), "a"));
    EXPECT_EQ(modeOf(file), 0600u) << "a rewrite keeps the file's mode";
    ::chmod(file.c_str(), 0664);
    ASSERT_TRUE(preferences->setObject(PlistValue(3), "a"));
    EXPECT_EQ(modeOf(file), 0664u) << "a rewrite keeps the file's mode, whatever the umask";
    {
        Umask open(0);
        ASSERT_TRUE(AtomicFile::write(root / "plain", "x"));
        EXPECT_EQ(modeOf(root / "plain"), 0666u);
    }
}
