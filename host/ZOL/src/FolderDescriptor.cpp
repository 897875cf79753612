#include "FolderDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace ZOL {
namespace {

constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

} // namespace

int OpenRootFolder(const char* inPath)
{
    return ::open(inPath, kFlags);
}

int OpenSubfolder(int inFolder, const char* inName)
{
    return ::openat(inFolder, inName, kFlags | O_NOFOLLOW);
}

int OpenFolderBelow(int inFolder, std::string_view inPath)
{
    int folder = OpenSubfolder(inFolder, ".");
    std::string name;
    for (std::size_t start = 0; folder >= 0 && start < inPath.size();) {
        const std::size_t end = inPath.find('/', start);
        name.assign(inPath, start, end - start);
        const int next = OpenSubfolder(folder, name.c_str());
        const int error = errno;
        ::close(folder);
        errno = error;
        folder = next;
        start = end + 1;
    }
    return folder;
}

} // namespace ZOL
