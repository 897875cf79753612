#include "CompareBench.h"
#include "Pictures.h"

#include <VF/Difference.h>
#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include "support/Interleaved.h"

#include <png.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {
namespace {

using namespace kiomediatypes;
using MF::IVideoFrameRef;
using Access = kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess>;

constexpr std::uint32_t kWidth = 3840;
constexpr std::uint32_t kHeight = 2160;

IVideoFrameRef MakeFrame()
{
    IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, kWidth, kHeight, {1, 1}, false, false) ||
        !frame->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    return frame;
}

void Keep(png_structp inPNG, png_bytep inBytes, std::size_t inSize)
{
    auto& kept = *static_cast<std::vector<unsigned char>*>(png_get_io_ptr(inPNG));
    kept.insert(kept.end(), inBytes, inBytes + inSize);
}

/// libpng's usual level, and its own choice of filters. @return the file's size.
std::size_t EncodeWithLibpng(const IVideoFrameRef& inFrame)
{
    const Access access = inFrame;
    std::vector<unsigned char> bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        throw std::bad_alloc();
    }
    png_set_write_fn(png, &bytes, &Keep, nullptr);
    png_set_compression_level(png, 6);
    png_set_IHDR(png, info, kWidth, kHeight, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    png_set_bgr(png);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        png_write_row(png,
                      reinterpret_cast<png_const_bytep>(access->GetPixels() + y * access->GetRowBytes()));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return bytes.size();
}

/// The difference picture of two of which that part differs, and which rows hold some of it.
IVideoFrameRef MakeDifference(double inPart, VF::DifferenceDetails& outDetails)
{
    const IVideoFrameRef picture = MakePicture(Look::kPhoto, kWidth, kHeight);
    const IVideoFrameRef difference = MakeFrame();
    if (VF::ComputeDifferenceImages(picture, WithChangedPixels(picture, inPart), difference, 0, &outDetails)
            .status < 0) {
        throw std::runtime_error("no difference picture");
    }
    return difference;
}

kiocore::utility::SharedRecycledMemory Encode(const IVideoFrameRef& inFrame,
                                              const VF::DifferenceDetails& inDetails)
{
    VF::PNGOptions options;
    options.isDifference = true;
    options.rowsInUse = inDetails.differingRows;
    return VF::CompressPNG(inFrame, options);
}

template <typename Work>
Batch Batched(const Work& inWork)
{
    return [&inWork] { return Timed(CLOCK_PROCESS_CPUTIME_ID, inWork); };
}

} // namespace

void BenchEncode()
{
    const IVideoFrameRef copy = MakeFrame();
    PrintHeader("Encode the difference of two 4K pictures (floor: memcpy of the frame)");
    for (const double part : {0.0, 0.001, 0.01}) {
        VF::DifferenceDetails details;
        const IVideoFrameRef difference = MakeDifference(part, details);
        const Access from = difference;
        const Access to = copy;
        const auto floor = [&] {
            std::memcpy(to->GetWritablePixels(), from->GetPixels(), from->GetRowBytes() * kHeight);
        };
        const auto ours = [&] { Encode(difference, details); };
        char what[64];
        std::snprintf(what, sizeof(what), "%.1f %% of the pixels", part * 100);
        PrintRow(what, Compare(Batched(floor), Batched(ours), 41, 1), part == 0.001 ? 1.0 : 0.0);
    }
    PrintHeader("Encode the difference of two 4K pictures (floor: libpng, level 6)");
    for (const double part : {0.1, 1.0}) {
        VF::DifferenceDetails details;
        const IVideoFrameRef difference = MakeDifference(part, details);
        const auto floor = [&] { EncodeWithLibpng(difference); };
        const auto ours = [&] { Encode(difference, details); };
        char what[64];
        std::snprintf(what, sizeof(what), "%.1f %% of the pixels", part * 100);
        PrintRow(what, Compare(Batched(floor), Batched(ours), 3, 1), part == 0.1 ? 0.12 : 0.0);
        PrintNumbers(std::string(what) + ", size", static_cast<double>(EncodeWithLibpng(difference)),
                     static_cast<double>(Encode(difference, details).size), "bytes", 0);
    }
}

} // namespace bench
