#include "GlobalState.h"

#include <algorithm>
#include <iterator>

namespace trhost::effects::frei0r {
namespace {

struct Known {
    std::string_view stem;
    const char* reason; // for who reads this table
};

// Found by looking for code that writes to the data segments of the plug-ins that Debian 12 packages
// (1.8.0), outside the C++ wrapper's list of parameters, which PluginFile guards for all. Plug-ins that only
// draw from the C library's rand() (cluster, tehroxx0r) are not here: it has a lock of its own, and one
// around them would not make its numbers come in the same order.
constexpr Known kKnown[] = {
    {"glitch0r", "one random state, set by each new instance and moved on by each update"},
    {"ising0r", "one random state, set by each new instance and moved on by each update"},
    {"rgbnoise", "the second of each pair of random numbers waits in a variable for the next call"},
};

} // namespace

bool KeepsGlobalState(std::string_view inStem)
{
    return std::any_of(std::begin(kKnown), std::end(kKnown),
                       [&](const Known& inKnown) { return inKnown.stem == inStem; });
}

} // namespace trhost::effects::frei0r
