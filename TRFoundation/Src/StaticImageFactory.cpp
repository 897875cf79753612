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

/// What a frame is asked for by.
struct Form {
    int image;
    std::uint32_t width;
    std::uint32_t height;
    PixelFormat format;
    PixelAspectRatio pixelAspectRatio;
    RenderQuality quality;

    friend bool operator==(const Form&, const Form&) = default;
};

Guid MakeImageCacheKey(const Form& inForm)
{
    static constexpr std::string_view kText = "TR::StaticImageFactory::MakeImageCacheKey";
    static_assert(kText.size() == 41 && sizeof(inForm.image) == 4 && sizeof(inForm.format) == 8 &&
                  sizeof(inForm.pixelAspectRatio) == 8 && sizeof(inForm.quality) == 4);
    kiocore::HashValueMixerState state;
    kiocore::UpdateHashState(state, kText.data(), kText.size());
    Update(state, inForm.image);
    Update(state, inForm.width);
    Update(state, inForm.height);
    Update(state, inForm.format);
    Update(state, inForm.pixelAspectRatio);
    Update(state, inForm.quality);
    return kiocore::GetHashResult(state);
}

/// The same, remembering what a thread asked for lately: one that shows a still asks for it with every
/// refresh, and hashing is the larger part of an answer.
Guid RecentImageCacheKey(const Form& inForm)
{
    struct Recent {
        Form form;
        Guid key;
        bool known;
    };
    static thread_local Recent recent[64][2]; // places; in each the newer one first

    const std::uint64_t mixed =
        (inForm.format ^ (static_cast<std::uint64_t>(inForm.image) << 17)) * 0x9E3779B97F4A7C15ull ^
        ((static_cast<std::uint64_t>(inForm.width) << 32 | inForm.height) +
         static_cast<std::uint32_t>(inForm.quality)) *
            0xD6E8FEB86659FD93ull;
    Recent* const place = recent[mixed >> 58];
    for (int age = 0; age < 2; ++age) {
        if (place[age].known && place[age].form == inForm) {
            return place[age].key;
        }
    }
    place[1] = place[0];
    place[0] = {inForm, MakeImageCacheKey(inForm), true};
    return place[0].key;
}

Guid MakeNaturalSizeKey(int inImage, std::uint32_t inWidth, std::uint32_t inHeight)
{
    return MakeImageCacheKey(
        {inImage, inWidth, inHeight, kPixelFormat_Any, kPixelAspectRatio_Any, kRenderQuality_Any});
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
            RecentImageCacheKey({inImage, inWidth, inHeight, inFormat, inPixelAspectRatio, inQuality}))) {
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
        Share(MakeImageCacheKey({inImage, result->GetWidth(), result->GetHeight(), result->GetPixelFormat(),
                                 result->GetPixelAspectRatio(), inQuality}),
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
