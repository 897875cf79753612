#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>

#include <cstddef>
#include <cstdint>

namespace VF {

using kiocore::InterfaceRef;

/// Most pixels that a frame may have in one direction.
inline constexpr std::uint32_t kMostPixelsPerSide = 65535;

/// Makes a frame without memory yet (see MF::IVideoFrame::InitializePixels) in the default colour space, rows
/// aligned to 64 bytes. It reports exactly the form asked for.
/// @param inFormat        one of kiomediatypes::kPixelFormats.
/// @param inWidth, inHeight  1 to kMostPixelsPerSide.
/// @param inZeroed        its memory will be all zero bytes.
/// @param inUnpaddedRows  counts only in the form with a colour space.
/// @return false, and outFrame stays as it is, for a format or size that no frame has, or one whose pixels
///     the machine's memory could not hold. Trace channel "Frames" tells why.
///
/// Threading: any thread.
KIO_EXPORT bool CreateVideoFrame(MF::IVideoFrameRef& outFrame, kiomediatypes::PixelFormat inFormat,
                                 std::uint32_t inWidth, std::uint32_t inHeight,
                                 kiomediatypes::PixelAspectRatio inPixelAspectRatio, bool inZeroed,
                                 bool inUnpaddedRows);
/// The same in a colour space. With inUnpaddedRows each row starts where the one before ends.
KIO_EXPORT bool CreateVideoFrame(MF::IVideoFrameRef& outFrame, kiomediatypes::PixelFormat inFormat,
                                 std::uint32_t inWidth, std::uint32_t inHeight,
                                 kiomediatypes::PixelAspectRatio inPixelAspectRatio,
                                 const kiomediatypes::color::ColorSpace& inColorSpace, bool inZeroed,
                                 bool inUnpaddedRows);

/// The memory of a frame: one plane, or Y, Cb, Cr. The first row is the top of the picture.
class KIO_EXPORT IVideoFrameMemoryAccess : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IVideoFrameMemoryAccess() override;

    virtual int GetPlaneCount() const = 0;
    /// Null while the frame has no memory.
    virtual const std::byte* GetPixels(int inPlane = 0) const = 0;
    /// Null while the frame has no memory, and once it is shared.
    virtual std::byte* GetWritablePixels(int inPlane = 0) = 0;
    /// From the start of one row to that of the next.
    virtual std::size_t GetRowBytes(int inPlane = 0) const = 0;
    virtual std::uint32_t GetRowCount(int inPlane = 0) const = 0;
};

/// How the planes of a form lie, one behind the other, without making a frame.
struct FrameLayout {
    static constexpr int kMostPlanes = 3;
    struct Plane {
        std::uint64_t offset = 0;    ///< of its first row, from the first of the frame
        std::uint64_t rowBytes = 0;  ///< from row to row
        std::uint64_t usedBytes = 0; ///< of each row; the rest is padding
        std::uint32_t rows = 0;
    };
    int planeCount = 0; ///< 0: no frame has this format or size
    Plane planes[kMostPlanes];
    std::uint64_t sizeBytes = 0;
};
KIO_EXPORT FrameLayout LayoutOf(kiomediatypes::PixelFormat inFormat, std::uint32_t inWidth,
                                std::uint32_t inHeight, bool inUnpaddedRows);

} // namespace VF
