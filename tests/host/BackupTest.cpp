// Backup and restore through the `nimbra-prefs` program: a round trip over a reset of everything,
// the dry run, and backups that must be refused with nothing written.

#include "TestSupport.h"
#include "ProgramRun.h"

#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <map>

namespace fs = std::filesystem;

namespace {

const std::string kPreferences = "/var/jb/var/mobile/Library/Preferences/";
const std::string kPictures = "/var/jb/var/mobile/Library/Nimbra/";

std::string plistBytes(const PlistValue& value)
{
    return PropertyListSerialization::dataWithPropertyList(value, PropertyListSerialization::Format::Binary);
}

/// Every file below the Preferences and picture folders: parsed content for property lists,
/// bytes otherwise.
std::map<std::string, std::string> snapshot(const fs::path& root)
{
    auto files = test::storedFiles(root);
    for (auto& [path, bytes] : files)
        if (auto parsed = PropertyListSerialization::propertyListWithData(bytes); parsed && path.ends_with(".plist"))
            bytes = plistBytes(*parsed);
    return files;
}

/// A root holding settings of several kinds, an app list, a picture and another product's file.
struct FilledRoot {
    FilledRoot()
    {
        auto run = test::runScript({"--root", root.path().string()},
                                   "write com.veltram.nimbraprefs nimbraEnabled true\n"
                                   "write com.veltram.nimbraprefs.batteryline style 3\n"
                                   "write com.veltram.nimbraprefs.batteryline height 2.5\n"
                                   "write com.veltram.nimbraprefs.batteryline.colors chargingColor \"#34C759FF\"\n"
                                   "write com.veltram.nimbraprefs.widgets text \"caf\u00e9\"\n");
        EXPECT_EQ(run.status, 0) << run.errors;
        test::writeFile(test::under(root.path(), kPreferences + "com.veltram.nimbraprefs.system.apps.plist"),
                        plistBytes(PlistValue(PlistDictionary{{"darkApps", PlistValue(PlistArray{"com.apple.mobilesafari", "com.apple.Music"})}})));
        test::writeFile(test::under(root.path(), kPictures + "ControlCenterBackgroundLight.png"),
                        test::readFile(fs::path(test::resourcesDir()) / "icons/NIMRootIcon.png"));
        test::writeFile(test::under(root.path(), kPreferences + "com.example.other.plist"),
                        plistBytes(PlistValue(PlistDictionary{{"theirs", PlistValue(true)}})));
    }
    std::vector<std::string> rootArgs(std::vector<std::string> rest) const
    {
        std::vector<std::string> args{"--root", root.path().string()};
        args.insert(args.end(), rest.begin(), rest.end());
        return args;
    }
    test::TempDir root;
};

PlistDictionary backupWith(const std::string& key, PlistValue value)
{
    PlistDictionary top{{"format", PlistValue("com.veltram.nimbraprefs.backup")},
                        {"version", PlistValue(1)},
                        {"domains", PlistValue(PlistDictionary{{"com.veltram.nimbraprefs", PlistValue(PlistDictionary{{"nimbraEnabled", PlistValue(false)}})}})}};
    top[key] = std::move(value);
    return top;
}

}  // namespace

TEST(Backup, RestoresEveryFileAfterAResetOfEverything)
{
    FilledRoot filled;
    test::TempDir io;
    fs::path backup = io / "settings.plist";
    auto exported = test::runProgram(filled.rootArgs({"export", backup.string()}));
    ASSERT_EQ(exported.status, 0) << exported.errors;
    auto before = snapshot(filled.root.path());
    std::string other = test::readFile(test::under(filled.root.path(), kPreferences + "com.example.other.plist"));

    auto reset = test::runScript({"--root", filled.root.path().string()},
                                 "open NIMNimbraSettingsPrefsListController\ncall resetAll\nalert Confirm\n");
    ASSERT_EQ(reset.status, 0) << reset.errors;
    EXPECT_FALSE(fs::exists(test::under(filled.root.path(), kPreferences + "com.veltram.nimbraprefs.batteryline.colors.plist")));
    EXPECT_NE(snapshot(filled.root.path()), before);

    // The dry run lists what would come back and writes nothing.
    auto dry = test::runProgram(filled.rootArgs({"import", "--dry-run", backup.string()}));
    ASSERT_EQ(dry.status, 0) << dry.errors;
    auto changes = test::jsonLines(dry.output);
    // Each change says what it is, and what a person reads for it.
    auto style = std::find_if(changes.begin(), changes.end(), [](const nlohmann::json& change) {
        return change["domain"] == "com.veltram.nimbraprefs.batteryline" && change["key"] == "style";
    });
    ASSERT_NE(style, changes.end()) << dry.output;
    EXPECT_EQ((*style)["old"], nullptr);
    EXPECT_EQ((*style)["new"], 3);
    EXPECT_EQ((*style)["where"], "Battery Line");
    EXPECT_EQ((*style)["text"].get<std::string>().find("com.veltram"), std::string::npos) << dry.output;
    for (auto& change : changes)
        EXPECT_TRUE(change["text"].is_string()) << change;
    EXPECT_FALSE(fs::exists(test::under(filled.root.path(), kPreferences + "com.veltram.nimbraprefs.batteryline.colors.plist")));

    auto restored = test::runProgram(filled.rootArgs({"import", backup.string()}));
    ASSERT_EQ(restored.status, 0) << restored.errors;
    EXPECT_EQ(snapshot(filled.root.path()), before);
    EXPECT_EQ(test::readFile(test::under(filled.root.path(), kPreferences + "com.example.other.plist")), other);

    // Nothing left to change; the export to standard output is the same backup.
    auto again = test::runProgram(filled.rootArgs({"import", "--dry-run", backup.string()}));
    EXPECT_EQ(again.output, "");
    auto toStdout = test::runProgram(filled.rootArgs({"export"}));
    EXPECT_EQ(toStdout.output, test::readFile(backup));
}

TEST(Backup, ABadBackupIsRefusedWithNothingWritten)
{
    FilledRoot filled;
    test::TempDir io;
    fs::path good = io / "good.plist";
    ASSERT_EQ(test::runProgram(filled.rootArgs({"export", good.string()})).status, 0);
    std::string goodBytes = test::readFile(good);
    auto before = snapshot(filled.root.path());

    PlistDictionary foreign = backupWith("pictures", PlistValue(PlistDictionary{}));
    foreign["domains"] = PlistValue(PlistDictionary{{"com.veltram.nimbraprefs", PlistValue(PlistDictionary{{"nimbraEnabled", PlistValue(false)}})},
                                                    {"com.example.other", PlistValue(PlistDictionary{{"theirs", PlistValue(false)}})}});
    PlistDictionary escaping = backupWith("pictures", PlistValue(PlistDictionary{}));
    escaping["domains"] = PlistValue(PlistDictionary{{"com.veltram.nimbraprefs.x/../../../../x", PlistValue(PlistDictionary{})}});
    PlistDictionary wrongVersion = backupWith("version", PlistValue(2));
    std::string jpegLike = "\xff\xd8\xff\xe0 not a png";
    PlistDictionary notPng = backupWith("pictures", PlistValue(PlistDictionary{{"ControlCenterBackgroundLight", PlistValue(PlistData{{jpegLike.begin(), jpegLike.end()}})}}));
    PlistDictionary badName = backupWith("pictures", PlistValue(PlistDictionary{{"../escape", PlistValue(PlistData{})}}));
    PlistDictionary notDomain = backupWith("format", PlistValue("com.example.backup"));

    struct Case {
        std::string name;
        std::string bytes;
        std::string message;
    };
    std::vector<Case> cases{
        {"truncated", goodBytes.substr(0, goodBytes.size() / 2), "not a property list"},
        {"wrong version", plistBytes(PlistValue(wrongVersion)), "version is not supported"},
        {"foreign domain", plistBytes(PlistValue(foreign)), "\"com.example.other\", which is not a Nimbra preference domain"},
        {"escaping domain", plistBytes(PlistValue(escaping)), "which is not a Nimbra preference domain"},
        {"not a PNG", plistBytes(PlistValue(notPng)), "is not a PNG image"},
        {"picture name", plistBytes(PlistValue(badName)), "is not a plain file name"},
        {"other format", plistBytes(PlistValue(notDomain)), "not a Nimbra settings backup"},
        {"empty", "", "not a property list"},
    };
    for (auto& c : cases) {
        fs::path file = io / "bad.plist";
        test::writeFile(file, c.bytes);
        for (bool dryRun : {false, true}) {
            auto args = dryRun ? filled.rootArgs({"import", "--dry-run", file.string()}) : filled.rootArgs({"import", file.string()});
            auto run = test::runProgram(args);
            EXPECT_EQ(run.status, 1) << c.name;
            EXPECT_EQ(run.output, "") << c.name;
            EXPECT_NE(run.errors.find(c.message), std::string::npos) << c.name << ": " << run.errors;
        }
        EXPECT_EQ(snapshot(filled.root.path()), before) << c.name;
    }

    // 100 MB: refused by its size, without being read (a sparse file of zeros).
    fs::path huge = io / "huge.plist";
    test::writeFile(huge, "");
    fs::resize_file(huge, 100 * 1000 * 1000);
    auto run = test::runProgram(filled.rootArgs({"import", huge.string()}));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.errors.find("larger than 64 MiB"), std::string::npos) << run.errors;
    auto missing = test::runProgram(filled.rootArgs({"import", (io / "absent.plist").string()}));
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.errors.find("there is no file"), std::string::npos) << missing.errors;
    EXPECT_EQ(snapshot(filled.root.path()), before);
}

using test::identical;
using test::modeOf;

TEST(Backup, EveryValueComesBackExactly)
{
    FilledRoot filled;
    PlistDictionary unusual{
        {"fraction", PlistValue(PlistDate{612345678.987654321})},
        {"old", PlistValue(PlistDate{-5.0e9})},
        {"far", PlistValue(PlistDate{3.0e9 + 0.25})},
        {"control", PlistValue("a\x01 b\x1f c\x7f")},
        {"largest", PlistValue::unsignedInteger(~std::uint64_t{0})},
        {"twoTo63", PlistValue::unsignedInteger(std::uint64_t{1} << 63)},
        {"uid", PlistValue(PlistUID{12345})},
        {"real", PlistValue(0.1)},
    };
    fs::path domain = test::under(filled.root.path(), kPreferences + "com.veltram.nimbraprefs.misc.plist");
    test::writeFile(domain, plistBytes(PlistValue(unusual)));
    test::TempDir io;
    fs::path backup = io / "settings.plist";
    auto exported = test::runProgram(filled.rootArgs({"export", backup.string()}));
    ASSERT_EQ(exported.status, 0) << exported.errors;
    // Other tools read the backup too.
    auto check = std::system(("python3 -c 'import plistlib,sys; plistlib.load(open(sys.argv[1],\"rb\"))' " + backup.string()).c_str());
    EXPECT_EQ(check, 0) << "Python's plistlib cannot read the backup";
    fs::remove(domain);
    auto restored = test::runProgram(filled.rootArgs({"import", backup.string()}));
    ASSERT_EQ(restored.status, 0) << restored.errors;
    auto parsed = PropertyListSerialization::propertyListWithData(test::readFile(domain));
    ASSERT_TRUE(parsed);
    for (auto& [key, value] : unusual)
        EXPECT_TRUE(identical((*parsed)[key], value)) << key;
}

TEST(Backup, ADomainFileThatIsALinkIsBackedUp)
{
    FilledRoot filled;
    fs::path elsewhere = filled.root / "elsewhere/time.plist";
    test::writeFile(elsewhere, plistBytes(PlistValue(PlistDictionary{{"linked", PlistValue(7)}})));
    fs::path link = test::under(filled.root.path(), kPreferences + "com.veltram.nimbraprefs.time.plist");
    fs::create_symlink(elsewhere, link);
    // The pages read through the link.
    auto read = test::runScript({"--root", filled.root.path().string()}, "file " + kPreferences + "com.veltram.nimbraprefs.time.plist\n");
    ASSERT_EQ(read.status, 0);
    ASSERT_EQ(read.lines.at(0)["value"]["linked"], 7);
    auto exported = test::runProgram(filled.rootArgs({"export"}));
    ASSERT_EQ(exported.status, 0) << exported.errors;
    auto backup = PropertyListSerialization::propertyListWithData(exported.output);
    ASSERT_TRUE(backup);
    EXPECT_EQ((*backup)["domains"]["com.veltram.nimbraprefs.time"]["linked"].integerValue(), 7);
}

TEST(Backup, NewFilesFollowTheUmaskAndRewrittenFilesKeepTheirMode)
{
    FilledRoot filled;
    test::Umask mask(077);
    test::TempDir io;
    fs::path backup = io / "settings.plist";
    ASSERT_EQ(test::runProgram(filled.rootArgs({"export", backup.string()})).status, 0);
    EXPECT_EQ(modeOf(backup), 0600u);
    fs::path domain = test::under(filled.root.path(), kPreferences + "com.veltram.nimbraprefs.batteryline.plist");
    fs::permissions(domain, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    auto run = test::runScript({"--root", filled.root.path().string()},
                               "write com.veltram.nimbraprefs.batteryline style 4\n"
                               "write com.veltram.nimbraprefs.keyboard fresh 1\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(modeOf(domain), 0640u) << "a rewritten file keeps its mode";
    EXPECT_EQ(modeOf(test::under(filled.root.path(), kPreferences + "com.veltram.nimbraprefs.keyboard.plist")), 0600u)
        << "a new file follows the umask";
    ASSERT_EQ(test::runProgram(filled.rootArgs({"import", backup.string()})).status, 0);
    EXPECT_EQ(modeOf(domain), 0640u) << "a restored file keeps its mode";
}
