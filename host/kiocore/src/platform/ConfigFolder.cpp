#include "ConfigFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace kiocore::platform {
namespace {

std::string AbsoluteFromEnvironment(const char* inName)
{
    const char* const value = std::getenv(inName);
    return value && value[0] == '/' ? value : std::string();
}

std::string HomeOfUser()
{
    std::vector<char> memory(16384);
    struct passwd entry;
    struct passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, memory.data(), memory.size(), &found) != 0 || !found ||
        !found->pw_dir || found->pw_dir[0] != '/') {
        return {};
    }
    return found->pw_dir;
}

std::string WithoutSeparatorAtEnd(std::string inPath)
{
    while (!inPath.empty() && inPath.back() == '/') {
        inPath.pop_back();
    }
    return inPath;
}

} // namespace

std::string GetConfigFolder()
{
    if (const std::string folder = AbsoluteFromEnvironment("XDG_CONFIG_HOME"); !folder.empty()) {
        return WithoutSeparatorAtEnd(folder);
    }
    std::string home = AbsoluteFromEnvironment("HOME");
    if (home.empty()) {
        home = HomeOfUser();
    }
    return home.empty() ? std::string() : WithoutSeparatorAtEnd(home) + "/.config";
}

} // namespace kiocore::platform
