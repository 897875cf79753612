#include "MediaArgument.h"

#include "../support/Failure.h"
#include "../support/JsonLine.h"

#include <kiocore/filesupport/NativePath.h>

namespace trhost {

MediaArgument FindMedia(const std::string& inNativePath)
{
    MediaArgument media;
    media.identity = IdentifyDocument(kiocore::filesupport::FromNative(inNativePath));
    auto record = FindRecord(media.identity.documentID);
    if (!record) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/NoRecordOf=no cache files are recorded for @0 (document @1)",
                           {media.identity.path, media.identity.documentID.AsString()}));
    }
    media.record = std::move(*record);
    return media;
}

JsonLine DescribeItem(const RecordedItem& inItem)
{
    return JsonLine()
        .Add("stream", inItem.streamID)
        .Add("key", inItem.key)
        .Add("path", inItem.path)
        .Add("state", NameOf(inItem.state))
        .Add("bytes", inItem.sizeBytes)
        .Add("canBeCopied", inItem.canBeCopied);
}

} // namespace trhost
