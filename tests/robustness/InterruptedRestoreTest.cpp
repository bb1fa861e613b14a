// A restore is all or nothing: killed at random moments (kill -9 of `nimbra-prefs import`), or
// with any file-system call failing (ENOSPC, EIO), the set of domains afterwards is entirely the
// old one or entirely the new one, once the next start has finished or undone what was
// interrupted; and nothing is left behind. NIMBRA_RESTORE_KILLS sets the number of kills
// (default 100).

#include "TestSupport.h"
#include "ProgramRun.h"

#include "host/SettingsBackup.h"
#include "platform/PropertyListSerialization.h"
#include "platform/SystemCalls.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <set>
#include <thread>

namespace fs = std::filesystem;

namespace {

const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/";
/// Domains of the kill test; the fault test, which restores once per system call, uses fewer.
constexpr int kDomains = 40;
constexpr int kFaultDomains = 6;

std::string domainName(int i)
{
    return "com.veltram.nimbraprefs.restore" + std::to_string(i);
}

PlistDictionary contents(const std::string& set, int i)
{
    PlistDictionary values{{"set", PlistValue(set)}, {"index", PlistValue(i)}};
    for (int k = 0; k < 40; ++k)
        values["filler" + std::to_string(k)] = PlistValue(set + std::string(20, 'x'));
    return values;
}

std::string bytesOf(const PlistValue& value)
{
    return PropertyListSerialization::dataWithPropertyList(value, PropertyListSerialization::Format::Binary);
}

/// Writes the old set straight to disk.
void writeOldSet(const fs::path& root, int count = kDomains)
{
    for (int i = 0; i < count; ++i)
        test::writeFile(test::under(root, kPreferences + domainName(i) + ".plist"), bytesOf(PlistValue(contents("old", i))));
}

/// A backup of the new set.
std::string newSetBackup(int count = kDomains)
{
    PlistDictionary domains;
    for (int i = 0; i < count; ++i)
        domains[domainName(i)] = PlistValue(contents("new", i));
    return bytesOf(PlistValue(PlistDictionary{{"format", PlistValue("com.veltram.nimbraprefs.backup")},
                                              {"version", PlistValue(1)},
                                              {"domains", PlistValue(std::move(domains))}}));
}

/// "old" or "new" when every domain holds that set, whole; otherwise what is wrong.
std::string whichSet(const fs::path& root, int count = kDomains)
{
    std::set<std::string> seen;
    for (int i = 0; i < count; ++i) {
        auto parsed = PropertyListSerialization::propertyListWithData(test::readFile(test::under(root, kPreferences + domainName(i) + ".plist")));
        if (!parsed)
            return domainName(i) + " is torn or missing";
        std::string set = (*parsed)["set"].stringValue();
        if (*parsed != PlistValue(contents(set, i)))
            return domainName(i) + " is not a whole set's";
        seen.insert(set);
    }
    if (seen.size() != 1)
        return "a mixture of the old and the new set";
    return *seen.begin();
}

/// Files a restore may leave behind: staged files and the journal.
std::vector<std::string> leftovers(const fs::path& root)
{
    std::vector<std::string> found;
    for (auto& entry : fs::directory_iterator(test::under(root, kPreferences)))
        if (entry.path().filename().string().ends_with(".restore"))
            found.push_back(entry.path().filename().string());
    if (fs::exists(test::under(root, "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.restore.plist")))
        found.push_back("the journal");
    return found;
}

pid_t startImport(const fs::path& root, const fs::path& backup)
{
    return test::startProgram({"--root", root.string(), "import", backup.string()});
}

using test::waitForProgram;

}  // namespace

TEST(InterruptedRestore, KillsAtRandomMomentsLeaveTheOldSetOrTheNewSet)
{
    int rounds = 100;
    if (const char* text = std::getenv("NIMBRA_RESTORE_KILLS"))
        rounds = std::max(1, std::atoi(text));
    test::TempDir root, io;
    fs::path backup = io / "backup.plist";
    test::writeFile(backup, newSetBackup());
    writeOldSet(root.path());
    // How long a whole restore takes here: the kills fall anywhere within it.
    auto started = std::chrono::steady_clock::now();
    ASSERT_EQ(waitForProgram(startImport(root.path(), backup)), 0);
    auto whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started).count();
    ASSERT_EQ(whichSet(root.path()), "new");

    std::mt19937 random(2026);
    std::uniform_int_distribution<long> delay(0, whole + whole / 4);
    int killed = 0, old = 0, fresh = 0;
    for (int round = 0; round < rounds; ++round) {
        writeOldSet(root.path());
        pid_t pid = startImport(root.path(), backup);
        std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
        killed += ::kill(pid, SIGKILL) == 0 && waitForProgram(pid) == -1;
        // The next start settles what the killed restore left.
        auto next = test::runProgram({"--root", root.path().string(), "script"}, "");
        ASSERT_EQ(next.status, 0) << next.errors;
        std::string set = whichSet(root.path());
        ASSERT_TRUE(set == "old" || set == "new") << "round " << round << ": " << set;
        (set == "old" ? old : fresh)++;
        ASSERT_EQ(leftovers(root.path()), std::vector<std::string>{}) << "round " << round;
    }
    RecordProperty("killed", killed);
    RecordProperty("old", old);
    RecordProperty("new", fresh);
    EXPECT_GT(killed, 0);
}

TEST(InterruptedRestore, AnyFailingCallLeavesTheOldSetOrTheNewSet)
{
    test::TempDir root;
    Process process{{.root = root.path()}};
    SettingsBackup backup = SettingsBackup::fromData(newSetBackup(kFaultDomains));
    int disk = 0, other = 0;
    for (int error : {ENOSPC, EIO}) {
        for (std::size_t failing = 1;; ++failing) {
            writeOldSet(root.path(), kFaultDomains);
            std::size_t calls = 0;
            SystemCalls::injectFaults([&](SystemCalls::Call) { return ++calls == failing ? error : 0; });
            std::string problem;
            try {
                backup.restore();
            } catch (const BackupError& failure) {
                problem = failure.what();
            }
            SystemCalls::injectFaults({});
            if (calls < failing) {
                EXPECT_EQ(problem, "");
                EXPECT_EQ(whichSet(root.path(), kFaultDomains), "new");
                break;
            }
            if (whichSet(root.path(), kFaultDomains) == "old" && !problem.empty()) {
                EXPECT_NE(problem.find("nothing was restored"), std::string::npos) << problem;
            }
            SettingsBackup::finishInterruptedRestore();
            std::string set = whichSet(root.path(), kFaultDomains);
            ASSERT_TRUE(set == "old" || set == "new") << "call " << failing << " failing with " << std::strerror(error) << ": " << set;
            if (error == ENOSPC && set == "old") {
                EXPECT_FALSE(problem.empty()) << "a restore that left the old set said so";
            }
            ASSERT_EQ(leftovers(root.path()), std::vector<std::string>{}) << "call " << failing;
            (error == ENOSPC ? disk : other)++;
        }
    }
    EXPECT_GT(disk, kFaultDomains * 4) << "every staged file's write was made to fail";
}

TEST(InterruptedRestore, ADamagedDomainFileIsKeptWhetherTheRestoreStandsOrNot)
{
    // Domain 0 is damaged: a restore that stands has kept it under its ".corrupt-" name (as a value
    // write would have moved it aside); one that was undone has left it in place, with no second name.
    test::TempDir root;
    Process process{{.root = root.path()}};
    SettingsBackup backup = SettingsBackup::fromData(newSetBackup(kFaultDomains));
    const std::string damaged = "bplist00 but not really";
    fs::path first = test::under(root.path(), kPreferences + domainName(0) + ".plist");
    auto kept = [&] {
        std::vector<std::string> names;
        for (auto& entry : fs::directory_iterator(first.parent_path()))
            if (entry.path().filename().string().starts_with(first.filename().string() + ".corrupt-"))
                names.push_back(test::readFile(entry.path()));
        return names;
    };
    int stood = 0, undone = 0;
    fs::create_directories(first.parent_path());
    for (std::size_t failing = 1;; ++failing) {
        for (auto& entry : fs::directory_iterator(first.parent_path()))
            fs::remove(entry.path());
        writeOldSet(root.path(), kFaultDomains);
        test::writeFile(first, damaged);
        std::size_t calls = 0;
        SystemCalls::injectFaults([&](SystemCalls::Call) { return ++calls == failing ? EIO : 0; });
        try {
            backup.restore();
        } catch (const BackupError&) {
        }
        SystemCalls::injectFaults({});
        SettingsBackup::finishInterruptedRestore();
        ASSERT_EQ(leftovers(root.path()), std::vector<std::string>{}) << "call " << failing;
        if (test::readFile(first) == damaged) {
            EXPECT_EQ(kept(), std::vector<std::string>{}) << "call " << failing << ": an undone restore leaves no second name";
            ++undone;
        } else {
            ASSERT_EQ(whichSet(root.path(), kFaultDomains), "new") << "call " << failing;
            EXPECT_EQ(kept(), std::vector<std::string>{damaged}) << "call " << failing;
            ++stood;
        }
        if (calls < failing)
            break;
    }
    EXPECT_GT(undone, 0);
    EXPECT_GT(stood, 1);
}
