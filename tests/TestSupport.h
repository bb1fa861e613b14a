#pragma once
// Helpers shared by the tests: throw-away installation roots, in-process sessions and runs of the
// real `nimbra-prefs` program.

#include "host/Session.h"
#include "platform/PropertyListSerialization.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace test {

/// The shipped resources folder of this source tree: page definitions, icons, the page application.
const std::string& resourcesDir();
/// The `nimbra-prefs` program of this build.
const std::string& prefsExe();

/// A fresh directory removed again at the end of the test.
class TempDir {
public:
    TempDir();
    /// A fresh directory inside parent.
    explicit TempDir(const std::filesystem::path& parent);
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return _path; }
    std::filesystem::path operator/(const std::string& name) const { return _path / name; }

private:
    std::filesystem::path _path;
};

/// A folder held in memory (/dev/shm) when the machine has one, else the temporary folder: for
/// tests that write settings many thousands of times and do not test what reaches the disk.
std::filesystem::path memoryTempParent();

/// Writes text to a host path, making its folders.
void writeFile(const std::filesystem::path& path, const std::string& text);
std::string readFile(const std::filesystem::path& path);
/// Writes a property list to a host path, making its folders.
void writePlist(const std::filesystem::path& path, const PlistValue& value,
                PropertyListSerialization::Format format = PropertyListSerialization::Format::Binary);

/// The host path of a logical path under a root ("/var/jb/x" -> root/x).
std::filesystem::path under(const std::filesystem::path& root, const std::string& logical);

/// Every file below a root's Preferences and pictures folders: its path below the root -> its bytes.
std::map<std::string, std::string> storedFiles(const std::filesystem::path& root);

/// Whether two property-list values are the same in kind and value, recursively, with reals and
/// dates compared bit for bit (isEqual: would call 1 and YES equal).
bool identical(const PlistValue& a, const PlistValue& b);

/// The process's umask for as long as the object lives.
struct Umask {
    explicit Umask(mode_t mask) : old(::umask(mask)) {}
    ~Umask() { ::umask(old); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;
    mode_t old;
};
/// The permission bits of a file (0 when it has none to read).
mode_t modeOf(const std::filesystem::path& path);

/// An in-process session on a fresh root, with the bundle's resources unless others are given.
struct SessionOnFreshRoot {
    explicit SessionOnFreshRoot(Session::Options options = {});
    TempDir root;
    std::unique_ptr<Session> session;
    Session& operator*() { return *session; }
    Session* operator->() { return session.get(); }
    /// The events since the last call, as JSON objects.
    std::vector<nlohmann::ordered_json> events();
    /// The events of one kind since the last call.
    std::vector<nlohmann::ordered_json> events(const std::string& kind);
    /// The ids shown on the top page.
    std::vector<std::string> shownIds();
};

/// Runs `nimbra-prefs ARGS script` with the given script on standard input.
struct ScriptRun {
    int status = -1;
    std::vector<nlohmann::json> lines;  // standard output, one JSON value per line
    std::string errors;                 // standard error
};
ScriptRun runScript(const std::vector<std::string>& arguments, const std::string& script);

}  // namespace test
