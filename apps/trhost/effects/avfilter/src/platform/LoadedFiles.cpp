#include "LoadedFiles.h"

#include <dlfcn.h>

#include <cstdlib>
#include <memory>

namespace trhost::effects::avfilter {
namespace {

struct FreeText {
    void operator()(char* inText) const noexcept { std::free(inText); }
};

} // namespace

std::string FileAt(const void* inAddress)
{
    Dl_info info{};
    return dladdr(inAddress, &info) != 0 && info.dli_fname ? Resolved(info.dli_fname) : std::string();
}

std::string Resolved(const std::string& inPath)
{
    const std::unique_ptr<char, FreeText> resolved(realpath(inPath.c_str(), nullptr));
    return resolved ? resolved.get() : inPath;
}

} // namespace trhost::effects::avfilter
