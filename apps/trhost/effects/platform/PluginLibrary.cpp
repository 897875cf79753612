#include "PluginLibrary.h"

#include "support/KeptText.h"

#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>

namespace trhost::effects::platform {

LoadedLibrary LoadPluginLibrary(const std::string& inPath)
{
    // A name without a separator would be looked for in the system's folders.
    const std::string path = inPath.find('/') == std::string::npos ? "./" + inPath : inPath;
    if (void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        return {handle, {}};
    }
    const char* const reason = ::dlerror();
    return {nullptr, reason ? reason : "$$$/Halcyon/TrHost/Effects/NoReason=the loader gives no reason"};
}

void* FindFunction(void* inHandle, const char* inName)
{
    return ::dlsym(inHandle, inName);
}

bool HoldsName(const std::string& inPath, const std::string& inName)
{
    std::ifstream file(inPath, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // Names lie in a table, each ended by a zero.
    std::string name(1, '\0');
    name.append(inName).push_back('\0');
    return std::search(bytes.begin(), bytes.end(),
                       std::boyer_moore_horspool_searcher(name.begin(), name.end())) != bytes.end();
}

std::string RefusalFromFailure(const std::string& inPath, const std::string& inFailure)
{
    // "libgavl.so.2: cannot open shared object file: No such file or directory", or
    // "/folder/file.so: undefined symbol: name".
    constexpr std::string_view kSeparator = ": ";
    const std::size_t end = inFailure.find(kSeparator);
    const std::string what = inFailure.substr(0, end);
    const bool isMissing = inFailure.find("cannot open shared object file") != std::string::npos;
    if (isMissing && what != inPath && what.find(' ') == std::string::npos) {
        return KeptText(
            "$$$/Halcyon/TrHost/Effects/NeedsLibrary=needs @0, which is not installed#{@0: a library}",
            {what});
    }
    const std::string reason =
        what == inPath && end != std::string::npos ? inFailure.substr(end + kSeparator.size()) : inFailure;
    return KeptText("$$$/Halcyon/TrHost/Effects/NotLoaded=cannot be loaded: @0", {reason});
}

} // namespace trhost::effects::platform
