#pragma once

#include "FFmpegSupport.h"

#include <cstdint>
#include <string>

namespace trhost::media {

/// Decodes the packets of one audio stream; tolerates damage and counts it.
///
/// Threading: one thread at a time.
class AudioDecoder {
public:
    explicit AudioDecoder(const AVStream& inStream);

    /// Why this stream cannot be decoded at all; empty when it can.
    const std::string& Failure() const { return mFailure; }

    /// The next packet, or null behind the last one.
    void Send(const AVPacket* inPacket);
    /// The next frame of what was sent; borrowed until the next call. Null when more must be sent.
    const AVFrame* Receive();
    /// Whether something could not be decoded since this was last asked.
    bool TakeLoss();
    std::int64_t DamagedPackets() const { return mDamagedPackets; }
    /// Forgets what was sent, before a jump in the file.
    void Flush();

private:
    void NoteDamage();

    std::string mFailure;
    DecoderPtr mDecoder;
    FramePtr mFrame;
    std::int64_t mDamagedPackets = 0;
    int mFailuresOfPacket = 0;
    bool mLoss = false;
};

} // namespace trhost::media
