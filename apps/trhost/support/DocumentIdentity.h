#pragma once

#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>

namespace trhost {

/// What tells one media document from another, and one state of it from the next.
struct DocumentIdentity {
    kiocore::UTF16String path;    ///< canonical: absolute, without symbolic links
    kiocore::Guid documentID;     ///< from the canonical path
    kiocore::Guid contentState;   ///< from size, modification time and sampled content; zero when unreadable
    kiocore::Guid sampledContent; ///< from size and sampled content only: equal for a copy of the file
    std::uint64_t sizeBytes = 0;
    bool isReadable = false; ///< a regular file that could be read
    int errorNumber = 0;     ///< the system's reason when not
};

/// Identifies the media at a path. Reads at most 192 KiB, however large the file: its beginning, its middle
/// and its end. For media that is missing or cannot be read the document ID is that of the place where it
/// would be, so that its record can still be found.
///
/// Threading: any thread.
DocumentIdentity IdentifyDocument(const kiocore::UTF16String& inPath);

/// The same in the form in which the library's cleaning asks.
/// @return 0, or -1 (out-parameters untouched) for media that is missing or cannot be read.
int ResolveDocument(const kiocore::UTF16String& inPath, bool inFlag, kiocore::Guid& outDocumentID,
                    kiocore::Guid& outContentState);

} // namespace trhost
