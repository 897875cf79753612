#include "AbsolutePath.h"

#include <ZOL/PathUtils.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <system_error>

namespace trhost {

kiocore::UTF16String AbsolutePath(const std::string& inNative)
{
    std::error_code error; // a working folder that is gone: the path as it is will do
    const std::filesystem::path absolute = std::filesystem::absolute(inNative, error);
    return ZOL::PathUtils::ToNormalizedPath(
        kiocore::filesupport::FromNative(error ? inNative : absolute.native()));
}

} // namespace trhost
