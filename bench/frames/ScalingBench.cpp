#include "FramesBench.h"

#include "support/Interleaved.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <vector>
#include <zimg.h>

extern "C" {
#include <libswscale/swscale.h>
}

namespace bench {
namespace {

using namespace kiomediatypes;
using kiocore::threads::ScReplaceExecutor;

constexpr std::size_t kPairs = 15;

struct Size {
    std::uint32_t width;
    std::uint32_t height;
};
constexpr Size kSource{1920, 1080};
constexpr Size kLarger{3840, 2160};
constexpr Size kSmaller{480, 270};

MF::IVideoFrameRef MakeFrame(Size inSize)
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, inSize.width, inSize.height,
                              kPixelAspectRatio_Square, false, false) ||
        !frame->InitializePixels(0)) {
        throw std::runtime_error("no frame");
    }
    return frame;
}

struct Pixels {
    explicit Pixels(const MF::IVideoFrameRef& inFrame)
    {
        const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(inFrame);
        first = reinterpret_cast<std::uint8_t*>(memory->GetWritablePixels());
        rowBytes = memory->GetRowBytes();
    }
    std::uint8_t* Row(std::size_t inRow) const { return first + inRow * rowBytes; }

    std::uint8_t* first;
    std::size_t rowBytes;
};

/// Grey waves of many lengths, the same at each size; none is shorter than ten pixels of the smaller picture.
/// Level at the edges, where pictures are mirrored.
class Waves {
public:
    explicit Waves(Size inSize, double inFinestPixels)
    {
        for (const double share : {0.05, 0.2, 0.4, 0.7, 1.0}) {
            const double halves = std::round(inFinestPixels / 5 * share);
            mColumns.push_back(Axis(inSize.width, halves));
            mRows.push_back(Axis(inSize.height, std::round(halves * 9 / 16)));
        }
    }
    double At(std::size_t inX, std::size_t inY) const
    {
        double sum = 0;
        for (std::size_t wave = 0; wave < mColumns.size(); ++wave) {
            sum += mColumns[wave][inX] * mRows[wave][inY];
        }
        return 255 * (0.5 + 0.45 * sum / static_cast<double>(mColumns.size()));
    }

private:
    static std::vector<double> Axis(std::uint32_t inSize, double inHalves)
    {
        std::vector<double> axis;
        for (std::uint32_t index = 0; index < inSize; ++index) {
            axis.push_back(std::cos(std::numbers::pi * inHalves * (index + 0.5) / inSize));
        }
        return axis;
    }
    std::vector<std::vector<double>> mColumns;
    std::vector<std::vector<double>> mRows;
};

void Draw(const MF::IVideoFrameRef& inFrame, const Waves& inWaves)
{
    const Pixels pixels(inFrame);
    for (std::size_t y = 0; y < inFrame->GetHeight(); ++y) {
        for (std::size_t x = 0; x < inFrame->GetWidth(); ++x) {
            const auto value = static_cast<std::uint8_t>(std::lround(inWaves.At(x, y)));
            const std::uint8_t pixel[4] = {value, value, value, 255};
            std::memcpy(pixels.Row(y) + x * 4, pixel, sizeof(pixel));
        }
    }
}

double PSNR(const MF::IVideoFrameRef& inFrame, const Waves& inWaves)
{
    const Pixels pixels(inFrame);
    double squares = 0;
    for (std::size_t y = 0; y < inFrame->GetHeight(); ++y) {
        for (std::size_t x = 0; x < inFrame->GetWidth(); ++x) {
            const double error = pixels.Row(y)[x * 4 + 1] - inWaves.At(x, y);
            squares += error * error;
        }
    }
    return 10 * std::log10(255.0 * 255.0 * inFrame->GetWidth() * inFrame->GetHeight() / squares);
}

struct Free {
    void operator()(void* inMemory) const { std::free(inMemory); }
    void operator()(zimg_filter_graph* inGraph) const { zimg_filter_graph_free(inGraph); }
    void operator()(SwsContext* inContext) const { sws_freeContext(inContext); }
};
using AlignedMemory = std::unique_ptr<std::uint8_t, Free>;

AlignedMemory Allocate(std::size_t inBytes)
{
    return AlignedMemory(static_cast<std::uint8_t*>(std::aligned_alloc(64, (inBytes + 63) / 64 * 64)));
}

/// zimg as someone would use it who needs just this: a graph made once, plain loops around it, and the
/// picture known to be opaque.
class PlainZimg {
public:
    PlainZimg(const MF::IVideoFrameRef& inSource, const MF::IVideoFrameRef& inDestination)
        : mSource(inSource), mDestination(inDestination)
    {
        zimg_image_format from, to;
        zimg_image_format_default(&from, ZIMG_API_VERSION);
        from.width = inSource->GetWidth();
        from.height = inSource->GetHeight();
        from.pixel_type = ZIMG_PIXEL_BYTE;
        from.color_family = ZIMG_COLOR_RGB;
        from.matrix_coefficients = ZIMG_MATRIX_RGB;
        from.pixel_range = ZIMG_RANGE_FULL;
        to = from;
        to.width = inDestination->GetWidth();
        to.height = inDestination->GetHeight();
        zimg_graph_builder_params parameters;
        zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
        parameters.filter_param_a = 0;
        parameters.filter_param_b = 0.5;
        mGraph.reset(zimg_filter_graph_build(&from, &to, &parameters));
        std::size_t bytes = 0;
        unsigned readRows = 0, writtenRows = 0;
        if (!mGraph || zimg_filter_graph_get_tmp_size(mGraph.get(), &bytes) ||
            zimg_filter_graph_get_input_buffering(mGraph.get(), &readRows) ||
            zimg_filter_graph_get_output_buffering(mGraph.get(), &writtenRows)) {
            throw std::runtime_error("zimg does not build the graph");
        }
        mWork = Allocate(bytes);
        mRead.version = mWritten.version = ZIMG_API_VERSION;
        for (int plane = 0; plane < 3; ++plane) {
            const auto lay = [&](auto& outPlane, std::uint32_t inWidth, std::uint32_t inHeight,
                                 unsigned inRows) {
                const std::size_t rowBytes = (inWidth + 63) / 64 * 64;
                outPlane.mask = zimg_select_buffer_mask(inRows);
                const std::size_t rows = outPlane.mask == ZIMG_BUFFER_MAX ? inHeight : outPlane.mask + 1;
                mLines.push_back(Allocate(rowBytes * rows));
                outPlane.data = mLines.back().get();
                outPlane.stride = static_cast<std::ptrdiff_t>(rowBytes);
            };
            lay(mRead.plane[plane], from.width, from.height, readRows);
            lay(mWritten.plane[plane], to.width, to.height, writtenRows);
        }
    }

    void Run()
    {
        if (zimg_filter_graph_process(mGraph.get(), &mRead, &mWritten, mWork.get(), Unpack, this, Pack,
                                      this)) {
            throw std::runtime_error("zimg fails");
        }
    }

private:
    static int Unpack(void* inSelf, unsigned inRow, unsigned inLeft, unsigned inRight)
    {
        auto& self = *static_cast<PlainZimg*>(inSelf);
        const std::uint8_t* __restrict const pixels = self.mSource.Row(inRow);
        const auto row = [&](int inPlane) {
            const auto& plane = self.mRead.plane[inPlane];
            return static_cast<std::uint8_t*>(const_cast<void*>(plane.data)) +
                   static_cast<std::size_t>(inRow & plane.mask) * static_cast<std::size_t>(plane.stride);
        };
        std::uint8_t* __restrict const r = row(0);
        std::uint8_t* __restrict const g = row(1);
        std::uint8_t* __restrict const b = row(2);
        for (unsigned x = inLeft; x < inRight; ++x) {
            b[x] = pixels[x * 4];
            g[x] = pixels[x * 4 + 1];
            r[x] = pixels[x * 4 + 2];
        }
        return 0;
    }
    static int Pack(void* inSelf, unsigned inRow, unsigned inLeft, unsigned inRight)
    {
        auto& self = *static_cast<PlainZimg*>(inSelf);
        std::uint8_t* __restrict const pixels = self.mDestination.Row(inRow);
        const auto row = [&](int inPlane) {
            const auto& plane = self.mWritten.plane[inPlane];
            return static_cast<const std::uint8_t*>(plane.data) +
                   static_cast<std::size_t>(inRow & plane.mask) * static_cast<std::size_t>(plane.stride);
        };
        const std::uint8_t* __restrict const r = row(0);
        const std::uint8_t* __restrict const g = row(1);
        const std::uint8_t* __restrict const b = row(2);
        for (unsigned x = inLeft; x < inRight; ++x) {
            pixels[x * 4] = b[x];
            pixels[x * 4 + 1] = g[x];
            pixels[x * 4 + 2] = r[x];
            pixels[x * 4 + 3] = 255;
        }
        return 0;
    }

    const Pixels mSource;
    const Pixels mDestination;
    std::unique_ptr<zimg_filter_graph, Free> mGraph;
    AlignedMemory mWork;
    std::vector<AlignedMemory> mLines;
    zimg_image_buffer_const mRead{};
    zimg_image_buffer mWritten{};
};

/// swscale's bicubic of the same shape, with the flags that make it accurate; it is told that there is no
/// alpha.
class Swscale {
public:
    Swscale(const MF::IVideoFrameRef& inSource, const MF::IVideoFrameRef& inDestination)
        : mSource(inSource), mDestination(inDestination), mHeight(static_cast<int>(inSource->GetHeight()))
    {
        const double shape[2] = {0, 0.5};
        mContext.reset(sws_getContext(
            static_cast<int>(inSource->GetWidth()), mHeight, AV_PIX_FMT_BGR0,
            static_cast<int>(inDestination->GetWidth()), static_cast<int>(inDestination->GetHeight()),
            AV_PIX_FMT_BGR0, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP,
            nullptr, nullptr, shape));
        if (!mContext) {
            throw std::runtime_error("swscale refuses");
        }
    }
    void Run()
    {
        const std::uint8_t* const from[1] = {mSource.first};
        std::uint8_t* const to[1] = {mDestination.first};
        const int fromBytes[1] = {static_cast<int>(mSource.rowBytes)};
        const int toBytes[1] = {static_cast<int>(mDestination.rowBytes)};
        sws_scale(mContext.get(), from, fromBytes, 0, mHeight, to, toBytes);
    }

private:
    const Pixels mSource;
    const Pixels mDestination;
    const int mHeight;
    std::unique_ptr<SwsContext, Free> mContext;
};

void Copy(const MF::IVideoFrameRef& inSource, const MF::IVideoFrameRef& inDestination,
          RenderQuality inQuality)
{
    if (!VF::VideoFrameManipulators::CopyFrame(inSource, inDestination, inQuality, {})) {
        throw std::runtime_error("CopyFrame fails");
    }
}

/// CopyFrame on this thread alone.
void CopyAlone(const MF::IVideoFrameRef& inSource, const MF::IVideoFrameRef& inDestination)
{
    ScReplaceExecutor none(ScReplaceExecutor::Pool::kCPUBound, {});
    Copy(inSource, inDestination, kRenderQuality_Medium);
}

template <typename Work>
Batch Measured(clockid_t inClock, Work inWork)
{
    return [=] { return Timed(inClock, inWork); };
}

void PrintQuality(const char* inWhat, double inDecibels, double inGoal)
{
    char text[160];
    if (inGoal == 0) {
        std::snprintf(text, sizeof(text), "%-54s %6.2f dB", inWhat, inDecibels);
    } else {
        std::snprintf(text, sizeof(text), "%-54s %6.2f dB, goal %.1f %s", inWhat, inDecibels, inGoal,
                      inDecibels >= inGoal ? "met" : "NOT MET");
    }
    PrintNote(text);
}

} // namespace

void BenchScaling()
{
    PrintHeader("Scaling BGRA8, 1920 x 1080, medium (bicubic 0, 0.5)");
    for (const Size size : {kLarger, kSmaller}) {
        const double finest = std::min(size.width, kSource.width);
        const MF::IVideoFrameRef source = MakeFrame(kSource);
        const MF::IVideoFrameRef destination = MakeFrame(size);
        const MF::IVideoFrameRef other = MakeFrame(size);
        Draw(source, Waves(kSource, finest));
        const std::string to = " to " + std::to_string(size.width) + " x " + std::to_string(size.height);
        const auto zimg = std::make_shared<PlainZimg>(source, other);
        const auto swscale = std::make_shared<Swscale>(source, other);
        const clockid_t cpu = CLOCK_THREAD_CPUTIME_ID;
        const clockid_t wall = CLOCK_MONOTONIC;
        const auto alone = [=] { CopyAlone(source, destination); };
        const auto all = [=] { Copy(source, destination, kRenderQuality_Medium); };
        PrintRow(to + ": zimg directly / one thread",
                 Compare(Measured(cpu, [=] { zimg->Run(); }), Measured(cpu, alone), kPairs, 1), 1.1);
        PrintRow(to + ": zimg directly / all threads",
                 Compare(Measured(wall, [=] { zimg->Run(); }), Measured(wall, all), kPairs, 1), 0);
        PrintRow(to + ": swscale / one thread",
                 Compare(Measured(cpu, [=] { swscale->Run(); }), Measured(cpu, alone), kPairs, 1), 0.3);
        PrintRow(to + ": one thread / all threads",
                 Compare(Measured(wall, alone), Measured(wall, all), kPairs, 1), 1 / 1.7);
        const Waves ideal(size, finest);
        Copy(source, destination, kRenderQuality_Medium);
        PrintQuality("PSNR against the picture drawn at that size, medium", PSNR(destination, ideal), 46.5);
        Copy(source, destination, kRenderQuality_High);
        PrintQuality("the same, high (Lanczos 3)", PSNR(destination, ideal), 55);
        swscale->Run();
        PrintQuality("the same, swscale's bicubic", PSNR(other, ideal), 0);
    }
    PrintNote("swscale: BICUBIC (0, 0.5), ACCURATE_RND, FULL_CHR_H_INT, FULL_CHR_H_INP, without alpha; both");
    PrintNote("floors keep what they build for the size, and so does CopyFrame");
}

} // namespace bench
