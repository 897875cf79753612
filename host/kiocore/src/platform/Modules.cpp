#include <kiocore/platform/Modules.h>

#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/filesupport/NativePath.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <fstream>

namespace kiocore::platform {
namespace {

constexpr int kFoldersUp = 3; // from <prefix>/lib/<machine>/<modules>

std::string FolderOf(const std::string& inPath)
{
    const std::size_t separator = inPath.rfind('/');
    return separator == std::string::npos ? std::string() : inPath.substr(0, separator);
}

/// The file whose mapping holds the address. Asked of the kernel rather than of the loader, whose names
/// are relative to a working folder of the past when the search path was.
std::string FileOfAddress(const void* inAddress)
{
    const auto address = reinterpret_cast<std::uintptr_t>(inAddress);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        // "start-end flags offset device inode    /path"
        std::uintptr_t start = 0;
        std::uintptr_t end = 0;
        const char* const last = line.data() + line.size();
        const auto first = std::from_chars(line.data(), last, start, 16);
        if (first.ec != std::errc() || first.ptr == last ||
            std::from_chars(first.ptr + 1, last, end, 16).ec != std::errc()) {
            continue;
        }
        if (address >= start && address < end) {
            const std::size_t path = line.find('/');
            return path == std::string::npos ? std::string() : line.substr(path);
        }
    }
    return {};
}

} // namespace

std::string ProgramPath()
{
    std::string path(256, '\0');
    for (;;) {
        const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
        if (size < 0) {
            throw file_exception("read", "/proc/self/exe", errno);
        }
        if (static_cast<std::size_t>(size) < path.size()) {
            path.resize(static_cast<std::size_t>(size));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::string FolderOfModule(const void* inAddress)
{
    const std::string file = FileOfAddress(inAddress);
    if (file.empty()) {
        char text[32];
        const auto end =
            std::to_chars(text, text + sizeof(text), reinterpret_cast<std::uintptr_t>(inAddress), 16).ptr;
        throw kio_exception("Address 0x" + std::string(text, end) + " lies in no loaded program or library",
                            kError_BadArgument);
    }
    return FolderOf(file);
}

std::string ResourceFolder(const void* inAddress, std::string_view inName)
{
    std::string prefix = FolderOf(FolderOfModule(inAddress));
    const std::string below = "/share/" + std::string(inName);
    const std::string nearest = prefix + below;
    for (int up = 0; up < kFoldersUp; ++up) {
        const std::string folder = prefix + below;
        struct stat status;
        if (::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
            return folder;
        }
        if (prefix.empty()) {
            break;
        }
        prefix = FolderOf(prefix);
    }
    return nearest;
}

void* LoadModuleFunction(const std::string& inModulePath, const char* inFunctionName)
{
    // Loaded for good: what it registers, and threads that run in it, may outlive any handle.
    void* const module = ::dlopen(inModulePath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!module) {
        const char* const reason = ::dlerror();
        throw kio_exception(
            config::Localizer::Format(
                config::Localizer::GetText("$$$/kiocore/Error/Module=Cannot load module @0: "
                                           "@1#{@0: a file, @1: the reason}"),
                {utility::ToUTF16(inModulePath), reason ? utility::ToUTF16(reason) : u"unknown reason"}),
            kError_File);
    }
    ::dlerror();
    void* const function = ::dlsym(module, inFunctionName);
    if (!function) {
        const char* const reason = ::dlerror();
        const std::string text = reason ? reason : "it is null";
        ::dlclose(module);
        throw kio_exception("Module " + inModulePath + " has no function " + inFunctionName + ": " + text,
                            kError_File);
    }
    ::dlclose(module); // the handle only
    return function;
}

} // namespace kiocore::platform
