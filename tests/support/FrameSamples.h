#pragma once

#include <MF/VideoFrame.h>
#include <VF/VideoFrames.h>

#include <array>
#include <functional>

namespace support {

/// Reads and writes the samples of frames of all formats one by one, by the formats' descriptions alone:
/// slow, plain, and independent of the code that it is there to test.
///
/// Components: R, G, B, A or Y, Cb, Cr, as the codes that are stored (floats as they are).
class FrameSamples {
public:
    explicit FrameSamples(const MF::IVideoFrameRef& inFrame);

    std::uint32_t Width(int inComponent) const;  ///< of the component's own grid
    std::uint32_t Height(int inComponent) const; ///< of the component's own grid
    int Count() const;                           ///< 4 with alpha, else 3
    double Get(int inComponent, std::uint32_t inX, std::uint32_t inY) const;
    void Set(int inComponent, std::uint32_t inX, std::uint32_t inY, double inCode);

    /// All samples of all components from the component and the place of its sample in pixels of the picture:
    /// (0.5, 0.5) is the middle of the first pixel.
    using Source = std::function<double(int inComponent, double inX, double inY)>;
    void Fill(const Source& inSource);
    void FillFlat(const std::array<double, 4>& inCodes);

    bool IsYUV() const { return kiomediatypes::IsYUV(mFormat); }
    /// The greatest code, 1 for floats.
    double Full() const;

private:
    std::byte* At(int inPlane, std::size_t inByte, std::uint32_t inRow) const;
    bool IsChroma(int inComponent) const { return IsYUV() && inComponent > 0; }

    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> mMemory;
    const kiomediatypes::PixelFormat mFormat;
    const std::uint32_t mWidth;
    const std::uint32_t mHeight;
};

/// What R'G'B' from 0 to 1 is in another format and colour space, as unrounded codes: double arithmetic
/// straight from the definitions of ITU-R BT.601, 709 and 2020.
std::array<double, 4> CodesOf(const std::array<double, 4>& inRGBA, kiomediatypes::PixelFormat inFormat,
                              const kiomediatypes::color::ColorSpace& inColorSpace);
/// The way back; alpha is 1 without alpha.
std::array<double, 4> RGBAOf(const std::array<double, 4>& inCodes, kiomediatypes::PixelFormat inFormat,
                             const kiomediatypes::color::ColorSpace& inColorSpace);

} // namespace support
