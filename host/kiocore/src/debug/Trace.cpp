#include <kiocore/debug/Trace.h>

#include "platform/StandardError.h"

#include <charconv>
#include <map>
#include <mutex>

namespace kiocore::debug {
namespace {

constexpr std::string_view kHostChannel = "Host";

struct Channels {
    std::mutex lock; // guards levels
    std::map<std::string, int, std::less<>> levels;
    std::mutex sinkLock; // guards sink, and keeps lines whole
    TraceSink sink;
};

// Leaked on purpose: objects that are destroyed at exit may still trace.
Channels& TheChannels()
{
    static Channels* channels = new Channels;
    return *channels;
}

std::atomic<std::uint32_t> sChangeCount{1};

void WriteToStandardError(std::string_view inChannel, std::string_view inText)
{
    std::string line;
    line.reserve(inChannel.size() + inText.size() + 4);
    line.append("[").append(inChannel).append("] ").append(inText);
    if (line.ends_with('\n')) {
        line.pop_back();
    }
    platform::WriteLineToStandardError(std::move(line));
}

} // namespace

std::atomic<bool> gHostTraceOn{false};

void SetTraceLevel(std::string_view inChannel, int inLevel)
{
    Channels& channels = TheChannels();
    {
        std::lock_guard lock(channels.lock);
        if (inLevel < 0) {
            if (auto found = channels.levels.find(inChannel); found != channels.levels.end()) {
                channels.levels.erase(found);
            }
        } else {
            channels.levels.insert_or_assign(std::string(inChannel), inLevel);
        }
        if (inChannel == kHostChannel) {
            gHostTraceOn.store(inLevel >= 1, std::memory_order_relaxed);
        }
    }
    if (sChangeCount.fetch_add(1, std::memory_order_relaxed) + 1 == 0) {
        sChangeCount.fetch_add(1, std::memory_order_relaxed);
    }
}

bool TraceEnabled(std::string_view inChannel, int inLevel)
{
    Channels& channels = TheChannels();
    std::lock_guard lock(channels.lock);
    const auto found = channels.levels.find(inChannel);
    return found != channels.levels.end() && inLevel <= found->second;
}

std::uint32_t TraceChangeCount()
{
    return sChangeCount.load(std::memory_order_relaxed);
}

void Trace(int inLevel, std::string_view inChannel, std::string_view inTextUTF8)
{
    if (!TraceEnabled(inChannel, inLevel)) {
        return;
    }
    Channels& channels = TheChannels();
    std::lock_guard lock(channels.sinkLock);
    if (channels.sink) {
        channels.sink(inChannel, inLevel, inTextUTF8);
    } else {
        WriteToStandardError(inChannel, inTextUTF8);
    }
}

void Trace(int inLevel, std::string_view inChannel, utility::UTF16View inText)
{
    if (TraceEnabled(inChannel, inLevel)) {
        Trace(inLevel, inChannel, utility::ToUTF8(inText));
    }
}

void SetTraceSink(TraceSink inSink)
{
    Channels& channels = TheChannels();
    std::lock_guard lock(channels.sinkLock);
    channels.sink = std::move(inSink);
}

TraceArgument::TraceArgument(utility::UTF16View inText)
    : TraceArgument(std::string_view(utility::ToUTF8(inText)))
{}

TraceArgument::TraceArgument(std::string_view inText)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    mText.reserve(inText.size() + 2);
    mText += '"';
    for (char unit : inText) {
        const auto byte = static_cast<unsigned char>(unit);
        if (byte == '"' || byte == '\\') {
            mText += '\\';
            mText += unit;
        } else if (byte < 0x20 || byte == 0x7F) {
            mText += "\\x";
            mText += kDigits[byte >> 4];
            mText += kDigits[byte & 15];
        } else {
            mText += unit;
        }
    }
    mText += '"';
}

TraceArgument::TraceArgument(double inValue)
{
    char digits[32];
    mText.assign(digits, std::to_chars(digits, digits + sizeof(digits), inValue).ptr);
}

void TraceHostCall(const char* inName, std::initializer_list<TraceArgument> inArguments)
{
    std::string line = inName;
    line += '(';
    const char* separator = "";
    for (const TraceArgument& argument : inArguments) {
        line.append(separator).append(argument.Text());
        separator = ", ";
    }
    line += ')';
    Trace(1, kHostChannel, line);
}

} // namespace kiocore::debug
