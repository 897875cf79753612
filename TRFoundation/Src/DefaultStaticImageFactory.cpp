#include "DefaultStaticImageFactory.h"

#include <VF/PNG.h>
#include <kiocore/platform/Bundle.h>
#include <kiocore/threads/RecursiveMutex.h>
#include <kiocore/utility/MemoryRecycler.h>

#include <chrono>
#include <cstring>
#include <vector>

namespace TR {
namespace {

using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;
using kiocore::utility::SharedRecycledMemory;

constexpr std::string_view kBundleIdentifier = "org.halcyon.TRFoundation";
constexpr std::chrono::milliseconds kLoadLimit{60000};

RecursiveMutex sCriticalSection;
UTF16String sMediaOfflineResourceName = u"MediaOffline";
UTF16String sMediaPendingResourceName = u"MediaPending";

UTF16String ResourceNameOf(int inImage)
{
    switch (inImage) {
    case StaticImageFactory::kMediaPending:
        return sMediaPendingResourceName;
    case StaticImageFactory::kMediaOffline:
    case StaticImageFactory::kMediaOfflineStill:
        return sMediaOfflineResourceName;
    case StaticImageFactory::kPlayingOnHardware:
        return u"PlayingOnHardware";
    case StaticImageFactory::kColorBars:
        return u"ColorBars";
    case StaticImageFactory::kCapturePreviewOnHardware:
        return u"CapturePreviewOnHardware";
    case StaticImageFactory::kAudioVideoClip:
        return u"AudioVideoClip";
    }
    return {};
}

SharedRecycledMemory ToRecycledMemory(const std::vector<std::byte>& inBytes)
{
    SharedRecycledMemory memory = kiocore::utility::MakeSharedRecycledMemory(inBytes.size());
    if (memory) {
        std::memcpy(memory.bytes.get(), inBytes.data(), inBytes.size());
    }
    return memory;
}

} // namespace

MF::IVideoFrameRef LoadTRStaticImageAtNaturalSize(int inImage)
{
    static const UTF16String kResourceType = u"png";
    const ScLock lock(sCriticalSection, kLoadLimit, "LoadTRStaticImageAtNaturalSize");
    CFBundleRef const bundle = kiocore::platform::BundleWithIdentifier(kBundleIdentifier);
    std::vector<std::byte> bytes;
    if (!kiocore::utility::GetBinaryFromModule(bundle, ResourceNameOf(inImage), kResourceType, bytes)) {
        return {};
    }
    return VF::DecompressPNG(ToRecycledMemory(bytes));
}

void StaticImageFactory::SetStaticImageResourceName(Image inImage, const UTF16String& inName)
{
    if (inImage == kMediaPending) {
        sMediaPendingResourceName = inName;
    } else if (inImage == kMediaOffline || inImage == kMediaOfflineStill) {
        sMediaOfflineResourceName = inName;
    }
}

} // namespace TR
