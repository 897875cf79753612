#include "support/TraceRecorder.h"

#include <kiocore/debug/Trace.h>

namespace support {

TraceRecorder::TraceRecorder(std::string_view inChannel, int inLevel) : mChannel(inChannel)
{
    kiocore::debug::SetTraceSink([this](std::string_view channel, int, std::string_view text) {
        if (channel == mChannel) {
            std::lock_guard lock(mLock);
            mLines.emplace_back(text);
        }
    });
    kiocore::debug::SetTraceLevel(mChannel, inLevel);
}

TraceRecorder::~TraceRecorder()
{
    kiocore::debug::SetTraceLevel(mChannel, -1);
    kiocore::debug::SetTraceSink({});
}

std::vector<std::string> TraceRecorder::Lines() const
{
    std::lock_guard lock(mLock);
    return mLines;
}

std::vector<std::string> TraceRecorder::Order(const std::vector<std::string>& inBeginnings) const
{
    std::vector<std::string> order;
    for (const std::string& line : Lines()) {
        for (const std::string& beginning : inBeginnings) {
            if (line.starts_with(beginning)) {
                order.push_back(beginning);
                break;
            }
        }
    }
    return order;
}

int TraceRecorder::CountContaining(std::string_view inText) const
{
    int count = 0;
    for (const std::string& line : Lines()) {
        count += line.find(inText) != std::string::npos;
    }
    return count;
}

void TraceRecorder::Clear()
{
    std::lock_guard lock(mLock);
    mLines.clear();
}

} // namespace support
