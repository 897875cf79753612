#pragma once

#include <string>
#include <vector>

namespace bench {

/// Two files, and where their difference is to be painted.
struct ComparedFiles {
    std::string first;
    std::string second;
    std::string difference; ///< empty: no picture is asked for
};

/// A program that compares pictures, told to count every difference.
struct Comparer {
    std::string name;
    std::string program;
    std::vector<std::string> (*arguments)(const ComparedFiles& inFiles);

    std::vector<std::string> Command(const ComparedFiles& inFiles) const;
};

/// trhost.
Comparer Ours();
/// Those of tools/fetch-compare-peers that are there; of these those that BENCH_PEERS names, if it is set, as
/// in "odiff blazediff".
std::vector<Comparer> Peers();

} // namespace bench
