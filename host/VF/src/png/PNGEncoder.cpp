#include "PNGEncoder.h"

#include "GrowingBytes.h"
#include "PNGChunks.h"
#include "PNGErrors.h"

#include <VF/VideoFrames.h>

#include <bit>
#include <csetjmp>
#include <cstring>
#include <vector>

// libpng reports errors by longjmp. Between a setjmp and whatever may jump to it stand only plain values and
// pointers: what the work needs is made before, in a state that outlives it, and let go after.

namespace VF {

using namespace kiomediatypes;

namespace {

struct WriteState {
    const PNGSource* source = nullptr;
    int level = 0;
    std::vector<std::string> texts;  // data of chunks
    std::vector<std::byte> blackRow; // where rows are not in use
    GrowingBytes bytes;
    PNGMessages messages;
    png_structp png = nullptr;
    png_infop info = nullptr;

    ~WriteState() { png_destroy_write_struct(&png, &info); }
};

void WriteBytes(png_structp inPNG, png_bytep inBytes, std::size_t inSize)
{
    GrowingBytes& bytes = static_cast<WriteState*>(png_get_io_ptr(inPNG))->bytes;
    if (!bytes.TryReserve(inSize)) {
        png_error(inPNG, "out of memory");
    }
    std::memcpy(bytes.At(bytes.Size()), inBytes, inSize);
    bytes.Advance(inSize);
}

std::vector<std::byte> BlackRow(const PNGSource& inSource)
{
    const std::size_t channelBytes = inSource.Is16() ? 2 : 1;
    const std::size_t alpha = inSource.IsAlphaFirst() ? 0 : 3 * channelBytes;
    std::vector<std::byte> row(inSource.width * channelBytes * 4);
    for (std::size_t at = alpha; at < row.size(); at += channelBytes * 4) {
        std::memset(row.data() + at, 0xFF, channelBytes);
    }
    return row;
}

/// The filter of the row above is nearly free; trying all of them for each row takes as long as fast
/// compression does and saves a few per cent at 8 bits. At 16 bits the choice is no better than always that
/// one.
int FiltersFor(int inLevel, bool inIs16)
{
    if (inLevel == 0) {
        return PNG_FILTER_NONE;
    }
    return inLevel <= 3 || inIs16 ? PNG_FILTER_UP : PNG_ALL_FILTERS;
}

void SetUpForm(WriteState& ioState)
{
    const PNGSource& source = *ioState.source;
    png_structp const png = ioState.png;
    png_set_write_fn(png, &ioState, &WriteBytes, nullptr);
    png_set_user_limits(png, kMostPixelsPerSide, kMostPixelsPerSide);
    png_set_compression_level(png, ioState.level);
    png_set_compression_buffer_size(png, std::size_t{256} * 1024); // also the size of the chunks
    png_set_filter(png, PNG_FILTER_TYPE_BASE, FiltersFor(ioState.level, source.Is16()));
    png_set_IHDR(png, ioState.info, source.width, source.height, source.Is16() ? 16 : 8,
                 source.isOpaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (source.pixelsPerUnitX != 0) {
        png_set_pHYs(png, ioState.info, source.pixelsPerUnitX, source.pixelsPerUnitY, PNG_RESOLUTION_UNKNOWN);
    }
}

void SetUpTransforms(const WriteState& inState)
{
    const PNGSource& source = *inState.source;
    png_structp const png = inState.png;
    if (source.isOpaque) {
        png_set_filler(png, 0, source.IsAlphaFirst() ? PNG_FILLER_BEFORE : PNG_FILLER_AFTER);
    } else if (source.IsAlphaFirst()) {
        png_set_swap_alpha(png);
    }
    if (!source.IsAlphaFirst()) {
        png_set_bgr(png);
    }
    if (source.Is16() && std::endian::native == std::endian::little) {
        png_set_swap(png);
    }
}

bool Encode(WriteState& ioState)
{
    if (setjmp(png_jmpbuf(ioState.png))) {
        return false;
    }
    const PNGSource& source = *ioState.source;
    png_structp const png = ioState.png;
    SetUpForm(ioState);
    png_write_info(png, ioState.info);
    for (const std::string& text : ioState.texts) {
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("tEXt"),
                        reinterpret_cast<png_const_bytep>(text.data()), text.size());
    }
    SetUpTransforms(ioState);
    for (std::uint32_t y = 0; y < source.height; ++y) {
        const std::byte* const row = source.IsInUse(y) ? source.Row(y) : ioState.blackRow.data();
        png_write_row(png, reinterpret_cast<png_const_bytep>(row));
    }
    png_write_end(png, ioState.info);
    return true;
}

} // namespace

// Looks at 8 bytes at once: two pixels, or one.
bool IsOpaque(const PNGSource& inSource)
{
    const bool is16 = inSource.Is16();
    const std::size_t usedBytes = std::size_t{inSource.width} * (is16 ? 8 : 4);
    std::byte mask[8] = {};
    if (is16) {
        mask[6] = mask[7] = std::byte{0xFF};
    } else {
        const int alpha = inSource.IsAlphaFirst() ? 0 : 3;
        mask[alpha] = mask[4 + alpha] = std::byte{0xFF};
    }
    std::uint64_t wanted;
    std::memcpy(&wanted, mask, sizeof(wanted));
    for (std::uint32_t y = 0; y < inSource.height; ++y) {
        if (!inSource.IsInUse(y)) {
            continue;
        }
        const std::byte* const row = inSource.Row(y);
        std::uint64_t all = ~std::uint64_t{0};
        std::size_t at = 0;
        for (; at + 8 <= usedBytes; at += 8) {
            std::uint64_t bytes;
            std::memcpy(&bytes, row + at, sizeof(bytes));
            all &= bytes;
        }
        if (at < usedBytes) {
            std::uint64_t bytes = ~std::uint64_t{0};
            std::memcpy(&bytes, row + at, usedBytes - at);
            all &= bytes;
        }
        if ((all & wanted) != wanted) {
            return false;
        }
    }
    return true;
}

std::string EncodePNG(const PNGSource& inSource, int inLevel,
                      kiocore::utility::SharedRecycledMemory& outBytes)
{
    WriteState state;
    state.source = &inSource;
    state.level = inLevel;
    for (const auto& text : inSource.texts) {
        if (std::string data = PNGTextData(text); !data.empty()) {
            state.texts.push_back(std::move(data));
        }
    }
    state.blackRow = BlackRow(inSource);
    state.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state.messages, &OnPNGError, &OnPNGWarning);
    state.info = state.png ? png_create_info_struct(state.png) : nullptr;
    if (!state.info) {
        return "out of memory";
    }
    if (!Encode(state)) {
        return state.messages.error;
    }
    outBytes = state.bytes.Release();
    return {};
}

} // namespace VF
