// Files a user or another program left behind, through the `nimbra-prefs` program: a seed that
// must not replace what is there, damaged and hostile property lists (NUL bytes, nesting without
// bound, shared references that expand without bound), FIFOs where files belong, temporary files
// of killed writers, and stores that cannot be written (a lock that cannot be taken).

#include "TestSupport.h"

#include "HostilePlists.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>

namespace fs = std::filesystem;

namespace {

const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/";
const std::string kDomain = "com.veltram.nimbraprefs.hostile";
const std::string kDomainPath = kPreferences + kDomain + ".plist";

/// The files in a folder whose names start with prefix.
std::vector<std::string> filesStartingWith(const fs::path& folder, const std::string& prefix)
{
    std::vector<std::string> found;
    std::error_code ec;
    for (auto& entry : fs::directory_iterator(folder, ec))
        if (entry.path().filename().string().rfind(prefix, 0) == 0)
            found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace

TEST(HostileFiles, TheSeedCreatesOnlyWhatIsMissing)
{
    test::TempDir root;
    fs::path modules = test::under(root.path(), "/var/jb/var/mobile/Library/ControlCenter/ModuleConfiguration.plist");
    fs::path apps = test::under(root.path(), "/var/mobile/Library/MobileInstallation/InstalledApplications.plist");
    fs::path info = test::under(root.path(), "/var/jb/System/Library/ControlCenter/Bundles/FlashlightModule.bundle/Info.plist");
    const std::string mine = "<plist><dict><key>mine</key><true/></dict></plist>";
    for (auto& path : {modules, apps, info})
        test::writeFile(path, mine);
    auto run = test::runScript({"--root", root.path().string()}, "");
    ASSERT_EQ(run.status, 0) << run.errors;
    for (auto& path : {modules, apps, info})
        EXPECT_EQ(test::readFile(path), mine) << path;
    // What was missing was created.
    EXPECT_TRUE(fs::exists(test::under(root.path(), "/var/jb/System/Library/ControlCenter/Bundles/CameraModule.bundle/Info.plist")));
}

TEST(HostileFiles, HostilePropertyListsAreMovedAsideWithoutCrashing)
{
    struct Case {
        const char* name;
        std::string bytes;
    };
    const std::vector<Case> cases{
        {"XML string with a NUL byte", hostile::xmlWithNul()},
        {"XML key with a character reference to NUL", "<plist><dict><key>a&#0;b</key><true/></dict></plist>"},
        {"binary string with a NUL byte", hostile::binaryWithNul()},
        {"binary plist nested 100,000 deep", hostile::binaryNested(100000)},
        {"XML plist nested 500,000 deep", hostile::xmlNested(500000)},
        {"binary plist of shared references, 200 per level, 5 levels", hostile::binarySharedReferences(200, 5)},
        {"binary plist that contains itself", hostile::binaryCycle()},
    };
    for (auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir root;
        fs::path file = test::under(root.path(), kDomainPath);
        test::writeFile(file, c.bytes);
        auto started = std::chrono::steady_clock::now();
        auto run = test::runScript({"--root", root.path().string()},
                                   "file " + kDomainPath + "\nwrite " + kDomain + " fresh true\nfile " + kDomainPath + "\n");
        auto took = std::chrono::steady_clock::now() - started;
        ASSERT_EQ(run.status, 0) << run.errors;
        ASSERT_EQ(run.lines.size(), 2u);
        EXPECT_TRUE(run.lines[0]["value"].is_null());
        EXPECT_EQ(run.lines[1]["value"], (nlohmann::json{{"fresh", true}}));
        // Kept intact beside the new file.
        auto aside = filesStartingWith(file.parent_path(), kDomain + ".plist.corrupt-");
        ASSERT_EQ(aside.size(), 1u);
        EXPECT_EQ(test::readFile(file.parent_path() / aside[0]), c.bytes);
        std::cout << c.name << ": " << std::chrono::duration_cast<std::chrono::milliseconds>(took).count() << " ms\n";
    }
}

TEST(HostileFiles, FifosAreNeverWaitedOn)
{
    test::TempDir root;
    fs::path file = test::under(root.path(), kDomainPath);
    fs::create_directories(file.parent_path());
    ASSERT_EQ(::mkfifo(file.c_str(), 0644), 0);
    auto run = test::runScript({"--root", root.path().string()},
                               "file " + kDomainPath + "\nwrite " + kDomain + " fresh true\nfile " + kDomainPath + "\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.lines[0]["value"], nullptr);
    EXPECT_EQ(run.lines[1]["value"], (nlohmann::json{{"fresh", true}}));
    // The FIFO was moved aside like any file that is not a property list.
    auto aside = filesStartingWith(file.parent_path(), kDomain + ".plist.corrupt-");
    ASSERT_EQ(aside.size(), 1u);
    EXPECT_TRUE(fs::is_fifo(file.parent_path() / aside[0]));

    // FIFOs as the stored picture a row previews and as the picture the user picks.
    fs::path stored = test::under(root.path(), "/var/jb/var/mobile/Library/Nimbra/ControlCenterBackgroundLight.png");
    fs::create_directories(stored.parent_path());
    ASSERT_EQ(::mkfifo(stored.c_str(), 0644), 0);
    fs::path picked = root / "picked.png";
    ASSERT_EQ(::mkfifo(picked.c_str(), 0644), 0);
    auto image = test::runScript({"--root", root.path().string()},
                                 "open NIMControlCenterRootPrefsListController\nset enabled true\nset backgroundStyle 2\n"
                                 "tap backgroundImageChild1\nimage \"" + picked.string() + "\"\n");
    EXPECT_EQ(image.status, 1);
    ASSERT_EQ(image.lines.size(), 1u) << image.errors;
    EXPECT_NE(image.lines[0]["error"].get<std::string>().find(picked.string()), std::string::npos) << image.lines[0];
    EXPECT_EQ(image.lines[0]["line"], 5);
}

TEST(HostileFiles, TemporaryFilesOfKilledWritersGoWithTheNextWrite)
{
    test::TempDir root;
    fs::path folder = test::under(root.path(), kPreferences);
    fs::create_directories(folder);
    // What a killed writer leaves: the domain's one temporary file, half written.
    test::writeFile(folder / ("." + kDomain + ".plist.nimtmp"), "half a plist");
    // Not the domain's temporary file, or another domain's: kept.
    for (std::string name : {"." + kDomain + ".plist.keep", "." + kDomain + ".plist.ABCDEFG", std::string(".com.other.plist.nimtmp")})
        test::writeFile(folder / name, "not ours");
    auto run = test::runScript({"--root", root.path().string()}, "write " + kDomain + " k 1\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(filesStartingWith(folder, "."),
              (std::vector<std::string>{".com.other.plist.nimtmp", "." + kDomain + ".plist.ABCDEFG", "." + kDomain + ".plist.keep"}));
}

TEST(HostileFiles, AWriteWithoutItsLockIsRefusedAndReported)
{
    test::TempDir root;
    fs::path file = test::under(root.path(), kDomainPath);
    auto first = test::runScript({"--root", root.path().string()}, "write " + kDomain + " kept 1\n");
    ASSERT_EQ(first.status, 0) << first.errors;
    std::string before = test::readFile(file);
    // The lock file cannot be opened: a folder stands at its path.
    fs::path lock = test::under(root.path(), "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/" + kDomain + ".lock");
    fs::remove(lock);
    fs::create_directories(lock);
    auto run = test::runScript({"--root", root.path().string()}, "write " + kDomain + " lost 2\n");
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.lines.size(), 1u);
    EXPECT_EQ(run.lines[0]["error"], "could not write " + kDomain);
    EXPECT_EQ(test::readFile(file), before);

    // A switch the user flips: reported on standard error and as an event; the row shows what is stored.
    fs::create_directories(test::under(root.path(), "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/com.veltram.nimbraprefs.lock"));
    auto flip = test::runScript({"--root", root.path().string()},
                                "open NIMRootListController\nevents\nset nimbraEnabled true\nevents\nrows\n");
    ASSERT_EQ(flip.status, 0) << flip.errors;
    EXPECT_NE(flip.errors.find("could not store \"nimbraEnabled\" in com.veltram.nimbraprefs: cannot take the lock"), std::string::npos)
        << flip.errors;
    bool reported = false;
    for (auto& event : flip.lines[1]["events"])
        reported = reported || (event["event"] == "error" && event["write"] == true);
    EXPECT_TRUE(reported);
    for (auto& row : flip.lines[2]["rows"]) {
        if (row["properties"].value("key", "") == "nimbraEnabled") {
            EXPECT_EQ(row["value"], false);
        }
    }
}

TEST(HostileFiles, TheAppPickerReportsAChoiceItCouldNotStore)
{
    test::TempDir root;
    auto first = test::runScript({"--root", root.path().string()},
                                 "open NIMBluetoothBatteryInfoVisibilityPrefsListController\ncall selectBlackListedApps\nevents\n");
    ASSERT_EQ(first.status, 0) << first.errors;
    std::string store;
    for (auto& event : first.lines[0]["events"])
        if (event.contains("identifier") && event.contains("key"))
            store = event["identifier"];
    ASSERT_FALSE(store.empty());
    fs::create_directories(test::under(root.path(), "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/" + store + ".lock"));
    auto run = test::runScript({"--root", root.path().string()},
                               "open NIMBluetoothBatteryInfoVisibilityPrefsListController\ncall selectBlackListedApps\n"
                               "pick com.apple.camera\nrows\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_NE(run.errors.find("could not store \"blackListedApps\" in " + store), std::string::npos) << run.errors;
    for (auto& row : run.lines[0]["rows"]) {
        if (row["properties"].value("bundleIdentifier", "") == "com.apple.camera") {
            EXPECT_EQ(row["value"], false);
        }
    }
}
