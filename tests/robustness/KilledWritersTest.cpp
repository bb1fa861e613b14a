// Writers of one domain that are killed (kill -9 at random moments during a stream of writes) and
// writers that run at once, through the `nimbra-prefs` program: the domain file is always a
// complete property list, no temporary file outlives the next write, and no key is lost.
// NIMBRA_KILL_ROUNDS sets the number of kills (default 200; 10000 for a long run by hand).

#include "ProgramRun.h"
#include "TestSupport.h"

#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <random>
#include <thread>

namespace fs = std::filesystem;

namespace {

const std::string kDomain = "com.veltram.nimbraprefs.writers";

pid_t startScript(const fs::path& root, const fs::path& script)
{
    return test::startProgram({"--root", root.string(), "script", script.string()});
}

using test::waitForProgram;

std::optional<PlistDictionary> parsed(const fs::path& file)
{
    auto value = PropertyListSerialization::propertyListWithData(test::readFile(file));
    if (!value || value->kind() != PlistValue::Kind::Dictionary)
        return std::nullopt;
    return value->dictionaryValue();
}

std::vector<std::string> strayFiles(const fs::path& folder)
{
    std::vector<std::string> stray;
    for (auto& entry : fs::directory_iterator(folder)) {
        std::string name = entry.path().filename().string();
        if (name.rfind("." + kDomain, 0) == 0 || name.find(".corrupt-") != std::string::npos)
            stray.push_back(name);
    }
    return stray;
}

}  // namespace

TEST(KilledWriters, KillsDuringWritesLeaveACompleteFileAndNoLitter)
{
    int rounds = 200;
    if (const char* text = std::getenv("NIMBRA_KILL_ROUNDS"))
        rounds = std::max(1, std::atoi(text));
    test::TempDir root, io;
    fs::path file = test::under(root.path(), "/var/jb/var/mobile/Library/Preferences/" + kDomain + ".plist");
    std::string lines;
    for (int i = 0; i < 400; ++i)
        lines += "write " + kDomain + " key" + std::to_string(i % 16) + " \"" + std::string(64 + i % 200, 'x') + "\"\n";
    test::writeFile(io / "writes.nps", lines);
    test::writeFile(io / "first.nps", "write " + kDomain + " first true\n");
    ASSERT_EQ(waitForProgram(startScript(root.path(), io / "first.nps")), 0);

    std::mt19937 random(12345);
    std::uniform_int_distribution<int> delay(0, 40000);  // microseconds after the start
    int killedWhileRunning = 0;
    for (int round = 0; round < rounds; ++round) {
        pid_t pid = startScript(root.path(), io / "writes.nps");
        std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
        killedWhileRunning += ::kill(pid, SIGKILL) == 0 && waitForProgram(pid) == -1;
        auto values = parsed(file);
        ASSERT_TRUE(values) << "round " << round << ": the domain file is torn or missing";
        ASSERT_EQ((*values)["first"], PlistValue(true)) << "round " << round;
    }
    EXPECT_GT(killedWhileRunning, rounds / 2);
    ASSERT_EQ(waitForProgram(startScript(root.path(), io / "first.nps")), 0);
    EXPECT_EQ(strayFiles(file.parent_path()), std::vector<std::string>{});
}

TEST(KilledWriters, FourWritersLoseNoKey)
{
    constexpr int kWriters = 4, kWrites = 1000;
    test::TempDir root, io;
    fs::path file = test::under(root.path(), "/var/jb/var/mobile/Library/Preferences/" + kDomain + ".plist");
    // Seed the root first, so that the writers race on the domain only.
    test::writeFile(io / "none.nps", "");
    ASSERT_EQ(waitForProgram(startScript(root.path(), io / "none.nps")), 0);
    std::vector<pid_t> writers;
    for (int w = 0; w < kWriters; ++w) {
        std::string lines;
        for (int i = 0; i < kWrites; ++i)
            lines += "write " + kDomain + " w" + std::to_string(w) + "k" + std::to_string(i) + " " + std::to_string(i) + "\n";
        fs::path script = io / ("writer" + std::to_string(w) + ".nps");
        test::writeFile(script, lines);
        writers.push_back(startScript(root.path(), script));
    }
    for (pid_t pid : writers)
        EXPECT_EQ(waitForProgram(pid), 0);
    auto values = parsed(file);
    ASSERT_TRUE(values);
    std::size_t lost = 0;
    for (int w = 0; w < kWriters; ++w)
        for (int i = 0; i < kWrites; ++i)
            lost += (*values)["w" + std::to_string(w) + "k" + std::to_string(i)] != PlistValue(i);
    EXPECT_EQ(lost, 0u);
    EXPECT_EQ(values->size(), static_cast<std::size_t>(kWriters * kWrites));
}
