#include <VF/VideoFrames.h>

#include "ClearPixels.h"
#include "FrameMemory.h"

#include <kiocore/debug/Trace.h>

#include <atomic>
#include <string>

namespace VF {

using namespace kiomediatypes;

IVideoFrameMemoryAccess::~IVideoFrameMemoryAccess() = default;
const CFUUIDBytes& IVideoFrameMemoryAccess::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x63, 0xd9, 0xdc, 0x51, 0xe4, 0xbe, 0x45, 0xdb, 0x91, 0x2a, 0x91, 0x4d, 0x93, 0xa3, 0x31, 0xc4}};
    return kID;
}

namespace {

class VideoFrame final : public MF::IVideoFrame,
                         public MF::IVideoFrameClearable,
                         public IVideoFrameMemoryAccess,
                         public virtual kiocore::classref::UnknownBase {
public:
    VideoFrame(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight,
               PixelAspectRatio inPixelAspectRatio, const color::ColorSpace& inColorSpace, bool inZeroed,
               const FrameLayout& inLayout)
        : mFormat(inFormat), mWidth(inWidth), mHeight(inHeight), mPixelAspectRatio(inPixelAspectRatio),
          mColorSpace(inColorSpace), mZeroed(inZeroed), mLayout(inLayout)
    {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (inInterfaceID == MF::IVideoFrame::InterfaceID()) {
            return static_cast<MF::IVideoFrame*>(this);
        }
        if (inInterfaceID == MF::IVideoFrameClearable::InterfaceID()) {
            return static_cast<MF::IVideoFrameClearable*>(this);
        }
        if (inInterfaceID == IVideoFrameMemoryAccess::InterfaceID()) {
            return static_cast<IVideoFrameMemoryAccess*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }

    std::uint32_t GetWidth() const override { return mWidth; }
    std::uint32_t GetHeight() const override { return mHeight; }
    PixelFormat GetPixelFormat() const override { return mFormat; }
    PixelAspectRatio GetPixelAspectRatio() const override { return mPixelAspectRatio; }
    color::ColorSpace GetColorSpace() const override { return mColorSpace; }
    std::uint64_t GetSizeBytes() const override { return mLayout.sizeBytes; }

    bool InitializePixels(int inOptions) override
    {
        KIO_HOST_CALL("MF::IVideoFrame::InitializePixels", inOptions);
        if (!mMemory) {
            mMemory = AllocateFrameMemory(static_cast<std::size_t>(mLayout.sizeBytes), mZeroed);
        }
        return mMemory != nullptr;
    }
    void PrepareForSharing() override
    {
        KIO_HOST_CALL("MF::IVideoFrame::PrepareForSharing");
        mShared.store(true, std::memory_order_release);
    }

    void Clear() override
    {
        KIO_HOST_CALL("MF::IVideoFrameClearable::Clear");
        if (std::byte* const pixels = GetWritablePixels(0)) {
            ClearPixels(mFormat, mColorSpace, mLayout, pixels);
        }
    }

    int GetPlaneCount() const override { return mLayout.planeCount; }
    const std::byte* GetPixels(int inPlane) const override
    {
        return mMemory ? mMemory.get() + mLayout.planes[inPlane].offset : nullptr;
    }
    std::byte* GetWritablePixels(int inPlane) override
    {
        return mMemory && !mShared.load(std::memory_order_acquire)
                   ? mMemory.get() + mLayout.planes[inPlane].offset
                   : nullptr;
    }
    std::size_t GetRowBytes(int inPlane) const override { return mLayout.planes[inPlane].rowBytes; }
    std::uint32_t GetRowCount(int inPlane) const override { return mLayout.planes[inPlane].rows; }

private:
    const PixelFormat mFormat;
    const std::uint32_t mWidth;
    const std::uint32_t mHeight;
    const PixelAspectRatio mPixelAspectRatio;
    const color::ColorSpace mColorSpace;
    const bool mZeroed;
    const FrameLayout mLayout;
    FrameMemory mMemory;
    std::atomic<bool> mShared{false};
};

bool Create(MF::IVideoFrameRef& outFrame, PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight,
            PixelAspectRatio inPixelAspectRatio, const color::ColorSpace& inColorSpace, bool inZeroed,
            bool inUnpaddedRows)
{
    const FrameLayout layout = LayoutOf(inFormat, inWidth, inHeight, inUnpaddedRows);
    const auto refuse = [&](const std::string& inReason) {
        kiocore::debug::Trace(1, "Frames",
                              "No frame of format " + std::string(NameOf(inFormat)) + " and " +
                                  std::to_string(inWidth) + " x " + std::to_string(inHeight) +
                                  " pixels: " + inReason);
        return false;
    };
    if (layout.planeCount == 0) {
        return refuse("expected a known format and 1 to " + std::to_string(kMostPixelsPerSide) +
                      " pixels each way");
    }
    if (layout.sizeBytes > MachineMemoryBytes()) {
        return refuse("its " + std::to_string(layout.sizeBytes) + " bytes are more than this machine has");
    }
    const auto frame = kiocore::classref::MakeObject<VideoFrame>(
        inFormat, inWidth, inHeight, inPixelAspectRatio, inColorSpace, inZeroed, layout);
    if (!frame) {
        return refuse("out of memory");
    }
    outFrame = frame;
    return true;
}

} // namespace

bool CreateVideoFrame(MF::IVideoFrameRef& outFrame, PixelFormat inFormat, std::uint32_t inWidth,
                      std::uint32_t inHeight, PixelAspectRatio inPixelAspectRatio, bool inZeroed,
                      bool inUnpaddedRows)
{
    KIO_HOST_CALL("VF::CreateVideoFrame", NameOf(inFormat), inWidth, inHeight, inZeroed, inUnpaddedRows);
    return Create(outFrame, inFormat, inWidth, inHeight, inPixelAspectRatio, color::GetDefaultColorSpace(),
                  inZeroed, false);
}

bool CreateVideoFrame(MF::IVideoFrameRef& outFrame, PixelFormat inFormat, std::uint32_t inWidth,
                      std::uint32_t inHeight, PixelAspectRatio inPixelAspectRatio,
                      const color::ColorSpace& inColorSpace, bool inZeroed, bool inUnpaddedRows)
{
    KIO_HOST_CALL("VF::CreateVideoFrame", NameOf(inFormat), inWidth, inHeight, inZeroed, inUnpaddedRows);
    return Create(outFrame, inFormat, inWidth, inHeight, inPixelAspectRatio, inColorSpace, inZeroed,
                  inUnpaddedRows);
}

} // namespace VF
