// The commands that answer questions and change nothing (but access times, as every look-up does).
#include "Commands.h"
#include "MediaArgument.h"

#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Quantities.h"
#include "../support/Records.h"

#include <TR/MediaAcceleratorDatabase.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <map>
#include <optional>

namespace trhost {

namespace {

UTF16String AnyOr(const std::optional<std::string>& inWanted)
{
    return inWanted ? kiocore::utility::ToUTF16(*inWanted)
                    : Text("$$$/Halcyon/TrHost/AnyItem=any#{any stream, or any key}");
}

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

UTF16String SizeText(std::uint64_t inBytes)
{
    return ToUTF16(FormatSize(inBytes));
}

std::uint64_t SumOfSizes(const Record& inRecord)
{
    std::uint64_t bytes = 0;
    for (const RecordedItem& item : inRecord.items) {
        bytes += item.sizeBytes;
    }
    return bytes;
}

} // namespace

int CacheFind(Context& ioContext, const FindOptions& inOptions)
{
    const MediaArgument media = FindMedia(inOptions.media);
    TR::MediaAcceleratorDatabase database;
    std::size_t asked = 0;
    std::size_t found = 0;
    for (const RecordedItem& item : media.record.items) {
        if ((inOptions.stream && item.streamID != ToUTF16(*inOptions.stream)) ||
            (inOptions.key && item.key != ToUTF16(*inOptions.key))) {
            continue;
        }
        ++asked;
        UTF16String path;
        const Guid& documentID = media.identity.documentID;
        const int result =
            inOptions.upToDate
                ? database.FindUpToDate(documentID, media.ContentState(), item.streamID, item.key, path)
                : database.Find(documentID, media.ContentState(), item.streamID, item.key, path);
        found += result == 0;
        JsonLine object;
        object.Add("stream", item.streamID).Add("key", item.key).Add("found", result == 0);
        if (result == 0) {
            object.Add("path", path);
            ioContext.output.Result(path, object);
            continue;
        }
        object.Add("state",
                   inOptions.upToDate && item.state == ItemState::kPresent ? "stale" : NameOf(item.state));
        if (ioContext.output.IsJson()) {
            ioContext.output.Result({}, object);
        }
        ioContext.output.Error(
            item.state == ItemState::kPresent
                ? Text("$$$/Halcyon/TrHost/ItemStale=stream @0, @1: @2 was made for an earlier state of the "
                       "media",
                       {item.streamID, item.key, item.path})
                : Text("$$$/Halcyon/TrHost/ItemGone=stream @0, @1: @2 is recorded, but is @3",
                       {item.streamID, item.key, item.path, TextOf(item.state)}));
    }
    if (asked == 0) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/NoSuchItem=the record of @0 has no such cache file "
                           "(stream @1, key @2)",
                           {media.identity.path, AnyOr(inOptions.stream), AnyOr(inOptions.key)}));
    }
    return found == asked ? kExit_Done : kExit_Negative;
}

int CacheShow(Context& ioContext, const std::string& inMedia)
{
    const MediaArgument media = FindMedia(inMedia);
    const Record& record = media.record;
    Output& output = ioContext.output;
    if (output.IsJson()) {
        std::vector<JsonLine> items;
        for (const RecordedItem& item : record.items) {
            items.push_back(DescribeItem(item));
        }
        output.Result({}, JsonLine()
                              .Add("media", record.originalPath)
                              .Add("document", record.name.documentID.AsUTF8())
                              .Add("contentState", record.contentState.AsUTF8())
                              .Add("upToDate", media.IsUpToDate())
                              .Add("mediaReadable", media.identity.isReadable)
                              .Add("record", record.path)
                              .Add("items", items));
        return kExit_Done;
    }
    output.Line(Text("$$$/Halcyon/TrHost/ShowMedia=media          @0", {record.originalPath}));
    output.Line(
        Text("$$$/Halcyon/TrHost/ShowDocument=document       @0", {record.name.documentID.AsString()}));
    output.Line(Text("$$$/Halcyon/TrHost/ShowState=content state  @0 (@1)",
                     {record.contentState.AsString(),
                      media.IsUpToDate() ? Text("$$$/Halcyon/TrHost/StateSame=the media's present one")
                      : media.identity.isReadable
                          ? Text("$$$/Halcyon/TrHost/StateOther=the media has changed since")
                          : Text("$$$/Halcyon/TrHost/StateUnknown=the media cannot be read now")}));
    output.Line(Text("$$$/Halcyon/TrHost/ShowRecord=record         @0", {record.path}));
    UTF16String lastStream;
    bool first = true;
    for (const RecordedItem& item : record.items) {
        if (first || item.streamID != lastStream) {
            output.Line(Text("$$$/Halcyon/TrHost/ShowStream=stream @0", {item.streamID}));
            lastStream = item.streamID;
            first = false;
        }
        output.Line(
            Text("$$$/Halcyon/TrHost/ShowItem=  @0  @1  (@2)",
                 {item.key, item.path,
                  item.state == ItemState::kPresent ? SizeText(item.sizeBytes) : TextOf(item.state)}));
    }
    return kExit_Done;
}

int CacheList(Context& ioContext)
{
    VisitRecords([&](Record& inRecord) {
        ioContext.output.Result(Text("$$$/Halcyon/TrHost/ListLine=@0  @1  (@2 cache files, @3)",
                                     {inRecord.name.documentID.AsString(), inRecord.originalPath,
                                      DecimalText(inRecord.items.size()), SizeText(SumOfSizes(inRecord))}),
                                JsonLine()
                                    .Add("document", inRecord.name.documentID.AsUTF8())
                                    .Add("media", inRecord.originalPath)
                                    .Add("contentState", inRecord.contentState.AsUTF8())
                                    .Add("record", inRecord.path)
                                    .Add("items", inRecord.items.size())
                                    .Add("bytes", SumOfSizes(inRecord)));
    });
    return kExit_Done;
}

int CacheFolder(Context& ioContext, const std::string& inMedia)
{
    const DocumentIdentity identity = IdentifyDocument(kiocore::filesupport::FromNative(inMedia));
    UTF16String folder;
    if (TR::GetMediaAcceleratorDirectoryPath(identity.path, folder) < 0) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/NoCacheFolder=the preferences name no folder for cache "
                           "files; see trhost prefs show"));
    }
    ioContext.output.Result(folder, JsonLine().Add("media", identity.path).Add("folder", folder));
    return kExit_Done;
}

int CacheDump(Context& ioContext, const std::string& inRecordFile)
{
    // Lines of a killed writer are not wanted: the whole record is read before the first line comes out.
    struct Value {
        std::string type;
        std::string key;
        UTF16String text;
    };
    std::vector<Value> values;
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(inRecordFile, error);
    VisitStoredValues(kiocore::filesupport::FromNative(error ? inRecordFile : absolute.native()),
                      [&](std::string_view inType, std::string_view inKey, const UTF16String& inText) {
                          values.push_back({std::string(inType), std::string(inKey), inText});
                      });
    for (const Value& value : values) {
        ioContext.output.Result(
            ToUTF16(value.key) + u" (" + ToUTF16(value.type) + u") = " + value.text,
            JsonLine().Add("key", value.key).Add("type", value.type).Add("value", value.text));
    }
    return kExit_Done;
}

int CacheStats(Context& ioContext)
{
    struct Sum {
        std::size_t files = 0;
        std::uint64_t bytes = 0;
    };
    std::map<UTF16String, Sum> byKey;
    Sum all;
    std::size_t records = 0;
    std::size_t gone = 0;
    std::size_t withoutItems = 0;
    VisitRecords([&](Record& inRecord) {
        ++records;
        withoutItems += inRecord.items.empty();
        for (const RecordedItem& item : inRecord.items) {
            if (item.state != ItemState::kPresent) {
                ++gone;
                continue;
            }
            Sum& sum = byKey[item.key];
            ++sum.files;
            sum.bytes += item.sizeBytes;
            ++all.files;
            all.bytes += item.sizeBytes;
        }
    });
    Output& output = ioContext.output;
    if (output.IsJson()) {
        std::vector<JsonLine> keys;
        for (const auto& [key, sum] : byKey) {
            keys.push_back(JsonLine().Add("key", key).Add("files", sum.files).Add("bytes", sum.bytes));
        }
        output.Result({}, JsonLine()
                              .Add("records", records)
                              .Add("recordsWithoutItems", withoutItems)
                              .Add("files", all.files)
                              .Add("bytes", all.bytes)
                              .Add("missingOrChanged", gone)
                              .Add("keys", keys));
        return kExit_Done;
    }
    output.Line(Text("$$$/Halcyon/TrHost/StatsRecords=@0 records (@1 without cache files)",
                     {DecimalText(records), DecimalText(withoutItems)}));
    output.Line(Text("$$$/Halcyon/TrHost/StatsFiles=@0 cache files, @1 (@2 more are missing or changed)",
                     {DecimalText(all.files), SizeText(all.bytes), DecimalText(gone)}));
    for (const auto& [key, sum] : byKey) {
        output.Line(Text("$$$/Halcyon/TrHost/StatsKey=  @0: @1 files, @2",
                         {key, DecimalText(sum.files), SizeText(sum.bytes)}));
    }
    return kExit_Done;
}

} // namespace trhost
