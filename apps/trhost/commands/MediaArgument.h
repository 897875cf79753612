#pragma once

#include "../support/DocumentIdentity.h"
#include "../support/Records.h"

#include <string>

namespace trhost {

/// The media that a command was asked about, and its record.
struct MediaArgument {
    DocumentIdentity identity;
    Record record;

    /// What the database is to compare with: zero, which no media has, when the media cannot be read.
    const Guid& ContentState() const { return identity.contentState; }
    /// Whether the record was made for the media as it is now.
    bool IsUpToDate() const { return identity.isReadable && identity.contentState == record.contentState; }
};

/// Looks media and record up.
/// @throws Failure (kExit_Negative) when there is no record of it. Media that is gone is looked up all the
///     same.
MediaArgument FindMedia(const std::string& inNativePath);

/// An item in the form of the commands' JSON.
class JsonLine;
JsonLine DescribeItem(const RecordedItem& inItem);

} // namespace trhost
