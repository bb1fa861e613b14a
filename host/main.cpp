// nimbra-prefs: the NimbraPrefs settings bundle on a desktop.

#include "frame/NIMPageCatalog.h"
#include "host/ChangeWords.h"
#include "host/HostOptions.h"
#include "host/Lint.h"
#include "host/ScriptRunner.h"
#include "host/SearchIndex.h"
#include "host/SettingsBackup.h"
#include "host/ShownWhen.h"
#include "host/Server.h"
#include "host/Session.h"
#include "platform/AtomicFile.h"
#include "platform/NSFileManager.h"
#include "platform/Process.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <pthread.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

constexpr const char* kUsage = R"(usage: nimbra-prefs [--root DIR] [--cf-version N] [--host-bundle ID] COMMAND [ARGS]

The Nimbra settings bundle, run against a Linux stand-in for the device.

Commands:
  pages          list every page controller with its definition and domain
  script [FILE]  run a scripted session from FILE (or standard input)
  serve [--port N] [--open]
                 show the bundle in a browser: serves the pages and their JSON API on
                 http://127.0.0.1:N/ (default port 8765; 0 picks a free one) until
                 interrupted; --open also opens the address in the desktop's browser
  lint [--strict]
                 check every page definition against its controller; --strict also fails
                 on wording
  export [FILE]  write a backup of every stored setting, colour, app list and picked
                 picture to FILE (default: standard output)
  import [--dry-run] FILE
                 restore a backup: checks all of it first and writes nothing if any part
                 is bad; --dry-run only lists what would change (domain, key, old, new,
                 and the page, setting and values a person reads)
  search WORDS...
                 find settings on every page by the words shown (labels, headers, footers,
                 value titles, subtitles); one JSON object per result, best first
  shown-when [FILE]
                 open every page on a throw-away root and write, for each row a page may
                 hide, which values of which rows show it, to FILE (default: standard
                 output); the build keeps this table beside the program for search

Options:
  --root DIR         the directory that stands for /var/jb
                     (default: $NIMBRA_ROOT, else ~/.local/share/nimbra-prefs/jb)
  --cf-version N     the Core Foundation version number of the running system (default 1953.1)
  --host-bundle ID   the host app's bundle identifier (default com.apple.Preferences;
                     com.veltram.nimbraapp is the companion app)
  -h, --help         show this help
)";

struct Arguments {
    std::optional<std::string> root;
    double cfVersion = 1953.1;
    std::string hostBundle = "com.apple.Preferences";
    std::string command;
    std::vector<std::string> rest;
};

[[noreturn]] void usageError(const std::string& message)
{
    std::cerr << "nimbra-prefs: " << message << "\n\n" << kUsage;
    std::exit(2);
}

Arguments parse(int argc, char** argv)
{
    Arguments arguments;
    int i = 1;
    auto value = [&](const std::string& option) -> std::string {
        if (i + 1 >= argc)
            usageError(option + " needs a value");
        return argv[++i];
    };
    for (; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            std::cout << kUsage;
            std::exit(0);
        } else if (arg == "--root") {
            arguments.root = value(arg);
        } else if (arg == "--cf-version") {
            std::string text = value(arg);
            char* end = nullptr;
            arguments.cfVersion = std::strtod(text.c_str(), &end);
            if (text.empty() || *end)
                usageError("--cf-version takes a number, not \"" + text + "\"");
        } else if (arg == "--host-bundle") {
            arguments.hostBundle = value(arg);
        } else if (!arg.empty() && arg[0] == '-' && arg != "-") {
            usageError("unknown option " + arg);
        } else {
            break;
        }
    }
    if (i >= argc)
        usageError("missing command");
    arguments.command = argv[i++];
    for (; i < argc; ++i)
        arguments.rest.emplace_back(argv[i]);
    return arguments;
}

int listPages()
{
    for (auto& entry : NIMPageCatalog::all()) {
        const PageDescription& page = entry.description();
        std::cout << entry.className << '\t' << page.definition << '\t' << (page.domain.empty() ? "-" : page.domain) << '\n';
    }
    return 0;
}

int lint(const Arguments& arguments, const char* argv0)
{
    bool strict = false;
    for (auto& arg : arguments.rest) {
        if (arg != "--strict")
            usageError("lint takes only --strict");
        strict = true;
    }
    LintResult result = lintPages(resolveResources(argv0), std::cout, strict);
    std::cout << "lint: " << result.pages << " pages, " << result.problems << " problems";
    std::cout << '\n';
    return result.problems ? 1 : 0;
}

/// The process a backup command works in: the root, without pages.
Process::Options processOptions(const Arguments& arguments, const char* argv0)
{
    return {
        .root = resolveRoot(arguments.root),
        .resources = resolveResources(argv0),
        .coreFoundationVersion = arguments.cfVersion,
        .mainBundleIdentifier = arguments.hostBundle,
    };
}

/// Finishes or undoes a restore that was interrupted (killed, or the machine stopped) before the
/// command reads anything it stored.
void settleInterruptedRestore(const Arguments& arguments, const char* argv0)
{
    Process process(processOptions(arguments, argv0));
    SettingsBackup::finishInterruptedRestore();
}

std::string jsonLine(const nlohmann::ordered_json& value)
{
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

int exportBackup(const Arguments& arguments, const char* argv0)
{
    if (arguments.rest.size() > 1)
        usageError("export takes at most one file");
    Process process(processOptions(arguments, argv0));
    std::vector<std::string> skipped;
    std::string bytes = SettingsBackup::collectData(&skipped);
    for (auto& file : skipped)
        std::cerr << "nimbra-prefs: left out of the backup: " << file << '\n';
    if (arguments.rest.empty() || arguments.rest[0] == "-") {
        std::cout << bytes << std::flush;
        return std::cout ? 0 : 1;
    }
    if (!AtomicFile::write(std::filesystem::absolute(arguments.rest[0]), bytes)) {
        std::cerr << "nimbra-prefs: cannot write " << arguments.rest[0] << '\n';
        return 1;
    }
    return 0;
}

int importBackup(const Arguments& arguments, const char* argv0)
{
    bool dryRun = false;
    std::optional<std::string> file;
    for (auto& arg : arguments.rest) {
        if (arg == "--dry-run")
            dryRun = true;
        else if (!file)
            file = arg;
        else
            usageError("import takes one file");
    }
    if (!file)
        usageError("import needs the backup file");
    Process process(processOptions(arguments, argv0));
    try {
        SettingsBackup backup = SettingsBackup::fromFile(*file);
        if (dryRun) {
            SearchIndex index(resolveResources(argv0));
            ChangeWords words(index, resolveResources(argv0));
            for (auto& change : words.describeAll(backup.changes()))
                std::cout << jsonLine(change) << '\n';
            return 0;
        }
        backup.restore();
        std::cout << jsonLine({{"restored", {{"domains", backup.domains().size()}, {"pictures", backup.pictures().size()}}}}) << '\n';
        return 0;
    } catch (const BackupError& error) {
        std::cerr << "nimbra-prefs: " << *file << ": " << error.what() << '\n';
        return 1;
    }
}

int search(const Arguments& arguments, const char* argv0)
{
    std::string query;
    for (auto& word : arguments.rest)
        query += (query.empty() ? "" : " ") + word;
    if (query.find_first_not_of(" \t\r\n") == std::string::npos)
        usageError("search needs the words to look for");
    SearchIndex index(resolveResources(argv0));
    for (const SearchIndex::Entry* entry : index.find(query))
        std::cout << jsonLine(SearchIndex::toJson(*entry)) << '\n';
    return 0;
}

int shownWhen(const Arguments& arguments, const char* argv0)
{
    if (arguments.rest.size() > 1)
        usageError("shown-when takes at most one file");
    std::filesystem::path resources = resolveResources(argv0);
    std::string table = ShownWhen::probeAll(resources).save(resources);
    if (arguments.rest.empty() || arguments.rest[0] == "-") {
        std::cout << table;
        return 0;
    }
    if (!AtomicFile::write(arguments.rest[0], table)) {
        std::cerr << "nimbra-prefs: cannot write " << arguments.rest[0] << '\n';
        return 1;
    }
    return 0;
}

int script(const Arguments& arguments, const char* argv0)
{
    if (arguments.rest.size() > 1)
        usageError("script takes at most one file");
    Session session({
        .root = resolveRoot(arguments.root),
        .resources = resolveResources(argv0),
        .coreFoundationVersion = arguments.cfVersion,
        .mainBundleIdentifier = arguments.hostBundle,
    });
    if (arguments.rest.empty() || arguments.rest[0] == "-")
        return runScript(session, std::cin, std::cout, std::cerr);
    std::ifstream file(arguments.rest[0]);
    if (!file) {
        std::cerr << "nimbra-prefs: cannot read " << arguments.rest[0] << '\n';
        return 2;
    }
    return runScript(session, file, std::cout, std::cerr);
}

/// Opens the address in the desktop's browser, when the desktop has a way to.
void openInBrowser(const std::string& address)
{
    for (const char* opener : {"xdg-open", "open"}) {
        char* argv[] = {const_cast<char*>(opener), const_cast<char*>(address.c_str()), nullptr};
        pid_t child = 0;
        if (posix_spawnp(&child, opener, nullptr, nullptr, argv, environ) == 0) {
            // The opener hands the address over and ends; do not leave it behind as a zombie.
            std::thread([child] { waitpid(child, nullptr, 0); }).detach();
            return;
        }
    }
    std::cerr << "nimbra-prefs: no browser opener found; open " << address << " yourself\n";
}

int serve(const Arguments& arguments, const char* argv0)
{
    WebServer::Options options;
    bool open = false;
    for (std::size_t i = 0; i < arguments.rest.size(); ++i) {
        const std::string& arg = arguments.rest[i];
        if (arg == "--open") {
            open = true;
        } else if (arg == "--port") {
            if (i + 1 >= arguments.rest.size())
                usageError("--port needs a value");
            const std::string& text = arguments.rest[++i];
            char* end = nullptr;
            long port = std::strtol(text.c_str(), &end, 10);
            if (text.empty() || *end || port < 0 || port > 65535)
                usageError("--port takes a port number from 0 to 65535, not \"" + text + "\"");
            options.port = static_cast<int>(port);
        } else {
            usageError("serve takes only --port N and --open");
        }
    }
    std::filesystem::path resources = resolveResources(argv0);
    options.web = resources / "web";
    options.icons = resources / "icons";

    // Interrupts and terminations end the server from a thread of their own; every other thread
    // (started below) inherits the blocked mask.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    // A shell starts background jobs with interrupts ignored, and an ignored signal never reaches
    // sigwait: take them back (blocked, they are only ever waited for).
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    WebServer server(
        {
            .root = resolveRoot(arguments.root),
            .resources = resources,
            .coreFoundationVersion = arguments.cfVersion,
            .mainBundleIdentifier = arguments.hostBundle,
            .clock = MainQueue::Clock::Real,
        },
        options);
    server.bind();
    std::cout << "nimbra-prefs: serving the Nimbra settings at " << server.address() << std::endl;
    std::thread waiter([&server, signals] {
        int signal = 0;
        sigwait(&signals, &signal);
        server.stop();
    });
    if (open)
        openInBrowser(server.address());
    bool served = server.run();
    // Wake the waiter when serving ended for another reason than a signal.
    pthread_kill(waiter.native_handle(), SIGTERM);
    waiter.join();
    return served ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    Arguments arguments = parse(argc, argv);
    try {
        if (arguments.command == "pages")
            return listPages();
        if (arguments.command == "script" || arguments.command == "export" || arguments.command == "import" ||
            arguments.command == "serve")
            settleInterruptedRestore(arguments, argv[0]);
        if (arguments.command == "script")
            return script(arguments, argv[0]);
        if (arguments.command == "lint")
            return lint(arguments, argv[0]);
        if (arguments.command == "export")
            return exportBackup(arguments, argv[0]);
        if (arguments.command == "import")
            return importBackup(arguments, argv[0]);
        if (arguments.command == "search")
            return search(arguments, argv[0]);
        if (arguments.command == "serve")
            return serve(arguments, argv[0]);
        if (arguments.command == "shown-when")
            return shownWhen(arguments, argv[0]);
    } catch (const std::exception& error) {
        std::cerr << "nimbra-prefs: " << error.what() << '\n';
        return 1;
    }
    usageError("unknown command \"" + arguments.command + "\"");
}
