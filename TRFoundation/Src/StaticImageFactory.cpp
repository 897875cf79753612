#include <TR/StaticImageFactory.h>

#include "DefaultStaticImageFactory.h"

#include <VF/SharedVideoFrameCache.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/threads/RecursiveMutex.h>
#include <kiocore/utility/HashValueMixer.h>

#include <chrono>
#include <cstdint>
#include <string_view>

namespace TR {
namespace {

using namespace kiomediatypes;
using kiocore::Guid;
using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;
using MF::IVideoFrameRef;
using VF::SharedVideoFrameCache;

constexpr std::chrono::milliseconds kRegisterLimit{60000};
constexpr int kRetention = 10;

RecursiveMutex sCriticalSection;
StaticImageFactory::LoaderFunction sFactoryFunction = nullptr;

template <typename T>
void Update(kiocore::HashValueMixerState& ioState, T inValue)
{
    kiocore::UpdateHashState(ioState, &inValue, sizeof(inValue));
}

Guid MakeImageCacheKey(int inImage, std::uint32_t inWidth, std::uint32_t inHeight, PixelFormat inFormat,
                       PixelAspectRatio inPixelAspectRatio, RenderQuality inQuality)
{
    static constexpr std::string_view kText = "TR::StaticImageFactory::MakeImageCacheKey";
    static_assert(kText.size() == 41 && sizeof(inImage) == 4 && sizeof(inFormat) == 8 &&
                  sizeof(inPixelAspectRatio) == 8 && sizeof(inQuality) == 4);
    kiocore::HashValueMixerState state;
    kiocore::UpdateHashState(state, kText.data(), kText.size());
    Update(state, inImage);
    Update(state, inWidth);
    Update(state, inHeight);
    Update(state, inFormat);
    Update(state, inPixelAspectRatio);
    Update(state, inQuality);
    return kiocore::GetHashResult(state);
}

Guid MakeNaturalSizeKey(int inImage, std::uint32_t inWidth, std::uint32_t inHeight)
{
    return MakeImageCacheKey(inImage, inWidth, inHeight, kPixelFormat_Any, kPixelAspectRatio_Any,
                             kRenderQuality_Any);
}

void Share(const Guid& inKey, const IVideoFrameRef& inFrame)
{
    inFrame->PrepareForSharing();
    SharedVideoFrameCache::AddToCache(inKey, inFrame, kRetention);
}

IVideoFrameRef MakeBlank(unsigned int inWidth, unsigned int inHeight, PixelFormat inFormat,
                         PixelAspectRatio inPixelAspectRatio)
{
    IVideoFrameRef frame;
    if (VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, inPixelAspectRatio, false, false)) {
        frame->InitializePixels(0);
        if (const InterfaceRef<MF::IVideoFrameClearable> clearable = frame) {
            clearable->Clear();
        }
    }
    return frame;
}

bool HasForm(const IVideoFrameRef& inFrame, unsigned int inWidth, unsigned int inHeight, PixelFormat inFormat,
             PixelAspectRatio inPixelAspectRatio)
{
    return inFrame->GetWidth() == inWidth && inFrame->GetHeight() == inHeight &&
           inFrame->GetPixelFormat() == inFormat && inFrame->GetPixelAspectRatio() == inPixelAspectRatio;
}

IVideoFrameRef MakeForm(const IVideoFrameRef& inNatural, unsigned int inWidth, unsigned int inHeight,
                        PixelFormat inFormat, PixelAspectRatio inPixelAspectRatio, RenderQuality inQuality)
{
    IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, inPixelAspectRatio, false, false)) {
        return {};
    }
    frame->InitializePixels(0);
    const VF::ColorManagementSettings settings;
    if (!VF::VideoFrameManipulators::CopyFrame(inNatural, frame, inQuality, settings)) {
        return {};
    }
    return frame;
}

} // namespace

void StaticImageFactory::Register(LoaderFunction inFunction)
{
    const ScLock lock(sCriticalSection, kRegisterLimit, "StaticImageFactory::Register");
    sFactoryFunction = inFunction;
}

IVideoFrameRef StaticImageFactory::LoadImage(int inImage, unsigned int inWidth, unsigned int inHeight,
                                             PixelFormat inFormat, PixelAspectRatio inPixelAspectRatio,
                                             RenderQuality inQuality, bool inCreateBlankIfMissing)
{
    if (IVideoFrameRef finished = SharedVideoFrameCache::RetrieveFromCache(
            MakeImageCacheKey(inImage, inWidth, inHeight, inFormat, inPixelAspectRatio, inQuality))) {
        return finished;
    }
    // For kSizeDependent too, whose natural images stand under their sizes: they are never found here, so its
    // loader is asked for each new form.
    IVideoFrameRef natural = SharedVideoFrameCache::RetrieveFromCache(MakeNaturalSizeKey(inImage, 0, 0));
    if (!natural) {
        if (const LoaderFunction load = sFactoryFunction) {
            natural = load(inImage);
        }
        if (!natural && inCreateBlankIfMissing) {
            natural = MakeBlank(inWidth, inHeight, inFormat, inPixelAspectRatio);
        }
        if (natural) {
            const bool ofItsSize = inImage == kSizeDependent;
            Share(MakeNaturalSizeKey(inImage, ofItsSize ? inWidth : 0, ofItsSize ? inHeight : 0), natural);
        }
    }
    if (!natural) {
        return {};
    }
    if (HasForm(natural, inWidth, inHeight, inFormat, inPixelAspectRatio)) {
        return natural;
    }
    IVideoFrameRef result = MakeForm(natural, inWidth, inHeight, inFormat, inPixelAspectRatio, inQuality);
    if (result) {
        Share(MakeImageCacheKey(inImage, result->GetWidth(), result->GetHeight(), result->GetPixelFormat(),
                                result->GetPixelAspectRatio(), inQuality),
              result);
    }
    return result;
}

IVideoFrameRef StaticImageFactory::LoadImage(int inImage, unsigned int inWidth, unsigned int inHeight,
                                             PixelFormat inFormat, PixelAspectRatio inPixelAspectRatio,
                                             RenderQuality inQuality)
{
    return LoadImage(inImage, inWidth, inHeight, inFormat, inPixelAspectRatio, inQuality, true);
}

void StaticImageFactory::InitializeDefault()
{
    Register(&LoadTRStaticImageAtNaturalSize);
}

void StaticImageFactory::TerminateDefault()
{
    Register(nullptr);
}

} // namespace TR
