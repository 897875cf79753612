#pragma once

#include "Picture.h"

namespace VF {

enum class SampleType : std::uint8_t { kByte, kWord, kFloat };

/// What a format is once its rows are unpacked, one sample after the other in a plane of its own: R, G, B, A
/// or Y, Cb, Cr.
struct PlanarForm {
    SampleType type = SampleType::kByte;
    unsigned depth = 8; // bits that a sample uses
    bool yuv = false;
    unsigned chromaShiftX = 0; // chroma has 1 / 2^shift of the columns
    unsigned chromaShiftY = 0;

    friend bool operator==(const PlanarForm&, const PlanarForm&) = default;
};
PlanarForm PlanarFormOf(kiomediatypes::PixelFormat inFormat);

constexpr std::size_t SampleBytes(SampleType inType)
{
    return inType == SampleType::kByte ? 1 : inType == SampleType::kWord ? 2 : 4;
}
/// The value that stands for 1 in a full-range format.
constexpr float FullSample(SampleType inType)
{
    return inType == SampleType::kByte ? 255.0f : inType == SampleType::kWord ? 65535.0f : 1.0f;
}

/// One row of each plane, from column 0 (of the plane: a chroma row has fewer). Null: not wanted, or not
/// there.
struct RowPlanes {
    std::byte* planes[4] = {};

    template <typename T>
    T* As(int inPlane) const
    {
        return reinterpret_cast<T*>(planes[inPlane]);
    }
};

/// A line buffer has this many bytes more than its samples need, as groups are unpacked whole.
inline constexpr std::size_t kLineSlackBytes = 64;

/// Unpacks columns inLeft up to inRight, and perhaps the rest of the groups of pixels they lie in. One column
/// and one row more than the picture has may be asked for; they repeat the last. In planar 4:2:0 even rows
/// bring the chroma along, odd rows have none.
/// @return false when alpha was not wanted but some pixel is not opaque.
bool UnpackRow(const SourcePicture& inPicture, std::uint32_t inRow, std::uint32_t inLeft,
               std::uint32_t inRight, const RowPlanes& outPlanes);
/// The way back. What lies beyond the picture's last column or row is left out, but a group of pixels that
/// begins in the picture is written whole, its surplus pixels repeating the last. Columns outside inLeft to
/// inRight stay as they are. Without an alpha plane the picture is opaque.
void PackRow(const DestinationPicture& inPicture, std::uint32_t inRow, std::uint32_t inLeft,
             std::uint32_t inRight, const RowPlanes& inPlanes);

} // namespace VF
