#include "Trial.h"
#include "support/KeptText.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>
#include <kiomediatypes/TickTime.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace trhost::effects {

namespace {

using namespace kiomediatypes;

constexpr double kFramesPerSecond = 25;
constexpr int kStepsThroughTransition = 4;

MF::IVideoFrameRef MakeFrame(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight)
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, kPixelAspectRatio_Square, true, false) ||
        !frame->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    return frame;
}

/// A slope with noise on it, which few plug-ins leave as it is; all alphas occur.
MF::IVideoFrameRef MakePicture(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight,
                               std::uint32_t inSeed)
{
    MF::IVideoFrameRef picture = MakeFrame(kPixelFormat_BGRA_4444_8u, inWidth, inHeight);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(picture);
    std::uint32_t noise = inSeed * 2654435761u + 1;
    for (std::uint32_t row = 0; row < inHeight; ++row) {
        auto* const pixels =
            reinterpret_cast<unsigned char*>(memory->GetWritablePixels()) + row * memory->GetRowBytes();
        for (std::uint32_t column = 0; column < inWidth; ++column) {
            noise = noise * 1664525u + 1013904223u;
            for (std::uint32_t part = 0; part < 4; ++part) {
                const std::uint32_t slope =
                    (column + row * (part + 1) + inSeed * 40) * 255 / (inWidth + inHeight);
                pixels[column * 4 + part] =
                    static_cast<unsigned char>(slope + (noise >> (8 + 5 * part)) % 64);
            }
        }
    }
    if (inFormat != kPixelFormat_BGRA_4444_8u) {
        const MF::IVideoFrameRef converted = MakeFrame(inFormat, inWidth, inHeight);
        if (!VF::VideoFrameManipulators::CopyFrame(picture, converted, kRenderQuality_Medium, {})) {
            throw std::bad_alloc();
        }
        picture = converted;
    }
    picture->PrepareForSharing();
    return picture;
}

std::size_t HashOf(const MF::IVideoFrameRef& inFrame)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
    if (!memory) {
        return 0;
    }
    const VF::FrameLayout layout =
        VF::LayoutOf(inFrame->GetPixelFormat(), inFrame->GetWidth(), inFrame->GetHeight(), true);
    std::size_t hash = inFrame->GetWidth() * 65537u + inFrame->GetHeight();
    for (int plane = 0; plane < layout.planeCount; ++plane) {
        const auto* const pixels = reinterpret_cast<const char*>(memory->GetPixels(plane));
        for (std::uint32_t row = 0; pixels && row < layout.planes[plane].rows; ++row) {
            const std::string_view bytes(pixels + row * memory->GetRowBytes(plane),
                                         layout.planes[plane].usedBytes);
            hash = hash * 31 + std::hash<std::string_view>()(bytes);
        }
    }
    return hash;
}

class VideoTrial final : public ITrialRun {
public:
    VideoTrial(std::unique_ptr<IVideoEffect> inEffect, const TrialCase& inCase, std::uint32_t inSeed)
        : mEffect(std::move(inEffect))
    {
        for (int input = 0; input < mEffect->InputCount(); ++input) {
            mPictures.push_back(MakePicture(mEffect->Format(), inCase.width, inCase.height,
                                            inSeed * 10 + static_cast<std::uint32_t>(input)));
        }
    }
    std::size_t Step(int inNumber) override
    {
        const MF::IVideoFrameRef result =
            mEffect->Render(mPictures, TickTime::FromSeconds(inNumber / kFramesPerSecond),
                            std::min(1.0, double(inNumber) / (kStepsThroughTransition - 1)));
        return result ? HashOf(result) : 1; // some want more input first
    }

private:
    std::unique_ptr<IVideoEffect> mEffect;
    std::vector<MF::IVideoFrameRef> mPictures;
};

} // namespace

std::unique_ptr<ITrialRun> OpenVideoTrial(IEffectEngine& inEngine, const EffectDescription& inDescription,
                                          const TrialCase& inCase, std::uint32_t inSeed)
{
    kiocore::InterfaceRef<IVideoEffectModule> module;
    if (inDescription.kind == EffectKind::kTransition) {
        module = kiocore::InterfaceRef<IVideoEffectModule>(inEngine.OpenTransition(inDescription));
    } else {
        module = kiocore::InterfaceRef<IVideoEffectModule>(inEngine.OpenFilter(inDescription));
    }
    if (!module) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/NoPictureModule=@0 gives no module that runs on pictures",
                     {inDescription.matchName}),
            kEffectError_PluginFailed);
    }
    VideoEffectForm form;
    form.width = inCase.width;
    form.height = inCase.height;
    form.framesPerSecond = kFramesPerSecond;
    form.format = inCase.format;
    form.isExact = true;
    return std::make_unique<VideoTrial>(module->Open(form), inCase, inSeed);
}

} // namespace trhost::effects
