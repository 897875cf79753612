#include <kiocore/filesupport/FileCalls.h>

#include <unistd.h>

namespace kiocore::filesupport {

ssize_t FileCalls::CopyRange(int inFrom, int inTo, std::size_t inSize)
{
    return ::copy_file_range(inFrom, nullptr, inTo, nullptr, inSize, 0);
}

} // namespace kiocore::filesupport
