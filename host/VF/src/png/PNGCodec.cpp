#include "PNGCodec.h"

#include "PNGErrors.h"

#include <VF/VideoFrames.h>

#include <png.h>

#include <bit>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <new>

// libpng reports errors by longjmp. Between a setjmp and whatever may jump to it stand only plain values and
// pointers: what the work needs is made before, in a state that outlives it, and let go after.

namespace VF {

using namespace kiomediatypes;

namespace {

constexpr bool kIsLittleEndian = std::endian::native == std::endian::little;

constexpr std::size_t kReadBlock = 128 * 1024;

struct ReadState {
    SteppingReader* reader = nullptr;
    std::uint64_t offset = 0;
    const PNGHeader* header = nullptr;
    std::byte* pixels = nullptr;
    std::size_t rowBytes = 0;
    PNGMessages messages;
    png_structp png = nullptr;
    png_infop info = nullptr;

    ~ReadState() { png_destroy_read_struct(&png, &info, nullptr); }
};

void ReadBytes(png_structp inPNG, png_bytep outBytes, std::size_t inSize)
{
    auto& state = *static_cast<ReadState*>(png_get_io_ptr(inPNG));
    if (inSize > state.header->endOfData - state.offset ||
        !state.reader->ReadAt(state.offset, outBytes, inSize)) {
        png_error(inPNG, "data breaks off");
    }
    state.offset += inSize;
}

void SetUpReading(ReadState& ioState)
{
    png_structp const png = ioState.png;
    png_set_read_fn(png, &ioState, &ReadBytes);
    png_set_user_limits(png, kMostPixelsPerSide, kMostPixelsPerSide);
    png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
    // Of ancillary chunks only "tRNS" matters; the others (profiles, texts, which can be large) are passed
    // over, whatever their size.
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_chunk_malloc_max(png, 0);
    // Some encoders state a smaller window than they use.
    png_set_option(png, PNG_MAXIMUM_INFLATE_WINDOW, PNG_OPTION_ON);
}

void SetUpTransforms(png_structp inPNG, png_infop inInfo)
{
    png_set_expand(inPNG); // palette and transparent colours too
    png_set_gray_to_rgb(inPNG);
    png_set_bgr(inPNG);
    png_set_add_alpha(inPNG, 0xFFFF, PNG_FILLER_AFTER);
    if (kIsLittleEndian) {
        png_set_swap(inPNG);
    }
    png_set_interlace_handling(inPNG);
    png_read_update_info(inPNG, inInfo);
}

/// A file may have changed since its header was looked at, and the frame made.
bool HasThatForm(png_structp inPNG, png_infop inInfo, const PNGHeader& inHeader)
{
    return png_get_image_width(inPNG, inInfo) == inHeader.width &&
           png_get_image_height(inPNG, inInfo) == inHeader.height &&
           png_get_bit_depth(inPNG, inInfo) == inHeader.bitDepth &&
           png_get_color_type(inPNG, inInfo) == inHeader.colorType &&
           (png_get_interlace_type(inPNG, inInfo) != PNG_INTERLACE_NONE) == inHeader.isInterlaced;
}

bool Decode(ReadState& ioState)
{
    if (setjmp(png_jmpbuf(ioState.png))) {
        return false;
    }
    SetUpReading(ioState);
    png_read_info(ioState.png, ioState.info);
    if (!HasThatForm(ioState.png, ioState.info, *ioState.header)) {
        png_error(ioState.png, "its header has changed meanwhile");
    }
    // From here on what is merely improper is about the image data themselves: their end, their check sum.
    png_set_benign_errors(ioState.png, 0);
    png_set_check_for_invalid_index(ioState.png, -1); // such pixels are black
    SetUpTransforms(ioState.png, ioState.info);
    const std::size_t used = std::size_t{ioState.header->width} * (ioState.header->bitDepth == 16 ? 8 : 4);
    if (png_get_rowbytes(ioState.png, ioState.info) != used) {
        png_error(ioState.png, "rows have an unexpected form");
    }
    for (int pass = ioState.header->isInterlaced ? 7 : 1; pass > 0; --pass) {
        std::byte* row = ioState.pixels;
        for (std::uint32_t y = 0; y < ioState.header->height; ++y, row += ioState.rowBytes) {
            png_read_row(ioState.png, reinterpret_cast<png_bytep>(row), nullptr);
        }
    }
    png_read_end(ioState.png, nullptr);
    return true;
}

} // namespace

std::string DecodePNG(IByteSource& inSource, const PNGHeader& inHeader, std::byte* outPixels,
                      std::size_t inRowBytes)
{
    const std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[kReadBlock]);
    SteppingReader reader(inSource, block.get(), kReadBlock);
    ReadState state;
    state.reader = &reader;
    state.header = &inHeader;
    state.pixels = outPixels;
    state.rowBytes = inRowBytes;
    state.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state.messages, &OnPNGError, &OnPNGWarning);
    state.info = state.png ? png_create_info_struct(state.png) : nullptr;
    if (!state.info || !block) {
        return "out of memory";
    }
    if (Decode(state)) {
        return {};
    }
    const std::string failure = inSource.Failure();
    return failure.empty() ? std::string(state.messages.error) : failure;
}

} // namespace VF
