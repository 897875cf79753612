#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>

namespace ZOL {

using kiocore::ImmutableString;
using kiocore::UTF16String;

/// Folders that the host suite's applications share, by name.
///
/// Threading: any thread.
class KIO_EXPORT DirectoryRegistry {
public:
    /// The user's shared documents folder of the suite.
    static constexpr const char* kSharedDocuments = "kioshared.documents";

    /// Registers or moves a folder.
    static void RegisterDirectory(const ImmutableString& inName, kiocore::UTF16View inFolder);
    /// @return 0, or -1 (outFolder untouched) when nothing is registered under the name.
    static int FindDirectory(const ImmutableString& inName, UTF16String& outFolder);
    static void UnregisterDirectory(const ImmutableString& inName);
};

} // namespace ZOL
