// How fast pages open and follow their switches, and how fast a preference is stored: the work a
// user waits for on every tap. Run build/bench/nimbra-bench.

#include "host/Session.h"
#include "platform/HBPreferences.h"

#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

struct Root {
    Root()
    {
        std::string pattern = (fs::temp_directory_path() / "nimbra-bench-XXXXXX").string();
        path = ::mkdtemp(pattern.data());
    }
    ~Root()
    {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    fs::path path;
};

Session::Options options(const Root& root)
{
    return {.root = root.path, .resources = NIMBRA_RESOURCES_DIR};
}

/// Opening a page: load its definition, capture its rows, prune them from the stored domain.
void openPage(benchmark::State& state, const char* page)
{
    Root root;
    Session session(options(root));
    session.open("NIMRootListController");
    for (auto _ : state) {
        session.open(page);
        session.back();
        benchmark::DoNotOptimize(session.events());
    }
}
BENCHMARK_CAPTURE(openPage, systemRoot, "NIMSystemRootPrefsListController");
BENCHMARK_CAPTURE(openPage, controlCenterToggles, "NIMControlCenterTogglesPrefsListController");
BENCHMARK_CAPTURE(openPage, cpuInfoVisibility, "NIMCPUInfoVisibilityPrefsListController");

/// Rebuilding the open system root page (reload): its rows made afresh from the definition, the
/// stored domain read, the detached rows pruned.
void reloadPage(benchmark::State& state)
{
    Root root;
    Session session(options(root));
    session.open("NIMRootListController");
    session.open("NIMSystemRootPrefsListController");
    for (auto _ : state) {
        session.reload();
        benchmark::DoNotOptimize(session.events());
    }
}
BENCHMARK(reloadPage);

/// The peer of the two above: libplist's own parse of the system root page's definition.
void libplistParse(benchmark::State& state)
{
    std::ifstream file(std::string(NIMBRA_RESOURCES_DIR) + "/pages/System/SystemRoot.plist", std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    const std::string xml = bytes.str();
    for (auto _ : state) {
        plist_t parsed = nullptr;
        plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &parsed);
        benchmark::DoNotOptimize(parsed);
        plist_free(parsed);
    }
}
BENCHMARK(libplistParse);

/// Flipping the system root's master switch: 58 rows in, then out, each value stored on disk first.
void masterSwitch(benchmark::State& state)
{
    Root root;
    Session session(options(root));
    session.open("NIMRootListController");
    session.open("NIMSystemRootPrefsListController");
    bool on = false;
    for (auto _ : state) {
        on = !on;
        session.set("enabled", PlistValue(on));
        benchmark::DoNotOptimize(session.events());
    }
}
BENCHMARK(masterSwitch);

/// One stored value: read-modify-write of the domain file under its lock, replaced atomically.
void storeValue(benchmark::State& state)
{
    Root root;
    Process process({.root = root.path});
    auto preferences = HBPreferences::preferencesForIdentifier("com.veltram.nimbraprefs.bench");
    for (int key = 0; key < state.range(0); ++key)
        preferences->setObject(PlistValue(key), "key" + std::to_string(key));
    int value = 0;
    for (auto _ : state)
        preferences->setObject(PlistValue(++value), "counter");
}
BENCHMARK(storeValue)->Arg(10)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
