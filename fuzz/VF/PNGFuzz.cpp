// Any bytes as a PNG. Sums over the bytes of a chunk are put right first: no mutation would get past them
// otherwise. What was read is written again and must come back the same.

#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using kiocore::utility::SharedRecycledMemory;
using MF::IVideoFrameRef;

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

constexpr std::array<std::uint32_t, 256> MakeSumTable()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t sum = byte;
        for (int bit = 0; bit < 8; ++bit) {
            sum = sum & 1 ? 0xEDB88320u ^ sum >> 1 : sum >> 1;
        }
        table[byte] = sum;
    }
    return table;
}

/// Gives each chunk that is all there the check sum that belongs to it.
void MendCheckSums(std::vector<unsigned char>& ioBytes)
{
    static constexpr auto kTable = MakeSumTable();
    for (std::size_t at = 8; ioBytes.size() >= at + 12;) {
        const std::size_t length =
            std::size_t{ioBytes[at]} << 24 | ioBytes[at + 1] << 16 | ioBytes[at + 2] << 8 | ioBytes[at + 3];
        if (length > ioBytes.size() - at - 12) {
            return;
        }
        std::uint32_t sum = ~0u;
        for (std::size_t byte = at + 4; byte < at + 8 + length; ++byte) {
            sum = kTable[(sum ^ ioBytes[byte]) & 0xFF] ^ sum >> 8;
        }
        sum = ~sum;
        for (int byte = 0; byte < 4; ++byte) {
            ioBytes[at + 8 + length + byte] = static_cast<unsigned char>(sum >> (24 - 8 * byte));
        }
        at += length + 12;
    }
}

SharedRecycledMemory ToMemory(const unsigned char* inBytes, std::size_t inSize)
{
    SharedRecycledMemory memory = kiocore::utility::MakeSharedRecycledMemory(inSize);
    if (memory) {
        std::memcpy(memory.bytes.get(), inBytes, inSize);
    }
    return memory;
}

/// All that counts of a frame's pixels, without the padding of rows.
std::vector<std::byte> PixelsOf(const IVideoFrameRef& inFrame)
{
    const VF::InterfaceRef<VF::IVideoFrameMemoryAccess> access = inFrame;
    const VF::FrameLayout layout =
        VF::LayoutOf(inFrame->GetPixelFormat(), inFrame->GetWidth(), inFrame->GetHeight(), false);
    std::vector<std::byte> pixels;
    for (std::uint32_t row = 0; row < inFrame->GetHeight(); ++row) {
        const std::byte* const start = access->GetPixels() + row * access->GetRowBytes();
        pixels.insert(pixels.end(), start, start + layout.planes[0].usedBytes);
    }
    return pixels;
}

void Decode(const SharedRecycledMemory& inBytes)
{
    const IVideoFrameRef frame = VF::DecompressPNG(inBytes);
    if (!frame) {
        return;
    }
    // Reading every pixel also shows whether all were written (to a sanitizer, or in comparing).
    const std::vector<std::byte> pixels = PixelsOf(frame);
    const IVideoFrameRef again = VF::DecompressPNG(VF::CompressPNG(frame, 1));
    Require(bool(again));
    Require(again->GetWidth() == frame->GetWidth() && again->GetHeight() == frame->GetHeight() &&
            again->GetPixelFormat() == frame->GetPixelFormat());
    Require(PixelsOf(again) == pixels);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    Decode(ToMemory(inBytes, inSize));
    std::vector<unsigned char> mended(inBytes, inBytes + inSize);
    MendCheckSums(mended);
    // A picture of many megapixels fits in a few kilobytes; each would take the time of thousands of others.
    const auto side = [&](std::size_t inAt) {
        return inSize < 33 ? 0
                           : std::uint64_t{mended[inAt]} << 24 | mended[inAt + 1] << 16 |
                                 mended[inAt + 2] << 8 | mended[inAt + 3];
    };
    if (side(16) * side(20) <= 1 << 20) {
        Decode(ToMemory(mended.data(), mended.size()));
    }
    return 0;
}
