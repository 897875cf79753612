#pragma once

#include "../../../support/FFmpegHandles.h"

#include <cstdint> // before the libraries, whose headers look for UINT64_C

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include <memory>
#include <string>

namespace trhost::effects::avfilter {

using FramePtr = std::unique_ptr<AVFrame, FreeThroughPointer<av_frame_free>>;
using GraphPtr = std::unique_ptr<AVFilterGraph, FreeThroughPointer<avfilter_graph_free>>;

std::string ErrorText(int inError);

/// While it lives, what libavfilter says on this thread goes to trace channel "avfilter" instead of standard
/// error (except an assertion that ends the process), and its first complaint is kept: it says far more than
/// an error number does, and what comes after it is only that others fail too. They do not nest.
///
/// Threading: made and destroyed on the thread that calls libavfilter.
class ScFilterMessages {
public:
    ScFilterMessages();
    ~ScFilterMessages();
    ScFilterMessages(const ScFilterMessages&) = delete;
    ScFilterMessages& operator=(const ScFilterMessages&) = delete;

    /// What the number means, with the complaint: "Invalid argument: Invalid too big or non positive size".
    std::string Explain(int inError) const;

private:
    friend void KeepMessage(ScFilterMessages& ioMessages, std::string inLine);
    std::string mComplaint;
};

} // namespace trhost::effects::avfilter
