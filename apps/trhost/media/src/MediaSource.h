#pragma once

#include "../MediaModule.h"
#include "FFmpegSupport.h"
#include "platform/NativeFile.h"

#include <cstdint>
#include <string>

namespace trhost::media {

/// The opened container: hands out packets, stops when cancelled, tells a disk error from the end.
/// Reads through our own file, so a name that looks like a URL or a pattern is just a name, and nothing
/// that the file mentions is opened.
///
/// Threading: one thread at a time.
class MediaSource {
public:
    /// @throws as IMediaModule::Open.
    MediaSource(const std::string& inNativePath, const ICancel& inCancel);
    ~MediaSource();
    MediaSource(const MediaSource&) = delete;
    MediaSource& operator=(const MediaSource&) = delete;

    const std::string& Path() const { return mPath; }
    AVFormatContext& Format() { return *mFormat; }
    const AVFormatContext& Format() const { return *mFormat; }
    /// When the file starts, in microseconds of its own clock: its earliest stream's start. Containers that
    /// number from anywhere (a cut-out of a broadcast) start there; those whose timestamps begin below 0
    /// only because a decoder must be warmed up start at 0.
    std::int64_t StartMicroseconds() const;
    /// How far through the file's bytes a packet lies, 0 to 1.
    double Progress(const AVPacket& inPacket) const;

    /// @return false at the end.
    /// @param ioDamage  grows by what had to be passed over.
    /// @throws kio_exception (kError_Cancelled), file_exception.
    bool ReadPacket(AVPacket& outPacket, const ICancel& inCancel, std::int64_t& ioDamage);

    /// Goes to the last packet of a stream from which decoding can start, at or before a time of its clock.
    /// @return false when the container cannot; the next packet may then be any.
    /// @throws kio_exception (kError_Cancelled), file_exception.
    bool Seek(int inStreamIndex, std::int64_t inTimestamp, const ICancel& inCancel);

    [[noreturn]] void ThrowCancelled() const;

private:
    static int ReadBytes(void* inThis, std::uint8_t* outBytes, int inSize);
    static std::int64_t SeekBytes(void* inThis, std::int64_t inOffset, int inWhence);
    static int IsInterrupted(void* inThis);
    void CheckReading() const;
    void Open();
    void CheckContainer() const;

    struct FreeIO {
        void operator()(AVIOContext* inIO) const noexcept
        {
            av_freep(&inIO->buffer);
            avio_context_free(&inIO);
        }
    };

    const std::string mPath;
    const ICancel* mCancel;
    InputFile mFile;
    int mReadError = 0; // the system's number of the first failed read
    std::unique_ptr<AVIOContext, FreeIO> mIO;
    FormatPtr mFormat; // goes before mIO, which it uses
};

} // namespace trhost::media
