#include <VF/VideoFrameManipulators.h>
#include <kiocore/threads/AsyncExecutor.h>

#include "support/FrameSamples.h"
#include "support/GuardedFrame.h"
#include "support/HoldingExecutor.h"

#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <random>
#include <thread>

using namespace kiomediatypes;
using kiocore::threads::ScReplaceExecutor;
using support::FrameSamples;
using support::GuardedFrame;
using support::GuardedFrameRef;
using support::HoldingExecutor;
using VF::VideoFrameManipulators;

namespace {

bool Copy(const GuardedFrameRef& inSource, const GuardedFrameRef& inDestination, RenderQuality inQuality)
{
    return VideoFrameManipulators::CopyFrame(inSource, inDestination, inQuality, {});
}

/// Noise, all of it opaque where there is alpha.
void FillNoise(const GuardedFrameRef& inFrame)
{
    std::mt19937 random(7);
    FrameSamples samples(inFrame);
    samples.Fill([&](int inComponent, double, double) {
        return inComponent == 3 ? samples.Full()
                                : static_cast<double>(random()) / 4294967295.0 * samples.Full();
    });
}

void FillRows(const GuardedFrameRef& inFrame)
{
    std::mt19937 random(11);
    FrameSamples samples(inFrame);
    std::vector<double> values(inFrame->GetHeight() * 3 + 3);
    for (double& value : values) {
        value = static_cast<double>(random()) / 4294967295.0 * samples.Full();
    }
    samples.Fill([&](int inComponent, double, double inY) {
        return inComponent == 3
                   ? samples.Full()
                   : values[static_cast<std::size_t>(inY) * 3 + static_cast<std::size_t>(inComponent)];
    });
}

bool SamePixels(const GuardedFrameRef& inA, const GuardedFrameRef& inB)
{
    for (int plane = 0; plane < inA->GetPlaneCount(); ++plane) {
        if (std::memcmp(inA->GetPixels(plane), inB->GetPixels(plane),
                        inA->GetRowBytes(plane) * inA->GetRowCount(plane)) != 0) {
            return false;
        }
    }
    return true;
}

const struct {
    const char* name;
    std::uint32_t fromWidth, fromHeight, toWidth, toHeight;
} kSizes[] = {
    {"twice as large", 512, 384, 1024, 768},
    {"primes, larger", 601, 701, 809, 1009},
    {"primes, smaller", 1009, 997, 503, 389},
    {"same, odd", 1011, 999, 1011, 999},
};

} // namespace

// A narrow picture is done in one piece, a wide one in bands; if all columns are equal, so must the results
// be.
TEST(CopyFrameBands, JoinWithoutASeam)
{
    const struct {
        std::uint32_t from, to;
    } kHeights[] = {{1080, 1620}, {1531, 2039}, {2160, 540}, {1501, 1501}};
    constexpr std::uint32_t kNarrow = 24;
    constexpr std::uint32_t kWide = 400;
    for (const PixelFormat from : {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_32f,
                                   kPixelFormat_V210_422_10u, kPixelFormat_YUV_420_8u_Planar}) {
        for (const auto& heights : kHeights) {
            const auto narrow = GuardedFrame::Make({from, kNarrow, heights.from});
            const auto wide = GuardedFrame::Make({from, kWide, heights.from});
            FillRows(narrow);
            FillRows(wide);
            for (const PixelFormat to : {kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_16u,
                                         kPixelFormat_UYVY_422_8u, kPixelFormat_YUV_420_8u_Planar}) {
                for (const RenderQuality quality :
                     {kRenderQuality_Draft, kRenderQuality_Medium, kRenderQuality_High}) {
                    const auto narrowResult = GuardedFrame::Make({to, kNarrow, heights.to});
                    const auto wideResult = GuardedFrame::Make({to, kWide, heights.to});
                    ASSERT_TRUE(Copy(narrow, narrowResult, quality));
                    ASSERT_TRUE(Copy(wide, wideResult, quality));
                    const FrameSamples one(narrowResult), bands(wideResult);
                    int different = 0;
                    for (int component = 0; component < one.Count(); ++component) {
                        for (std::uint32_t y = 0; y < one.Height(component); ++y) {
                            different += one.Get(component, 8, y) != bands.Get(component, 104, y);
                        }
                    }
                    EXPECT_EQ(different, 0) << NameOf(from) << " to " << NameOf(to) << ", " << heights.from
                                            << " to " << heights.to << " rows, quality " << quality;
                }
            }
        }
    }
}

TEST(CopyFrameBands, GiveTheSameBytesOnHoweverManyThreads)
{
    for (const auto& size : kSizes) {
        for (const PixelFormat format : {kPixelFormat_BGRA_4444_8u, kPixelFormat_YUV_420_8u_Planar}) {
            const auto source =
                GuardedFrame::Make({kPixelFormat_BGRA_4444_8u, size.fromWidth, size.fromHeight});
            FillNoise(source);
            const auto many = GuardedFrame::Make({format, size.toWidth, size.toHeight});
            const auto alone = GuardedFrame::Make({format, size.toWidth, size.toHeight});
            ASSERT_TRUE(Copy(source, many, kRenderQuality_Medium));
            {
                ScReplaceExecutor none(ScReplaceExecutor::Pool::kCPUBound, {});
                ASSERT_TRUE(Copy(source, alone, kRenderQuality_Medium));
            }
            EXPECT_TRUE(SamePixels(many, alone)) << size.name << " to " << NameOf(format);
        }
    }
}

TEST(CopyFrameBands, NeedNobodyElse)
{
    const auto executor = std::make_shared<HoldingExecutor>();
    ScReplaceExecutor replaced(ScReplaceExecutor::Pool::kCPUBound, executor);
    {
        const auto source = GuardedFrame::Make({kPixelFormat_BGRA_4444_8u, 1024, 700});
        FillNoise(source);
        const auto destination = GuardedFrame::Make({kPixelFormat_BGRA_4444_8u, 700, 1024});
        EXPECT_TRUE(Copy(source, destination, kRenderQuality_Medium)) << "tasks are held back";
        executor->Refuse();
        EXPECT_TRUE(Copy(source, destination, kRenderQuality_Medium)) << "tasks are refused";
    }
    if (std::thread::hardware_concurrency() > 1) {
        EXPECT_GT(executor->HeldCount(), 0u);
    }
    executor->RunAll(); // too late: the frames are gone, and with them what they would touch
}

TEST(CopyFrameBands, MayBeCalledFromAllThreadsOfThePoolAtOnce)
{
    const auto source = GuardedFrame::Make({kPixelFormat_BGRA_4444_8u, 640, 480});
    FillNoise(source);
    source->PrepareForSharing();
    const auto expected = GuardedFrame::Make({kPixelFormat_UYVY_422_8u, 1280, 960});
    ASSERT_TRUE(Copy(source, expected, kRenderQuality_Medium));
    const auto executor = kiocore::threads::GetCPUBoundExecutor();
    std::vector<std::future<bool>> results;
    for (int call = 0; call < 12; ++call) {
        const auto result = std::make_shared<std::promise<bool>>();
        results.push_back(result->get_future());
        ASSERT_EQ(executor->Submit([=] {
            const auto destination = GuardedFrame::Make({kPixelFormat_UYVY_422_8u, 1280, 960});
            result->set_value(Copy(source, destination, kRenderQuality_Medium) &&
                              SamePixels(destination, expected));
        }),
                  0);
    }
    for (auto& result : results) {
        EXPECT_TRUE(result.get());
    }
}

// Wider than what zimg does in one go, so that groups of pixels are written in parts.
TEST(CopyFrameBands, VeryWideRowsAreWhole)
{
    const auto source = GuardedFrame::Make({kPixelFormat_BGRA_4444_32f, 65535, 3});
    FrameSamples(source).Fill([](int inComponent, double inX, double) {
        return inComponent == 3 ? 1.0 : std::fmod(inX, 4096) / 8192 + 0.25;
    });
    for (const PixelFormat format : {kPixelFormat_V210_422_10u, kPixelFormat_UYVY_422_8u}) {
        const auto destination = GuardedFrame::Make({format, 65531, 5});
        ASSERT_TRUE(Copy(source, destination, kRenderQuality_High));
        const FrameSamples samples(destination);
        for (std::uint32_t x = 3; x < 65528; ++x) {
            const double place = std::fmod((x + 0.5) * 65535 / 65531, 4096);
            if (place < 12 || place > 4084) {
                continue;
            }
            const double grey = place / 8192 + 0.25;
            ASSERT_NEAR(samples.Get(0, x, 2), support::CodesOf({grey, grey, grey, 1}, format, {})[0], 0.6)
                << x;
        }
    }
}
