#include "FramesBench.h"

#include "support/Allocations.h"
#include "support/Interleaved.h"
#include "support/OnThreads.h"

#include <TR/StaticImageFactory.h>

#include <VF/SharedVideoFrameCache.h>
#include <VF/VideoFrames.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <unordered_map>
#include <vector>

namespace bench {
namespace {

using namespace kiomediatypes;

constexpr int kStills = 8;
constexpr int kForms = 4;
constexpr std::size_t kRequests = 200'000;
constexpr std::size_t kPairs = 31;

MF::IVideoFrameRef Load(int)
{
    MF::IVideoFrameRef frame;
    VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, 64, 36, kPixelAspectRatio_Square, true, false);
    frame->InitializePixels(0);
    return frame;
}

MF::IVideoFrameRef Request(std::size_t inNumber)
{
    constexpr PixelFormat kFormats[kForms] = {kPixelFormat_BGRA_4444_8u, kPixelFormat_UYVY_422_8u,
                                              kPixelFormat_V210_422_10u, kPixelFormat_BGRA_4444_32f};
    return TR::StaticImageFactory::LoadImage(static_cast<int>(inNumber % kStills) + 10, 32, 18,
                                             kFormats[inNumber / kStills % kForms], kPixelAspectRatio_Square,
                                             kRenderQuality_Medium);
}

/// As many frames as stills are asked for, in a map without a lock.
struct BareMap {
    std::array<kiocore::Guid, kStills * kForms> keys;
    std::unordered_map<kiocore::Guid, MF::IVideoFrameRef> map;
    BareMap()
    {
        for (std::size_t number = 0; number < keys.size(); ++number) {
            keys[number] = kiocore::Guid::CreateUnique();
            map[keys[number]] = Request(number);
        }
    }
    const MF::IVideoFrameRef& Find(std::size_t inNumber) const
    {
        return map.find(keys[inNumber % (kStills * kForms)])->second;
    }
};

} // namespace

void BenchStills()
{
    VF::SharedVideoFrameCache::Clear();
    TR::StaticImageFactory::Register(&Load);
    for (std::size_t number = 0; number < kStills * kForms; ++number) {
        if (!Request(number)) {
            PrintNote("No still could be made: nothing measured.");
            return;
        }
    }
    const BareMap bare;
    std::atomic<std::size_t> sink{0};
    PrintHeader("A still answered from the cache, against one look-up of an identifier in a bare hash map");
    for (const unsigned threads : {1u, 2u}) {
        const auto lookUp = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                std::size_t sum = 0;
                for (std::size_t request = 0; request < kRequests; ++request) {
                    sum += bare.Find(request * 5 + inThread * 7)->GetWidth();
                }
                sink += sum;
            });
        };
        const auto lookUpAndShare = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                std::size_t sum = 0;
                for (std::size_t request = 0; request < kRequests; ++request) {
                    const MF::IVideoFrameRef frame = bare.Find(request * 5 + inThread * 7);
                    sum += frame->GetWidth();
                }
                sink += sum;
            });
        };
        const auto ours = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                std::size_t sum = 0;
                for (std::size_t request = 0; request < kRequests; ++request) {
                    sum += Request(request * 5 + inThread * 7)->GetWidth();
                }
                sink += sum;
            });
        };
        const std::string on = std::to_string(threads) + (threads == 1 ? " thread" : " threads");
        PrintRow(on, Compare(lookUp, ours, kPairs, kRequests), 4, "ns");
        PrintRow(on + ", floor shares the frame with its caller, too",
                 Compare(lookUpAndShare, ours, kPairs, kRequests), 0, "ns");
    }
    const std::size_t before = AllocationCount();
    for (std::size_t request = 0; request < 1000; ++request) {
        sink += Request(request)->GetWidth();
    }
    PrintNote("Allocations in 1000 requests: " + std::to_string(AllocationCount() - before) + " (goal 0)");
    TR::StaticImageFactory::Register(nullptr);
    VF::SharedVideoFrameCache::Clear();
}

} // namespace bench
