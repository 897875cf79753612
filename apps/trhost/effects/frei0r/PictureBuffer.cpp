#include "PictureBuffer.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace trhost::effects::frei0r {
namespace {

constexpr std::size_t kAlignment = 64;
constexpr std::size_t kLeastAlignment = 16; // what the format promises plug-ins
constexpr std::size_t kLeastStripBytes = 4096;
constexpr unsigned char kStripByte = 0x5C;
constexpr std::uint32_t kOpaqueBlack = 0xFF000000; // in either order

static_assert(std::endian::native == std::endian::little, "pixels are taken as little-endian words");

void CopyRow(std::uint32_t* outRow, const std::uint32_t* inRow, std::uint32_t inWidth, bool inExchange)
{
    if (!inExchange) {
        std::memcpy(outRow, inRow, std::size_t(inWidth) * 4);
        return;
    }
    for (std::uint32_t x = 0; x < inWidth; ++x) {
        const std::uint32_t pixel = inRow[x];
        outRow[x] = (pixel & 0xFF00FF00) | ((pixel >> 16) & 0xFF) | ((pixel & 0xFF) << 16);
    }
}

// A row and a bit: an overrun by one line is the usual one.
std::size_t StripBytes(std::uint32_t inPaddedWidth)
{
    if (IsPluginMemoryWatched()) {
        return 0;
    }
    return std::max(kLeastStripBytes, (std::size_t(inPaddedWidth) * 4 + 63) / 64 * 64);
}

bool IsStrip(const std::byte* inStrip, std::size_t inBytes)
{
    return std::all_of(inStrip, inStrip + inBytes,
                       [](std::byte inByte) { return inByte == std::byte{kStripByte}; });
}

} // namespace

PictureBuffer::PictureBuffer(std::uint32_t inWidth, std::uint32_t inHeight, MemoryUse inUse, bool inIsExact)
    : mWidth(inWidth), mHeight(inHeight), mPaddedWidth(inIsExact ? inWidth : Padded(inWidth)),
      mPaddedHeight(inIsExact ? inHeight : Padded(inHeight)), mStripBytes(StripBytes(mPaddedWidth)),
      mMemory(PictureBytes() + 2 * mStripBytes, inIsExact ? kLeastAlignment : kAlignment, inUse),
      mPixels(reinterpret_cast<std::uint32_t*>(mMemory.Get() + mStripBytes))
{
    std::memset(mMemory.Get(), kStripByte, mStripBytes);
    std::memset(mMemory.Get() + mStripBytes + PictureBytes(), kStripByte, mStripBytes);
}

void PictureBuffer::CopyFrom(const std::byte* inPixels, std::size_t inRowBytes, bool inExchange)
{
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        std::uint32_t* const row = mPixels + std::size_t(y) * mPaddedWidth;
        CopyRow(row, reinterpret_cast<const std::uint32_t*>(inPixels + y * inRowBytes), mWidth, inExchange);
        std::fill(row + mWidth, row + mPaddedWidth, row[mWidth - 1]);
    }
    const std::uint32_t* const last = mPixels + std::size_t(mHeight - 1) * mPaddedWidth;
    for (std::uint32_t y = mHeight; y < mPaddedHeight; ++y) {
        std::memcpy(mPixels + std::size_t(y) * mPaddedWidth, last, std::size_t(mPaddedWidth) * 4);
    }
}

void PictureBuffer::CopyTo(std::byte* outPixels, std::size_t inRowBytes, bool inExchange) const
{
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        CopyRow(reinterpret_cast<std::uint32_t*>(outPixels + y * inRowBytes),
                mPixels + std::size_t(y) * mPaddedWidth, mWidth, inExchange);
    }
}

void PictureBuffer::CopyFrom(const PictureBuffer& inOther)
{
    std::memcpy(mPixels, inOther.mPixels, PictureBytes());
}

void PictureBuffer::FillWithBlack()
{
    std::fill_n(mPixels, PictureBytes() / 4, kOpaqueBlack);
}

bool PictureBuffer::IsIntact() const
{
    return IsStrip(mMemory.Get(), mStripBytes) &&
           IsStrip(mMemory.Get() + mStripBytes + PictureBytes(), mStripBytes);
}

} // namespace trhost::effects::frei0r
