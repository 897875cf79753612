#pragma once

#include <MF/VideoFrame.h>
#include <VF/VideoFrames.h>

#include <cstddef>
#include <vector>

namespace support {

/// A frame whose planes lie each between two pages that nobody may touch: who reads or writes a byte too far
/// crashes there and then. Each plane ends at the upper of these pages, with the last used byte of its last
/// row, or begins at the lower one.
///
/// Rows may be padded; padding is filled with a pattern that nobody may change.
///
/// Threading: as MF::IVideoFrame.
class GuardedFrame final : public MF::IVideoFrame,
                           public VF::IVideoFrameMemoryAccess,
                           public virtual kiocore::classref::UnknownBase {
public:
    enum class Touches { kUpperPage, kLowerPage };

    struct Form {
        kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_BGRA_4444_8u;
        std::uint32_t width = 1;
        std::uint32_t height = 1;
        kiomediatypes::color::ColorSpace colorSpace = {};
        Touches touches = Touches::kUpperPage;
        std::size_t paddingBytes = 0; ///< after each row; a multiple of 4
    };
    /// @return a frame with memory, filled with 0xCD.
    static kiocore::InterfaceRef<GuardedFrame> Make(const Form& inForm);

    explicit GuardedFrame(const Form& inForm);
    ~GuardedFrame() override;

    /// Whether the padding of all rows is as it was.
    bool PaddingIsIntact() const;

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;
    std::uint32_t GetWidth() const override { return mForm.width; }
    std::uint32_t GetHeight() const override { return mForm.height; }
    kiomediatypes::PixelFormat GetPixelFormat() const override { return mForm.format; }
    kiomediatypes::PixelAspectRatio GetPixelAspectRatio() const override { return {}; }
    kiomediatypes::color::ColorSpace GetColorSpace() const override { return mForm.colorSpace; }
    std::uint64_t GetSizeBytes() const override { return mLayout.sizeBytes; }
    bool InitializePixels(int) override { return true; }
    void PrepareForSharing() override { mShared = true; }
    int GetPlaneCount() const override { return mLayout.planeCount; }
    const std::byte* GetPixels(int inPlane) const override { return mPlanes[PlaneIndex(inPlane)].pixels; }
    std::byte* GetWritablePixels(int inPlane) override
    {
        return mShared ? nullptr : mPlanes[PlaneIndex(inPlane)].pixels;
    }
    std::size_t GetRowBytes(int inPlane) const override { return mPlanes[PlaneIndex(inPlane)].rowBytes; }
    std::uint32_t GetRowCount(int inPlane) const override { return mLayout.planes[inPlane].rows; }

private:
    struct Plane {
        std::byte* mapping = nullptr;
        std::size_t mappingBytes = 0;
        std::byte* pixels = nullptr;
        std::size_t rowBytes = 0;
    };
    static std::size_t PlaneIndex(int inPlane) { return static_cast<std::size_t>(inPlane); }
    template <typename Visitor>
    void ForEachPadding(const Visitor& inVisitor) const;

    const Form mForm;
    const VF::FrameLayout mLayout;
    std::vector<Plane> mPlanes;
    bool mShared = false;
};
using GuardedFrameRef = kiocore::InterfaceRef<GuardedFrame>;

} // namespace support
