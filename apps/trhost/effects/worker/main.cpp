// Tries plug-ins out for another process, which stays unhurt. Started by that process only.

#include "Requests.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

template <typename Number>
bool ReadNumber(const char* inText, Number& outNumber)
{
    const char* const end = inText + std::strlen(inText);
    const auto result = std::from_chars(inText, end, outNumber);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace trhost::effects;
    int parent = 0;
    std::uint64_t addressSpaceBytes = 0;
    if (argc != 3 || !ReadNumber(argv[1], parent) || !ReadNumber(argv[2], addressSpaceBytes)) {
        std::fputs(
            "trhost-effect-worker is started by trhost, which talks to it; it does nothing by itself\n",
            stderr);
        return 2;
    }
    if (!platform::PrepareWorkerProcess(parent, addressSpaceBytes)) {
        return 0;
    }
    platform::LineConnection connection(platform::kConnectionFile);
    Requests(connection).Serve();
    platform::EndAtOnce(0);
}
