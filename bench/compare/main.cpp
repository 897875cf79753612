// Measures the comparison of pictures, and scripts, against what they cannot avoid and against other tools.
// Without arguments all tables; else those named.

#include "CompareBench.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

int main(int argc, char** argv)
{
    const struct {
        const char* name;
        void (*run)();
    } kTables[] = {{"decode", bench::BenchDecode},
                   {"difference", bench::BenchDifference},
                   {"encode", bench::BenchEncode},
                   {"process", bench::BenchWholeProcess},
                   {"script", bench::BenchScript}};
    const std::vector<std::string_view> wanted(argv + 1, argv + argc);
    for (const std::string_view name : wanted) {
        if (std::none_of(std::begin(kTables), std::end(kTables),
                         [&](const auto& table) { return table.name == name; })) {
            std::fprintf(stderr,
                         "bench_compare: no table \"%.*s\"; there are decode, difference, encode, process, "
                         "script\n",
                         static_cast<int>(name.size()), name.data());
            return 2;
        }
    }
    for (const auto& table : kTables) {
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), table.name) != wanted.end()) {
            table.run();
        }
    }
    return 0;
}
