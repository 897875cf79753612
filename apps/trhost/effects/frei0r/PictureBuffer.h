#pragma once

#include "../PluginMemory.h"

#include <cstddef>
#include <cstdint>

namespace trhost::effects::frei0r {

/// Memory for one picture in the form that frei0r demands: width and height multiples of 8, rows one behind
/// the other, 4 bytes a pixel. The picture stands at the top left; its right and bottom edges are repeated
/// into the rest. It starts at a multiple of 64 bytes, and around it lies a strip that nobody may write to,
/// in which small overruns of plug-ins are caught before they do harm, and seen. Memory that somebody else
/// watches over (IEffectEngine::SetFrameMemory) has no strips.
///
/// Threading: one thread at a time.
class PictureBuffer {
public:
    /// @param inIsExact  without padding, for who tries out whether a plug-in minds; memory then has the size
    /// of
    ///     the picture.
    /// @throws std::bad_alloc.
    PictureBuffer(std::uint32_t inWidth, std::uint32_t inHeight, MemoryUse inUse, bool inIsExact);

    std::uint32_t PaddedWidth() const { return mPaddedWidth; }
    std::uint32_t PaddedHeight() const { return mPaddedHeight; }
    std::uint32_t* Pixels() const { return mPixels; }

    /// @param inExchange  BGRA becomes RGBA, and the other way round.
    void CopyFrom(const std::byte* inPixels, std::size_t inRowBytes, bool inExchange);
    void CopyTo(std::byte* outPixels, std::size_t inRowBytes, bool inExchange) const;
    void CopyFrom(const PictureBuffer& inOther); ///< of the same size
    void FillWithBlack();                        ///< opaque
    /// False once something was written around the picture.
    bool IsIntact() const;

    static constexpr std::uint32_t Padded(std::uint32_t inPixels) { return (inPixels + 7) / 8 * 8; }

private:
    std::size_t PictureBytes() const { return std::size_t(mPaddedWidth) * mPaddedHeight * 4; }

    const std::uint32_t mWidth;
    const std::uint32_t mHeight;
    const std::uint32_t mPaddedWidth;
    const std::uint32_t mPaddedHeight;
    const std::size_t mStripBytes;
    PluginBuffer mMemory;
    std::uint32_t* const mPixels;
};

} // namespace trhost::effects::frei0r
