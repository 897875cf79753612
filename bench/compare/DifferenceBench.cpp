#include "CompareBench.h"
#include "Pictures.h"

#include <VF/Difference.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/threads/AsyncExecutor.h>

#include "support/Interleaved.h"

#include <cstdint>
#include <immintrin.h>
#include <new>
#include <string>

namespace bench {
namespace {

using namespace kiomediatypes;
using MF::IVideoFrameRef;
using Access = kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess>;

constexpr std::uint32_t kWidth = 3840;
constexpr std::uint32_t kHeight = 2160;
constexpr std::size_t kPairs = 41;

IVideoFrameRef MakeFrame(PixelFormat inFormat)
{
    IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, inFormat, kWidth, kHeight, {1, 1}, false, false) ||
        !frame->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    return frame;
}

IVideoFrameRef Converted(const IVideoFrameRef& inFrame, PixelFormat inFormat)
{
    const IVideoFrameRef frame = MakeFrame(inFormat);
    VF::VideoFrameManipulators::CopyFrame(inFrame, frame, kRenderQuality_Medium, {});
    return frame;
}

/// What nobody who reads two frames and writes one past the caches can do without.
void ReadTwoWriteOneOf16(const std::byte* inFirst, const std::byte* inSecond, std::byte* outThird,
                         std::size_t inBytes)
{
    const auto* a = reinterpret_cast<const __m128i*>(inFirst);
    const auto* b = reinterpret_cast<const __m128i*>(inSecond);
    auto* out = reinterpret_cast<__m128i*>(outThird);
    for (std::size_t at = 0; at < inBytes / sizeof(__m128i); ++at) {
        _mm_stream_si128(out + at, _mm_xor_si128(_mm_load_si128(a + at), _mm_load_si128(b + at)));
    }
    _mm_sfence();
}
__attribute__((target("avx2"))) void ReadTwoWriteOneOf32(const std::byte* inFirst, const std::byte* inSecond,
                                                         std::byte* outThird, std::size_t inBytes)
{
    const auto* a = reinterpret_cast<const __m256i*>(inFirst);
    const auto* b = reinterpret_cast<const __m256i*>(inSecond);
    auto* out = reinterpret_cast<__m256i*>(outThird);
    for (std::size_t at = 0; at < inBytes / sizeof(__m256i); ++at) {
        _mm256_stream_si256(out + at, _mm256_xor_si256(_mm256_load_si256(a + at), _mm256_load_si256(b + at)));
    }
    _mm_sfence();
}
void ReadTwoWriteOne(const Access& inFirst, const Access& inSecond, const Access& outThird)
{
    const auto floor = __builtin_cpu_supports("avx2") ? &ReadTwoWriteOneOf32 : &ReadTwoWriteOneOf16;
    floor(inFirst->GetPixels(), inSecond->GetPixels(), outThird->GetWritablePixels(),
          outThird->GetRowBytes() * kHeight);
}

struct Case {
    const char* name;
    PixelFormat format;
    double part; // of the pixels
    double goal;
};

void Measure(const Case& inCase, const char* inHow, bool inPaints)
{
    const IVideoFrameRef picture = MakePicture(Look::kPhoto, kWidth, kHeight);
    const IVideoFrameRef first = Converted(picture, inCase.format);
    const IVideoFrameRef second = Converted(WithChangedPixels(picture, inCase.part), inCase.format);
    const IVideoFrameRef painted = MakeFrame(inCase.format);
    const IVideoFrameRef third = MakeFrame(inCase.format);
    const auto floor = [&] {
        return Timed(CLOCK_PROCESS_CPUTIME_ID, [&] { ReadTwoWriteOne(first, second, third); });
    };
    const auto ours = [&] {
        return Timed(CLOCK_PROCESS_CPUTIME_ID, [&] {
            VF::DifferenceDetails details;
            VF::ComputeDifferenceImages(first, second, inPaints ? painted : IVideoFrameRef(), 0, &details);
        });
    };
    PrintRow(std::string(inCase.name) + inHow, Compare(floor, ours, kPairs, 1), inCase.goal);
}

} // namespace

void BenchDifference()
{
    PrintHeader("Compare two 4K pictures (floor: reads two, writes one past the caches)");
    const Case kCases[] = {
        {"BGRA8, equal", kPixelFormat_BGRA_4444_8u, 0, 1},
        {"BGRA8, 0.1 %", kPixelFormat_BGRA_4444_8u, 0.001, 1},
        {"BGRA8, 1 %", kPixelFormat_BGRA_4444_8u, 0.01, 0},
        {"BGRA8, 10 %", kPixelFormat_BGRA_4444_8u, 0.1, 1.3},
        {"BGRA8, all", kPixelFormat_BGRA_4444_8u, 1, 0},
        {"BGRA16, 0.1 %", kPixelFormat_BGRA_4444_16u, 0.001, 0},
        {"BGRA16, 10 %", kPixelFormat_BGRA_4444_16u, 0.1, 0},
        {"BGRA32f, 0.1 %", kPixelFormat_BGRA_4444_32f, 0.001, 0},
        {"BGRA32f, 10 %", kPixelFormat_BGRA_4444_32f, 0.1, 0},
        {"UYVY, 0.1 %", kPixelFormat_UYVY_422_8u, 0.001, 0},
        {"v210, 0.1 %", kPixelFormat_V210_422_10u, 0.001, 0},
    };
    {
        const kiocore::threads::ScReplaceExecutor oneThread(
            kiocore::threads::ScReplaceExecutor::Pool::kCPUBound, nullptr);
        for (const Case& one : kCases) {
            Measure(one, "", true);
        }
        Measure(kCases[1], ", not painted", false);
    }
    Measure(kCases[1], ", all threads' time", true);
    Measure(kCases[3], ", all threads' time", true);
}

} // namespace bench
