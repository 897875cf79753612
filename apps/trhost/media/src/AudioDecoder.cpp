#include "AudioDecoder.h"

#include "../../support/KeptText.h"

#include <utility>

namespace trhost::media {

AudioDecoder::AudioDecoder(const AVStream& inStream) : mFrame(Allocated(av_frame_alloc()))
{
    const AVCodecID id = inStream.codecpar->codec_id;
    const AVCodec* codec = avcodec_find_decoder(id);
    if (!codec) {
        mFailure = KeptText("$$$/Halcyon/TrHost/Media/CodecHasNoDecoder=codec \"@0\" has no decoder",
                            {avcodec_get_name(id)});
        return;
    }
    mDecoder.reset(Allocated(avcodec_alloc_context3(codec)));
    mDecoder->pkt_timebase = inStream.time_base; // lets the decoder move timestamps when it trims samples
    // Where a decoder can work ahead on several frames (FLAC, ALAC, WavPack) it may use every processor.
    mDecoder->thread_count = codec->capabilities & AV_CODEC_CAP_FRAME_THREADS ? 0 : 1;
    int result = avcodec_parameters_to_context(mDecoder.get(), inStream.codecpar);
    if (result >= 0) {
        result = avcodec_open2(mDecoder.get(), codec, nullptr);
    }
    if (result < 0) {
        mFailure = KeptText("$$$/Halcyon/TrHost/Media/DecoderRefuses=the decoder for \"@0\" refuses the "
                            "stream (@1)#{@1: the reason}",
                            {codec->name, ErrorText(result)});
        mDecoder.reset();
    }
}

void AudioDecoder::NoteDamage()
{
    ++mDamagedPackets;
    mLoss = true;
}

void AudioDecoder::Send(const AVPacket* inPacket)
{
    if (!mDecoder) {
        return;
    }
    mFailuresOfPacket = 0;
    const int sent = avcodec_send_packet(mDecoder.get(), inPacket);
    if (sent == AVERROR(ENOMEM)) {
        throw std::bad_alloc();
    }
    if (inPacket && (sent < 0 || inPacket->flags & AV_PKT_FLAG_CORRUPT)) {
        NoteDamage();
    }
}

const AVFrame* AudioDecoder::Receive()
{
    while (mDecoder) {
        const int received = avcodec_receive_frame(mDecoder.get(), mFrame.get());
        if (received >= 0) {
            return mFrame.get();
        }
        if (received == AVERROR(ENOMEM)) {
            throw std::bad_alloc();
        }
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) {
            break;
        }
        NoteDamage();
        // The decoder has dropped what it could not use; a second error in a row would be the same one.
        if (++mFailuresOfPacket > 1) {
            break;
        }
    }
    return nullptr;
}

bool AudioDecoder::TakeLoss()
{
    return std::exchange(mLoss, false);
}

void AudioDecoder::Flush()
{
    if (mDecoder) {
        avcodec_flush_buffers(mDecoder.get());
    }
    mLoss = false;
}

} // namespace trhost::media
