#include "FramesBench.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/threads/AsyncExecutor.h>

#include "support/Interleaved.h"

#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>

namespace bench {
namespace {

using namespace kiomediatypes;

constexpr std::uint32_t kWidth = 1920;
constexpr std::uint32_t kHeight = 1080;
constexpr std::size_t kFramesPerBatch = 5;
constexpr std::size_t kPairs = 41;

/// A frame of noise: no pixel may be easier than another.
MF::IVideoFrameRef NoiseFrame(PixelFormat inFormat)
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, inFormat, kWidth, kHeight, PixelAspectRatio(), false, false) ||
        !frame->InitializePixels(0)) {
        throw std::runtime_error(std::string("no frame of ") + NameOf(inFormat));
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(frame);
    std::mt19937 random(1);
    for (int plane = 0; plane < memory->GetPlaneCount(); ++plane) {
        const std::size_t bytes = memory->GetRowBytes(plane) * memory->GetRowCount(plane);
        for (std::size_t at = 0; at < bytes; at += 4) {
            // As floats these lie between 0 and 2; as codes anywhere.
            const std::uint32_t word =
                inFormat == kPixelFormat_BGRA_4444_32f ? random() & 0x3FFFFFFF : random();
            std::memcpy(memory->GetWritablePixels(plane) + at, &word, sizeof(word));
        }
    }
    return frame;
}

} // namespace

void BenchConversion()
{
    PrintHeader("Convert 1080p to another format on one thread (floor: memcpy of the BGRA frame)");
    const kiocore::threads::ScReplaceExecutor oneThread(kiocore::threads::ScReplaceExecutor::Pool::kCPUBound,
                                                        nullptr);
    const struct {
        PixelFormat from;
        PixelFormat to;
        double goal;
    } kCases[] = {
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_UYVY_422_8u, 3},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_V210_422_10u, 3.5},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_32f, 3.5},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_16u, 0},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u, 0},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_YUV_420_8u_Planar, 0},
        {kPixelFormat_BGRA_4444_16u, kPixelFormat_BGRA_4444_8u, 0},
        {kPixelFormat_BGRA_4444_16u, kPixelFormat_V210_422_10u, 0},
        {kPixelFormat_BGRA_4444_32f, kPixelFormat_BGRA_4444_8u, 0},
        {kPixelFormat_UYVY_422_8u, kPixelFormat_BGRA_4444_8u, 0},
        {kPixelFormat_UYVY_422_8u, kPixelFormat_V210_422_10u, 0},
        {kPixelFormat_V210_422_10u, kPixelFormat_BGRA_4444_8u, 0},
        {kPixelFormat_V210_422_10u, kPixelFormat_BGRA_4444_16u, 0},
        {kPixelFormat_V210_422_10u, kPixelFormat_UYVY_422_8u, 0},
        {kPixelFormat_YUV_420_8u_Planar, kPixelFormat_BGRA_4444_8u, 0},
    };
    const MF::IVideoFrameRef floorSource = NoiseFrame(kPixelFormat_BGRA_4444_8u);
    const MF::IVideoFrameRef floorCopy = NoiseFrame(kPixelFormat_BGRA_4444_8u);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> read(floorSource);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> written(floorCopy);
    const auto floor = [&] {
        return Timed(CLOCK_MONOTONIC, [&] {
            for (std::size_t i = 0; i < kFramesPerBatch; ++i) {
                std::memcpy(written->GetWritablePixels(), read->GetPixels(),
                            read->GetRowBytes() * read->GetRowCount());
            }
        });
    };
    for (const auto& test : kCases) {
        const MF::IVideoFrameRef source = NoiseFrame(test.from);
        const MF::IVideoFrameRef destination = NoiseFrame(test.to);
        const auto ours = [&] {
            return Timed(CLOCK_MONOTONIC, [&] {
                for (std::size_t i = 0; i < kFramesPerBatch; ++i) {
                    if (!VF::VideoFrameManipulators::CopyFrame(source, destination, kRenderQuality_Medium,
                                                               {})) {
                        std::abort();
                    }
                }
            });
        };
        PrintRow(std::string(NameOf(test.from)) + " to " + NameOf(test.to),
                 Compare(floor, ours, kPairs, kFramesPerBatch), test.goal);
    }
}

} // namespace bench
