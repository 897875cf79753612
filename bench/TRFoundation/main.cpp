// Measures the media cache against what it cannot avoid. Without arguments all tables; else those named.

#include "CacheSetup.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

int main(int argc, char** argv)
{
    const struct {
        const char* name;
        void (*run)(bench::CacheSetup&);
    } kTables[] = {{"find", bench::BenchFind},    {"uncached", bench::BenchFindUncached},
                   {"add", bench::BenchAdd},      {"memory", bench::BenchMemory},
                   {"clean", bench::BenchClean},  {"delete-all", bench::BenchDeleteAll},
                   {"ingest", bench::BenchIngest}};
    const std::vector<std::string_view> wanted(argv + 1, argv + argc);
    for (const std::string_view name : wanted) {
        if (std::none_of(std::begin(kTables), std::end(kTables),
                         [&](const auto& table) { return table.name == name; })) {
            std::fprintf(stderr,
                         "bench_cache: no table \"%.*s\"; there are find, uncached, add, memory, clean, "
                         "delete-all, ingest\n",
                         static_cast<int>(name.size()), name.data());
            return 2;
        }
    }
    bench::CacheSetup setup;
    for (const auto& table : kTables) {
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), table.name) != wanted.end()) {
            table.run(setup);
        }
    }
    return 0;
}
