#include "CompareBench.h"

#include "Pictures.h"
#include "support/Interleaved.h"

#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace bench {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes ReadFile(const std::string& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Reading {
    const unsigned char* next;
    std::size_t left;
};

void ReadBytes(png_structp inPNG, png_bytep outBytes, std::size_t inSize)
{
    auto& reading = *static_cast<Reading*>(png_get_io_ptr(inPNG));
    if (inSize > reading.left) {
        png_error(inPNG, "breaks off");
    }
    std::memcpy(outBytes, reading.next, inSize);
    reading.next += inSize;
    reading.left -= inSize;
}

void ReadPicture(png_structp inPNG, png_infop inInfo, std::byte* outPixels, std::size_t inRowBytes)
{
    png_read_info(inPNG, inInfo);
    png_set_expand(inPNG);
    png_set_bgr(inPNG);
    png_set_add_alpha(inPNG, 0xFFFF, PNG_FILLER_AFTER);
    png_set_swap(inPNG);
    png_read_update_info(inPNG, inInfo);
    for (std::uint32_t y = png_get_image_height(inPNG, inInfo); y > 0; --y, outPixels += inRowBytes) {
        png_read_row(inPNG, reinterpret_cast<png_bytep>(outPixels), nullptr);
    }
    png_read_end(inPNG, nullptr);
}

/// The floor: libpng straight into BGRA, from memory, as its manual shows it.
void DecodeWithLibpng(const Bytes& inBytes, std::byte* outPixels, std::size_t inRowBytes)
{
    Reading reading{inBytes.data(), inBytes.size()};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        throw std::runtime_error("libpng refuses a picture");
    }
    png_set_read_fn(png, &reading, &ReadBytes);
    ReadPicture(png, info, outPixels, inRowBytes);
    png_destroy_read_struct(&png, &info, nullptr);
}

MF::IVideoFrameRef NewFrame(const MF::IVideoFrameRef& inLike)
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, inLike->GetPixelFormat(), inLike->GetWidth(), inLike->GetHeight(),
                              inLike->GetPixelAspectRatio(), false, false) ||
        !frame->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    return frame;
}

void Measure(const char* inName, const MF::IVideoFrameRef& inPicture, double inGoal)
{
    const ScratchFolder folder;
    const std::string paths[] = {folder.Path() + "/first.png", folder.Path() + "/second.png"};
    WritePNGFile(inPicture, paths[0]);
    if (inPicture->GetPixelFormat() == kiomediatypes::kPixelFormat_BGRA_4444_8u) {
        WritePNGFile(WithChangedPixels(inPicture, 0.001), paths[1]);
    } else {
        WritePNGFile(inPicture, paths[1]);
        std::ofstream(paths[1], std::ios::binary | std::ios::app) << "differs"; // else decoded once
    }
    const Bytes bytes[] = {ReadFile(paths[0]), ReadFile(paths[1])};
    const kiocore::UTF16String names[] = {kiocore::utility::ToUTF16(paths[0]),
                                          kiocore::utility::ToUTF16(paths[1])};
    const auto floor = [&] {
        return Timed(CLOCK_PROCESS_CPUTIME_ID, [&] {
            MF::IVideoFrameRef frames[2];
            for (int each = 0; each < 2; ++each) {
                frames[each] = NewFrame(inPicture);
                const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory = frames[each];
                DecodeWithLibpng(bytes[each], memory->GetWritablePixels(), memory->GetRowBytes());
            }
        });
    };
    const auto ours = [&] {
        return Timed(CLOCK_PROCESS_CPUTIME_ID, [&] {
            const VF::PNGPair pair = VF::DecompressPNGs(names[0], names[1]);
            if (!pair.first || !pair.second) {
                throw std::runtime_error(pair.firstReason + pair.secondReason);
            }
        });
    };
    PrintRow(inName, Compare(floor, ours, 9, 1), inGoal, "ms");
}

MF::IVideoFrameRef AsDeep(const MF::IVideoFrameRef& inPicture)
{
    MF::IVideoFrameRef deep;
    if (!VF::CreateVideoFrame(deep, kiomediatypes::kPixelFormat_BGRA_4444_16u, inPicture->GetWidth(),
                              inPicture->GetHeight(), inPicture->GetPixelAspectRatio(), false, false) ||
        !deep->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> from = inPicture;
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> to = deep;
    for (std::uint32_t y = 0; y < inPicture->GetHeight(); ++y) {
        const auto* const source =
            reinterpret_cast<const std::uint8_t*>(from->GetPixels()) + y * from->GetRowBytes();
        auto* const row = reinterpret_cast<std::uint16_t*>(to->GetWritablePixels() + y * to->GetRowBytes());
        for (std::size_t at = 0; at < std::size_t{4} * inPicture->GetWidth(); ++at) {
            row[at] = static_cast<std::uint16_t>(source[at] * 257);
        }
    }
    return deep;
}

} // namespace

void BenchDecode()
{
    PrintHeader("Decoding two PNG files with all checks, against libpng from memory (CPU time)");
    Measure("photo 3840 x 2160, RGB 8", MakePicture(Look::kPhoto, 3840, 2160), 0.45);
    Measure("interface 3840 x 2160, RGB 8", MakePicture(Look::kInterface, 3840, 2160), 0.5);
    Measure("photo 1280 x 720, RGB 8", MakePicture(Look::kPhoto, 1280, 720), 0.45);
    Measure("interface 1280 x 720, RGB 8", MakePicture(Look::kInterface, 1280, 720), 0.5);
    Measure("interface 1920 x 1080, RGB 16", AsDeep(MakePicture(Look::kInterface, 1920, 1080)), 0.5);
}

} // namespace bench
