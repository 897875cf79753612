#include "Pictures.h"

#include <VF/VideoFrames.h>

#include <cstring>
#include <stdexcept>

namespace effectstests {

MF::IVideoFrameRef MakePicture(std::uint32_t inWidth, std::uint32_t inHeight,
                               const std::function<Word(std::uint32_t inX, std::uint32_t inY)>& inPixel)
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, kiomediatypes::kPixelFormat_BGRA_4444_8u, inWidth, inHeight,
                              kiomediatypes::kPixelAspectRatio_Square, false, false) ||
        !frame->InitializePixels(0)) {
        throw std::runtime_error("no memory for a test picture");
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(frame);
    for (std::uint32_t y = 0; y < inHeight; ++y) {
        for (std::uint32_t x = 0; x < inWidth; ++x) {
            const Word pixel = inPixel(x, y);
            std::memcpy(memory->GetWritablePixels() + y * memory->GetRowBytes() + 4 * x, &pixel, 4);
        }
    }
    return frame;
}

std::vector<Word> WordsOf(const MF::IVideoFrameRef& inFrame)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
    std::vector<Word> words(std::size_t(inFrame->GetWidth()) * inFrame->GetHeight());
    for (std::uint32_t y = 0; y < inFrame->GetHeight(); ++y) {
        std::memcpy(words.data() + std::size_t(y) * inFrame->GetWidth(),
                    memory->GetPixels() + y * memory->GetRowBytes(), std::size_t(inFrame->GetWidth()) * 4);
    }
    return words;
}

Word TestPixel(std::uint32_t inX, std::uint32_t inY)
{
    const Word alpha = 255 - inY % 200;
    const Word red = inX * 3 % 256;
    const Word green = (inX / 8 + inY / 8) % 2 ? 220 : 30;
    const Word blue = inY * 5 % 256;
    return alpha << 24 | red << 16 | green << 8 | blue;
}

} // namespace effectstests
