#include "MediaSummary.h"

#include "JsonLine.h"

#include <kiocore/filesupport/NativePath.h>

#include <boost/json/src.hpp> // compiled into this file only

#include <fstream>

namespace trhost {

namespace {

namespace json = boost::json;

constexpr int kSummaryVersion = 1;
constexpr std::size_t kMaxSummaryBytes = 4u << 20;

std::string TextAt(const json::object& inObject, const char* inName)
{
    const json::value* value = inObject.if_contains(inName);
    return value && value->is_string() ? std::string(value->get_string().c_str(), value->get_string().size())
                                       : std::string();
}

double NumberAt(const json::object& inObject, const char* inName, double inDefault)
{
    const json::value* value = inObject.if_contains(inName);
    boost::system::error_code error;
    const double number = value && value->is_number() ? value->to_number<double>(error) : inDefault;
    return error ? inDefault : number;
}

int IntegerAt(const json::object& inObject, const char* inName)
{
    const json::value* value = inObject.if_contains(inName);
    boost::system::error_code error;
    const int number = value && value->is_number() ? value->to_number<int>(error) : 0;
    return error ? 0 : number;
}

MediaSummary::Stream StreamFrom(const json::object& inObject)
{
    MediaSummary::Stream stream;
    stream.index = IntegerAt(inObject, "index");
    stream.kind = TextAt(inObject, "kind");
    stream.codec = TextAt(inObject, "codec");
    stream.sampleRate = IntegerAt(inObject, "sampleRate");
    stream.channels = IntegerAt(inObject, "channels");
    stream.width = IntegerAt(inObject, "width");
    stream.height = IntegerAt(inObject, "height");
    stream.framesPerSecond = NumberAt(inObject, "framesPerSecond", 0);
    stream.durationSeconds = NumberAt(inObject, "durationSeconds", -1);
    stream.language = TextAt(inObject, "language");
    return stream;
}

} // namespace

std::string MediaSummary::GetBytes() const
{
    std::vector<JsonLine> streamObjects;
    for (const Stream& stream : streams) {
        JsonLine object;
        object.Add("index", stream.index).Add("kind", stream.kind).Add("codec", stream.codec);
        if (stream.kind == "audio") {
            object.Add("sampleRate", stream.sampleRate).Add("channels", stream.channels);
        } else {
            object.Add("width", stream.width)
                .Add("height", stream.height)
                .Add("framesPerSecond", stream.framesPerSecond);
        }
        object.Add("durationSeconds", stream.durationSeconds).Add("language", stream.language);
        streamObjects.push_back(std::move(object));
    }
    std::vector<JsonLine> itemObjects;
    for (const Item& item : items) {
        JsonLine object;
        object.Add("stream", item.streamID).Add("key", item.key);
        if (!item.reason.empty()) {
            object.Add("reason", item.reason);
        }
        itemObjects.push_back(std::move(object));
    }
    JsonLine summary;
    summary.Add("mediaSummary", kSummaryVersion)
        .Add("container", container)
        .Add("durationSeconds", durationSeconds)
        .Add("reason", reason)
        .Add("streams", streamObjects)
        .Add("items", itemObjects);
    return summary.GetText() + "\n";
}

std::optional<MediaSummary> MediaSummary::FromBytes(const std::string& inBytes)
{
    boost::system::error_code error;
    const json::value parsed = json::parse(inBytes, error);
    if (error || !parsed.is_object()) {
        return std::nullopt;
    }
    const json::object& object = parsed.get_object();
    const json::value* streamList = object.if_contains("streams");
    const json::value* itemList = object.if_contains("items");
    if (IntegerAt(object, "mediaSummary") != kSummaryVersion || !streamList || !streamList->is_array() ||
        !itemList || !itemList->is_array()) {
        return std::nullopt;
    }
    MediaSummary summary;
    summary.container = TextAt(object, "container");
    summary.durationSeconds = NumberAt(object, "durationSeconds", -1);
    summary.reason = TextAt(object, "reason");
    for (const json::value& value : streamList->get_array()) {
        if (!value.is_object()) {
            return std::nullopt;
        }
        summary.streams.push_back(StreamFrom(value.get_object()));
    }
    for (const json::value& value : itemList->get_array()) {
        if (!value.is_object()) {
            return std::nullopt;
        }
        const json::object& item = value.get_object();
        summary.items.push_back({kiocore::utility::ToUTF16(TextAt(item, "stream")),
                                 kiocore::utility::ToUTF16(TextAt(item, "key")), TextAt(item, "reason")});
    }
    return summary;
}

std::optional<MediaSummary> MediaSummary::Load(const kiocore::UTF16String& inPath)
{
    std::ifstream file(kiocore::filesupport::ToNative(inPath), std::ios::binary);
    std::string bytes;
    char block[16384];
    while (file.read(block, sizeof(block)), file.gcount() > 0) {
        bytes.append(block, std::size_t(file.gcount()));
        if (bytes.size() > kMaxSummaryBytes) {
            return std::nullopt;
        }
    }
    return file.bad() ? std::nullopt : FromBytes(bytes);
}

} // namespace trhost
