#pragma once

#include <kiocore/utility/UTF16String.h>

#include <string>

namespace trhost {

/// A path of the command line as the host libraries take it: from the root, without "." and "..".
kiocore::UTF16String AbsolutePath(const std::string& inNative);

} // namespace trhost
