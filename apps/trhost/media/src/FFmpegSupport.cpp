#include "FFmpegSupport.h"

#include <kiocore/debug/Trace.h>

#include <cstdarg>
#include <cstdio>

namespace trhost::media {
namespace {

void TraceMessage(void* inObject, int inLevel, const char* inFormat, va_list inArguments)
{
    // Called for every remark of the inner loops too; those are dropped before anything is formatted.
    if (inLevel > AV_LOG_INFO) {
        return;
    }
    const int level = inLevel <= AV_LOG_ERROR ? 1 : inLevel <= AV_LOG_WARNING ? 3 : 5;
    if (!kiocore::debug::TraceEnabled("FFmpeg", level)) {
        return;
    }
    char line[1024];
    int startsLine = 1;
    av_log_format_line(inObject, inLevel, inFormat, inArguments, line, sizeof line, &startsLine);
    kiocore::debug::Trace(level, "FFmpeg", line);
}

} // namespace

std::string ErrorText(int inError)
{
    if (inError == AVERROR_INVALIDDATA) {
        return "$$$/Halcyon/TrHost/Media/InvalidData=Invalid data found when processing input";
    }
    char text[AV_ERROR_MAX_STRING_SIZE];
    av_strerror(inError, text, sizeof text);
    return text;
}

AVChannelLayout PlainLayout(int inChannels)
{
    AVChannelLayout layout{};
    av_channel_layout_from_mask(&layout,
                                inChannels >= 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << inChannels) - 1);
    return layout;
}

void RouteMessagesToTrace()
{
    av_log_set_callback(&TraceMessage);
}

} // namespace trhost::media
