#include "TestSupport.h"

#include "host/ShownWhen.h"
#include "ProgramRun.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace test {

// The only file that knows where the source tree and the build are: the other test files compile
// the same in every clone, so a compiler cache shares them between clones.
const std::string& resourcesDir()
{
    static const std::string path = NIMBRA_RESOURCES_DIR;
    return path;
}

const std::string& prefsExe()
{
    static const std::string path = NIMBRA_PREFS_EXE;
    return path;
}

namespace {

// The tests' processes read the table of where rows appear that the build made for the program
// (built from the same sources), instead of each probing every page again.
[[maybe_unused]] const bool readsTheProgramsTable = (ShownWhen::readTableOf(prefsExe()), true);

}  // namespace

TempDir::TempDir()
    : TempDir(fs::temp_directory_path())
{
}

TempDir::TempDir(const fs::path& parent)
{
    std::string pattern = (parent / "nimbra-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("mkdtemp failed");
    _path = pattern;
}

TempDir::~TempDir()
{
    std::error_code ec;
    fs::remove_all(_path, ec);
}

fs::path memoryTempParent()
{
    std::error_code ec;
    if (fs::is_directory("/dev/shm", ec) && ::access("/dev/shm", W_OK) == 0)
        return "/dev/shm";
    return fs::temp_directory_path();
}

void writeFile(const fs::path& path, const std::string& text)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

void writePlist(const fs::path& path, const PlistValue& value, PropertyListSerialization::Format format)
{
    writeFile(path, PropertyListSerialization::dataWithPropertyList(value, format));
}

std::string readFile(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

fs::path under(const fs::path& root, const std::string& logical)
{
    const std::string prefix = "/var/jb/";
    if (logical.rfind(prefix, 0) == 0)
        return root / logical.substr(prefix.size());
    return root / ".rootfs" / logical.substr(1);
}

std::map<std::string, std::string> storedFiles(const fs::path& root)
{
    std::map<std::string, std::string> files;
    for (std::string folder : {"/var/jb/var/mobile/Library/Preferences", "/var/jb/var/mobile/Library/Nimbra"}) {
        fs::path host = under(root, folder);
        if (!fs::exists(host))
            continue;
        for (auto& entry : fs::recursive_directory_iterator(host))
            if (entry.is_regular_file())
                files[fs::relative(entry.path(), root).string()] = readFile(entry.path());
    }
    return files;
}

bool identical(const PlistValue& a, const PlistValue& b)
{
    if (a.kind() != b.kind() || a.isLargeUnsigned() != b.isLargeUnsigned())
        return false;
    switch (a.kind()) {
    case PlistValue::Kind::Array:
        return std::ranges::equal(a.arrayValue(), b.arrayValue(), identical);
    case PlistValue::Kind::Dictionary:
        if (a.dictionaryValue().size() != b.dictionaryValue().size())
            return false;
        for (auto& [key, item] : a.dictionaryValue())
            if (!b.dictionaryValue().contains(key) || !identical(item, b[key]))
                return false;
        return true;
    case PlistValue::Kind::Real: return std::bit_cast<std::uint64_t>(a.doubleValue()) == std::bit_cast<std::uint64_t>(b.doubleValue());
    case PlistValue::Kind::Date:
        return std::bit_cast<std::uint64_t>(a.dateValue()->secondsSinceReferenceDate) ==
               std::bit_cast<std::uint64_t>(b.dateValue()->secondsSinceReferenceDate);
    default: return a == b;
    }
}

mode_t modeOf(const fs::path& path)
{
    return fs::status(path).permissions() == fs::perms::unknown ? 0 : static_cast<mode_t>(fs::status(path).permissions());
}

SessionOnFreshRoot::SessionOnFreshRoot(Session::Options options)
{
    options.root = root.path();
    if (options.resources.empty())
        options.resources = resourcesDir();
    session = std::make_unique<Session>(options);
}

std::vector<nlohmann::ordered_json> SessionOnFreshRoot::events()
{
    session->commit();
    std::vector<nlohmann::ordered_json> all;
    auto drained = session->events();
    for (auto& event : drained["events"])
        all.push_back(event);
    return all;
}

std::vector<nlohmann::ordered_json> SessionOnFreshRoot::events(const std::string& kind)
{
    std::vector<nlohmann::ordered_json> matching;
    for (auto& event : events())
        if (event["event"] == kind)
            matching.push_back(event);
    return matching;
}

std::vector<std::string> SessionOnFreshRoot::shownIds()
{
    return session->show()["ids"].get<std::vector<std::string>>();
}

namespace {

ProgramRun runProgramWith(const std::string& program, const std::vector<std::string>& arguments, const std::string& input,
                          const std::vector<std::string>& environment)
{
    TempDir io;
    fs::path in = io / "in", output = io / "out", errors = io / "err";
    writeFile(in, input);
    // Everything the child needs is made before the fork.
    std::vector<std::string> args{program};
    args.insert(args.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> settings = environment;
    std::vector<char*> envp;
    for (auto& setting : settings)
        envp.push_back(setting.data());
    for (char** inherited = environ; *inherited; ++inherited)
        envp.push_back(*inherited);
    envp.push_back(nullptr);
    pid_t pid = ::fork();
    if (pid == 0) {
        int inFd = ::open(in.c_str(), O_RDONLY);
        int out = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = ::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(inFd, 0);
        ::dup2(out, 1);
        ::dup2(err, 2);
        ::execve(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    ProgramRun run;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.output = readFile(output);
    run.errors = readFile(errors);
    return run;
}

}  // namespace

ProgramRun runProgram(const std::vector<std::string>& arguments, const std::string& input)
{
    return runProgramWith(prefsExe(), arguments, input, {});
}

ProgramRun runExecutable(const std::string& program, const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                         const std::string& input)
{
    return runProgramWith(program, arguments, input, environment);
}

pid_t startProgram(const std::vector<std::string>& arguments)
{
    // Everything the child needs is made before the fork.
    std::vector<std::string> args{prefsExe()};
    args.insert(args.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = ::fork();
    if (pid == 0) {
        int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, 1);
        ::dup2(null, 2);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    return pid;
}

int waitForProgram(pid_t pid)
{
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<nlohmann::json> jsonLines(const std::string& text)
{
    std::vector<nlohmann::json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(nlohmann::json::parse(line));
    return lines;
}

ScriptRun runScript(const std::vector<std::string>& arguments, const std::string& script)
{
    std::vector<std::string> args = arguments;
    args.push_back("script");
    ProgramRun program = runProgram(args, script);
    ScriptRun run;
    run.status = program.status;
    run.lines = jsonLines(program.output);
    run.errors = program.errors;
    return run;
}

}  // namespace test
