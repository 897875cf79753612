#include "AvfilterSupport.h"

#include <kiocore/debug/Trace.h>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace trhost::effects::avfilter {

void KeepMessage(ScFilterMessages& ioMessages, std::string inLine)
{
    if (ioMessages.mComplaint.empty()) {
        ioMessages.mComplaint = std::move(inLine);
    }
}

namespace {

// libavfilter runs on the calling thread alone (see FilterGraph), so its messages arrive there too.
thread_local ScFilterMessages* sMessages = nullptr;

/// Without the line feed, and without the "[filter @ 0x...] " that differs from run to run.
std::string WithoutDecoration(std::string inLine)
{
    while (!inLine.empty() && (inLine.back() == '\n' || inLine.back() == '\r')) {
        inLine.pop_back();
    }
    for (std::size_t end = 0; inLine.starts_with('[') && (end = inLine.find("] ")) != std::string::npos;) {
        inLine.erase(0, end + 2);
    }
    return inLine;
}

void TakeMessage(void* inObject, int inLevel, const char* inFormat, va_list inArguments)
{
    // Called for every remark of the inner loops too; those are dropped before anything is formatted.
    if (inLevel > AV_LOG_INFO) {
        return;
    }
    const int level = inLevel <= AV_LOG_ERROR ? 1 : inLevel <= AV_LOG_WARNING ? 3 : 5;
    // There is one function for all of the libraries' users in the process: what is not ours, the media
    // module's decoders say.
    const char* const channel = sMessages ? "avfilter" : "FFmpeg";
    const bool isKept = inLevel <= AV_LOG_PANIC || (sMessages && inLevel <= AV_LOG_ERROR);
    if (!isKept && !kiocore::debug::TraceEnabled(channel, level)) {
        return;
    }
    char line[1024];
    int startsLine = 1;
    av_log_format_line(inObject, inLevel, inFormat, inArguments, line, sizeof line, &startsLine);
    if (inLevel <= AV_LOG_PANIC) {
        std::fputs(line, stderr); // an assertion: the process ends here
    }
    try {
        kiocore::debug::Trace(level, channel, line);
        if (isKept && sMessages) {
            KeepMessage(*sMessages, WithoutDecoration(line));
        }
    } catch (...) {
        // The caller is C code; a message is not worth more than the call that it is about.
    }
}

} // namespace

std::string ErrorText(int inError)
{
    char text[AV_ERROR_MAX_STRING_SIZE];
    av_strerror(inError, text, sizeof text);
    return text;
}

ScFilterMessages::ScFilterMessages()
{
    // Each time, as others set theirs; it is no more than storing a pointer.
    av_log_set_callback(&TakeMessage);
    sMessages = this;
}

ScFilterMessages::~ScFilterMessages()
{
    sMessages = nullptr;
}

std::string ScFilterMessages::Explain(int inError) const
{
    const std::string text = ErrorText(inError);
    return mComplaint.empty() ? text : text + ": " + mComplaint;
}

} // namespace trhost::effects::avfilter
