// Search over the whole bundle, as the browser's search field asks it on every keystroke: the
// index is built once (its cost measured apart), then each query scans every row's words.

#include "host/SearchIndex.h"

#include <benchmark/benchmark.h>

namespace {

const SearchIndex& index()
{
    static const SearchIndex built(NIMBRA_RESOURCES_DIR);
    return built;
}

/// Building the index from every page definition (once, at start-up).
void buildSearchIndex(benchmark::State& state)
{
    for (auto _ : state) {
        SearchIndex fresh(NIMBRA_RESOURCES_DIR);
        benchmark::DoNotOptimize(fresh.entries().size());
    }
}
BENCHMARK(buildSearchIndex)->Unit(benchmark::kMillisecond);

/// One query: a single letter (matches most rows), a common word, two words, and no match.
void searchQuery(benchmark::State& state)
{
    static const char* queries[] = {"e", "color", "background color", "xyzzy"};
    const char* query = queries[state.range(0)];
    std::size_t found = 0;
    for (auto _ : state) {
        found = index().find(query, 1000).size();
        benchmark::DoNotOptimize(found);
    }
    state.SetLabel(std::string("\"") + query + "\": " + std::to_string(found) + " of " +
                   std::to_string(index().entries().size()) + " rows");
}
BENCHMARK(searchQuery)->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);

}  // namespace
