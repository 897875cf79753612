#include "FramePicture.h"

#include <VF/VideoFrames.h>

namespace VF {
namespace {

using namespace kiomediatypes;

const std::byte* PixelsOf(const IVideoFrameMemoryAccess& inMemory, const std::byte*, int inPlane)
{
    return inMemory.GetPixels(inPlane);
}
std::byte* PixelsOf(IVideoFrameMemoryAccess& inMemory, std::byte*, int inPlane)
{
    return inMemory.GetWritablePixels(inPlane);
}

template <typename Byte>
bool ReadPicture(const MF::IVideoFrameRef& inFrame, PictureOf<Byte>& outPicture, std::string& outReason)
{
    if (!inFrame) {
        outReason = "is empty";
        return false;
    }
    const InterfaceRef<IVideoFrameMemoryAccess> memory(inFrame);
    outPicture.format = inFrame->GetPixelFormat();
    outPicture.colorSpace = inFrame->GetColorSpace();
    outPicture.width = inFrame->GetWidth();
    outPicture.height = inFrame->GetHeight();
    const FrameLayout layout = LayoutOf(outPicture.format, outPicture.width, outPicture.height, true);
    if (layout.planeCount == 0) {
        outReason = "has a format or size that no frame has";
        return false;
    }
    if (!memory || memory->GetPlaneCount() != layout.planeCount) {
        outReason = "does not give access to its planes";
        return false;
    }
    for (int plane = 0; plane < layout.planeCount; ++plane) {
        const FrameLayout::Plane& wanted = layout.planes[plane];
        outPicture.planes[plane] = {PixelsOf(*memory, static_cast<Byte*>(nullptr), plane),
                                    memory->GetRowBytes(plane)};
        if (!outPicture.planes[plane].pixels) {
            outReason = memory->GetPixels(plane) ? "is shared" : "has no memory";
            return false;
        }
        if (outPicture.planes[plane].rowBytes < wanted.usedBytes ||
            memory->GetRowCount(plane) < wanted.rows) {
            outReason = "has " + std::to_string(memory->GetRowCount(plane)) + " rows of " +
                        std::to_string(outPicture.planes[plane].rowBytes) + " bytes in plane " +
                        std::to_string(plane) + ", expected " + std::to_string(wanted.rows) + " of " +
                        std::to_string(wanted.usedBytes);
            return false;
        }
    }
    return true;
}

} // namespace

bool GetPicture(const MF::IVideoFrameRef& inFrame, SourcePicture& outPicture, std::string& outReason)
{
    return ReadPicture(inFrame, outPicture, outReason);
}

bool GetPicture(const MF::IVideoFrameRef& inFrame, DestinationPicture& outPicture, std::string& outReason)
{
    return ReadPicture(inFrame, outPicture, outReason);
}

} // namespace VF
