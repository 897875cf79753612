#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace ZOL {

using kiocore::UTF16String;
using kiocore::UTF16View;

/// Taking paths apart, without asking the disk.
///
/// Threading: any thread.
class KIO_EXPORT PathUtils {
public:
    static constexpr char16_t kPathSeparator = u'/';
    /// Of the other platform that records may come from.
    static constexpr char16_t kOppositePlatformPathSeparator = u'\\';

    /// "" on this platform for any path.
    static UTF16String GetDrivePart(UTF16View inPath);
    /// "/a/b/" of "/a/b/c.wav" and of "/a/b/"; "" of "c.wav".
    static UTF16String GetDirectoryPart(UTF16View inPath);
    /// Drive and directory part.
    static UTF16String GetFullDirectoryPart(UTF16View inPath);
    /// "c.wav" of "/a/b/c.wav"; "" of "/a/b/".
    static UTF16String GetFullFilePart(UTF16View inPath);
    /// Without "." parts, doubled separators and, where they follow a name, ".." parts (which go with it);
    /// "/.." is "/". A separator at the end stays. What would leave nothing is ".". Purely textual: symbolic
    /// links are not looked at.
    static UTF16String ToNormalizedPath(UTF16View inPath);
    /// ".wav" of "/a/b.c/d.wav", "" when the file part has none (".hidden" has none).
    static UTF16String GetExtension(UTF16View inPath);
};

} // namespace ZOL
