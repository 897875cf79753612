#pragma once

#include <kiocore/utility/UTF16String.h>

namespace TR {

/// Marks a cache file as just used. Whatever goes wrong is only traced (channel "MCDB", level 8): the
/// caller has found its file all the same.
void TouchCacheFile(const kiocore::UTF16String& inPath);

} // namespace TR
