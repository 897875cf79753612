#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>

namespace TRFoundation::Scripting {

/// A file that holds one frame as it lies in memory (docs/frame-files.md).
///
/// Threading: one thread at a time.
class VFRawFile {
public:
    /// The start of the file: 32-bit little-endian numbers.
    struct Header {
        std::uint32_t magic = 0;
        std::uint32_t version = kVersion;
        std::uint32_t pixelFormat = 'b' | 'a' << 8 | 'd' << 16 | 'f' << 24;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint32_t rowBytes = 0;
        std::uint32_t pixelAspectNumerator = 0;
        std::uint32_t pixelAspectDenominator = 0;
    };
    static constexpr std::uint32_t kMagic = 0x56465257;
    static constexpr std::uint32_t kVersion = 0x00010002;

    /// Reads the header and looks whether the file is as long as that says.
    /// @throws file_exception when the file is there but cannot be read.
    explicit VFRawFile(const kiocore::UTF16String& inPath);

    bool IsValid() const { return mIsValid; }
    /// Whether both hold frames of the same form.
    bool MatchesFormOf(const VFRawFile& inOther) const;

    /// Reads the frame of a valid file. Rows are put as far apart as they are in the file, whatever the frame
    /// has for its own rows: rows of another length give a slanted picture, which compares well with one that
    /// is slanted alike.
    /// @return empty when no frame has this form, there is no memory for it, or its memory cannot hold the
    /// rows.
    /// @throws file_exception when reading fails; kio_exception (kError_DataReadFailed) when the file has
    /// become
    ///     shorter meanwhile.
    MF::IVideoFrameRef GetVideoFrame() const;

private:
    std::uint64_t PixelBytes() const { return std::uint64_t{mHeader.height} * mHeader.rowBytes; }
    void ReadRows(std::byte* outPixels) const;

    kiocore::UTF16String mPath;
    Header mHeader;
    bool mIsValid = true;
};

} // namespace TRFoundation::Scripting
