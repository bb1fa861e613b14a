// One value write with each file-system call of its path failing in turn, with ENOSPC and with EIO:
// afterwards the domain file is the complete old or the complete new property list, the other keys
// are intact, no temporary file is left, and the write reports failure exactly when the new value
// is not durable. Also a read that fails once (retried) and one that keeps failing (refused).

#include "TestSupport.h"

#include "platform/HBPreferences.h"
#include "platform/PropertyListSerialization.h"
#include "platform/SystemCalls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace fs = std::filesystem;

namespace {

const std::string kDomain = "com.veltram.nimbraprefs.faults";

struct Faults {
    ~Faults() { SystemCalls::injectFaults({}); }
    /// Fails the n-th call (counted from 1) with error; records every call.
    void failCall(std::size_t n, int error)
    {
        calls.clear();
        SystemCalls::injectFaults([this, n, error](SystemCalls::Call call) {
            calls.push_back(call);
            return calls.size() == n ? error : 0;
        });
    }
    void stop() { SystemCalls::injectFaults({}); }
    std::vector<SystemCalls::Call> calls;
};

/// The domain file, parsed; nothing when it is missing or not a complete property list.
std::optional<PlistDictionary> stored(const fs::path& file)
{
    std::string bytes = test::readFile(file);
    auto parsed = PropertyListSerialization::propertyListWithData(bytes);
    if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary)
        return std::nullopt;
    return parsed->dictionaryValue();
}

std::size_t leftovers(const fs::path& folder)
{
    std::size_t count = 0;
    for (auto& entry : fs::directory_iterator(folder)) {
        std::string name = entry.path().filename().string();
        count += name.rfind("." + kDomain, 0) == 0 || name.find(".corrupt-") != std::string::npos;
    }
    return count;
}

}  // namespace

TEST(WriteFaults, EachCallOfTheWritePathFailsInTurn)
{
    test::SessionOnFreshRoot session;
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    fs::path file = test::under(session.root.path(), HBPreferences::pathForIdentifier(kDomain));
    Faults faults;

    // A clean write, to know the calls: after the rename the new file is in place but not yet durable.
    // (The recorded write changes the value: a value already stored is not written again.)
    ASSERT_TRUE(preferences->setObject(PlistValue("older"), "k"));
    ASSERT_TRUE(preferences->setObject(PlistValue(1), "a"));
    ASSERT_TRUE(preferences->setObject(PlistValue("two"), "b"));
    faults.failCall(0, 0);
    ASSERT_TRUE(preferences->setObject(PlistValue("old"), "k"));
    std::vector<SystemCalls::Call> clean = faults.calls;
    faults.stop();
    auto rename = std::find(clean.begin(), clean.end(), SystemCalls::Call::Rename);
    ASSERT_NE(rename, clean.end());
    std::size_t renameCall = static_cast<std::size_t>(rename - clean.begin()) + 1;
    ASSERT_GE(clean.size(), 10u) << "lock, read, temporary file, write, fsync, close, rename, folder open and fsync";

    std::size_t failures = 0;
    for (int error : {ENOSPC, EIO}) {
        for (std::size_t n = 1; n <= clean.size(); ++n) {
            SCOPED_TRACE("call " + std::to_string(n) + " of " + std::to_string(clean.size()) + " fails with " + std::strerror(error));
            ASSERT_TRUE(preferences->setObject(PlistValue("old"), "k"));
            session.events();
            faults.failCall(n, error);
            bool reported = preferences->setObject(PlistValue("new"), "k");
            faults.stop();
            auto values = stored(file);
            ASSERT_TRUE(values) << "the file is torn or missing";
            EXPECT_EQ((*values)["a"], PlistValue(1));
            EXPECT_EQ((*values)["b"], PlistValue("two"));
            const PlistValue& k = (*values)["k"];
            ASSERT_TRUE(k == PlistValue("old") || k == PlistValue("new"));
            // The file's open or read failing once is retried and the write goes through. Any other
            // failure before the rename leaves the old file; one after it (the folder's open or
            // flush) leaves the new file, not durable.
            SystemCalls::Call failed = clean[n - 1];
            bool retried = n > 2 && n < renameCall && (failed == SystemCalls::Call::Open || failed == SystemCalls::Call::Read);
            EXPECT_EQ(k, PlistValue(retried || n > renameCall ? "new" : "old"));
            EXPECT_EQ(reported, retried);
            failures += !reported;
            if (!reported) {
                auto errors = session.events("error");
                ASSERT_EQ(errors.size(), 1u);
                EXPECT_NE(errors[0]["message"].get<std::string>().find("could not store \"k\" in " + kDomain), std::string::npos);
            }
            EXPECT_EQ(leftovers(file.parent_path()), 0u) << "a temporary or moved-aside file was left";
        }
    }
    EXPECT_EQ(failures, 2 * (clean.size() - 2));
}

TEST(WriteFaults, AReadThatKeepsFailingRefusesTheWrite)
{
    test::SessionOnFreshRoot session;
    auto preferences = HBPreferences::preferencesForIdentifier(kDomain);
    fs::path file = test::under(session.root.path(), HBPreferences::pathForIdentifier(kDomain));
    ASSERT_TRUE(preferences->setObject(PlistValue(1), "a"));
    std::string before = test::readFile(file);
    session.events();
    SystemCalls::injectFaults([](SystemCalls::Call call) { return call == SystemCalls::Call::Read ? EIO : 0; });
    bool reported = preferences->setObject(PlistValue(2), "b");
    SystemCalls::injectFaults({});
    EXPECT_FALSE(reported);
    EXPECT_EQ(test::readFile(file), before);
    EXPECT_EQ(leftovers(file.parent_path()), 0u) << "the readable file was moved aside";
    auto errors = session.events("error");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_NE(errors[0]["message"].get<std::string>().find("cannot read"), std::string::npos) << errors[0];

    // Through the session's own write: refused with an error.
    SystemCalls::injectFaults([](SystemCalls::Call call) { return call == SystemCalls::Call::Read ? EIO : 0; });
    EXPECT_THROW(session->write(kDomain, "b", PlistValue(2)), CommandError);
    SystemCalls::injectFaults({});
    EXPECT_EQ(test::readFile(file), before);
}
