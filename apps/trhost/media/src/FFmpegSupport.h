#pragma once

#include "../../support/FFmpegHandles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <string>

namespace trhost::media {

using PacketPtr = std::unique_ptr<AVPacket, FreeThroughPointer<av_packet_free>>;
using FramePtr = std::unique_ptr<AVFrame, FreeThroughPointer<av_frame_free>>;
using DecoderPtr = std::unique_ptr<AVCodecContext, FreeThroughPointer<avcodec_free_context>>;
using FormatPtr = std::unique_ptr<AVFormatContext, FreeThroughPointer<avformat_close_input>>;
using ResamplerPtr = std::unique_ptr<SwrContext, FreeThroughPointer<swr_free>>;

std::string ErrorText(int inError);

/// Any layout that has this many channels. With the same one on both sides the channels pass unmixed,
/// also when nobody knows which speaker each is for.
AVChannelLayout PlainLayout(int inChannels);

/// Sends what the media libraries have to say to the trace channel "FFmpeg" instead of standard error.
void RouteMessagesToTrace();

} // namespace trhost::media
