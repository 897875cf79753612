#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <string_view>
#include <vector>

#if defined(__APPLE__)
#include <CoreFoundation/CFBundle.h>
#else
/// A loaded library together with its resources. Lives as long as the process.
struct LoadedBundle;
using CFBundleRef = LoadedBundle*;
#endif

namespace kiocore::platform {

/// Finds a loaded library by its bundle identifier, "com.maker.Name". Where the platform has no bundles, it
/// is the shared library of that Name, and its resources lie in "<prefix>/share/Name".
///
/// Threading: any thread.
/// @return null when no such library is loaded.
KIO_EXPORT CFBundleRef BundleWithIdentifier(std::string_view inIdentifier);

} // namespace kiocore::platform

namespace kiocore::utility {

/// Reads a resource, "<name>.<type>" among the bundle's own; names with a separator have none.
/// @param outBytes  replaced on success, untouched otherwise.
/// @return false when inBundle is null or it has no such resource that could be read; trace channel
///     "Resources" tells why.
KIO_EXPORT bool GetBinaryFromModule(CFBundleRef inBundle, UTF16View inName, UTF16View inType,
                                    std::vector<std::byte>& outBytes);

} // namespace kiocore::utility
