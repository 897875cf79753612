// The commands that change the record of one document.
#include "Commands.h"
#include "MediaArgument.h"

#include "../support/Failure.h"
#include "../support/HostSession.h"

#include <TR/MediaAcceleratorDatabase.h>
#include <ZOL/PathUtils.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/FileUtils.h>

#include <algorithm>
#include <cstring>

namespace trhost {

namespace {

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

} // namespace

int CacheInvalidate(Context& ioContext, const InvalidateOptions& inOptions)
{
    const MediaArgument media = FindMedia(inOptions.media);
    const UTF16String stream = DecimalText(inOptions.stream);
    const bool known = std::any_of(media.record.items.begin(), media.record.items.end(),
                                   [&](const RecordedItem& inItem) { return inItem.streamID == stream; });
    if (!known) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/NoSuchStream=the record of @0 has no stream @1",
                           {media.identity.path, stream}));
    }
    // The state recorded, not the present one: a record of an earlier state stays one of that state.
    TR::MediaAcceleratorDatabase().Invalidate(media.identity.documentID, media.record.contentState,
                                              inOptions.stream);
    ioContext.output.Note(
        Text("$$$/Halcyon/TrHost/Invalidated=invalidated @0; ingest makes its cache files again",
             {media.identity.path}),
        JsonLine().Add("media", media.identity.path).Add("stream", stream).Add("invalidated", true));
    return kExit_Done;
}

int CacheCopy(Context& ioContext, const CopyOptions& inOptions)
{
    const MediaArgument media = FindMedia(inOptions.media);
    if (!media.IsUpToDate()) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/CopyStale=the cache files of @0 were made for another "
                           "state of it; ingest it first",
                           {media.identity.path}));
    }
    const UTF16String folder = IdentifyDocument(kiocore::filesupport::FromNative(inOptions.folder)).path;
    const DocumentIdentity copy = IdentifyDocument(kiocore::utility::FileUtils::AddTrailingSlash(folder) +
                                                   ZOL::PathUtils::GetFullFilePart(media.identity.path));
    if (!copy.isReadable) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NoCopy=@0: @1; expected the copied media there",
                                         {copy.path, kiocore::SystemErrorText(copy.errorNumber)}));
    }
    if (copy.documentID == media.identity.documentID) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/CopyItself=@0 is the folder of the media itself", {folder}));
    }
    if (copy.sampledContent != media.identity.sampledContent) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/CopyDiffers=@0 is no copy of @1: their contents differ",
                           {copy.path, media.identity.path}));
    }
    MakeFolder(PreferredFolder(&BE::IPreferences::GetMediaCacheDatabaseFolder));
    TR::MediaAcceleratorDatabase().Copy(media.identity.documentID, media.identity.contentState,
                                        media.identity.path, folder);
    const auto record = FindRecord(copy.documentID);
    std::size_t copied = 0;
    std::size_t expected = 0;
    for (const RecordedItem& item : media.record.items) {
        expected += item.canBeCopied && item.state == ItemState::kPresent;
    }
    if (record && record->contentState == copy.contentState) {
        for (const RecordedItem& item : record->items) {
            if (item.state == ItemState::kPresent) {
                ++copied;
                ioContext.output.Note(item.path, DescribeItem(item));
            }
        }
    }
    if (copied < expected) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/CopyIncomplete=@0 of @1 cache files could be copied to @2",
                           {DecimalText(copied), DecimalText(expected), folder}));
    }
    return kExit_Done;
}

} // namespace trhost
