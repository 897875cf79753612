// Measures what watching over plug-ins costs. Without arguments all tables; else those named.

#include "EffectsBench.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

/// In a process of its own, as crash detection reads its state once.
void RunApart(void (*inTable)())
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        inTable();
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        std::printf("  not measured: the process ended with status %d\n", status);
    }
}

} // namespace

int main(int argc, char** argv)
{
    const struct {
        const char* name;
        void (*run)();
    } kTables[] = {{"sentinel", bench::BenchSentinel},
                   {"sentinel-off", bench::BenchSentinelOff},
                   {"guard", bench::BenchGuard},
                   {"crash", bench::BenchCrash},
                   {"scan", bench::BenchScan}};
    const std::vector<std::string_view> wanted(argv + 1, argv + argc);
    for (const std::string_view name : wanted) {
        if (std::none_of(std::begin(kTables), std::end(kTables),
                         [&](const auto& table) { return table.name == name; })) {
            std::fprintf(stderr,
                         "bench_effects: no table \"%.*s\"; there are sentinel, sentinel-off, guard, crash, "
                         "scan\n",
                         static_cast<int>(name.size()), name.data());
            return 2;
        }
    }
    for (const auto& table : kTables) {
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), table.name) != wanted.end()) {
            RunApart(table.run);
        }
    }
    return 0;
}
