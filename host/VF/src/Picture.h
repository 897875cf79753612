#pragma once

#include <MF/VideoFrame.h>

#include <cstddef>
#include <cstdint>

namespace VF {

/// The pixels of a frame and what they mean, for the rows that do the work. Borrowed from the frame.
/// Byte is `const std::byte` for a source.
template <typename Byte>
struct PictureOf {
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any;
    kiomediatypes::color::ColorSpace colorSpace;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    struct Plane {
        Byte* pixels = nullptr;
        std::size_t rowBytes = 0;
    };
    Plane planes[3]; // one, or Y, Cb, Cr

    Byte* Row(std::uint32_t inRow, int inPlane = 0) const
    {
        return planes[inPlane].pixels + inRow * planes[inPlane].rowBytes;
    }
};
using SourcePicture = PictureOf<const std::byte>;
using DestinationPicture = PictureOf<std::byte>;

} // namespace VF
