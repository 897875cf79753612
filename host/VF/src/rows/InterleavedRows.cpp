#include "InterleavedRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/InterleavedRows.cpp"
#include <hwy/foreach_target.h>
// Has to follow.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

template <typename T>
bool Split(const T* inPixels, std::size_t inCount, T* const* outRows, int inAlphaRow, T inOpaque)
{
    const hn::ScalableTag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    const bool checked = inAlphaRow >= 0 && !outRows[inAlphaRow];
    const auto opaque = hn::Set(d, inOpaque);
    auto different = hn::Zero(d);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        hn::Vec<decltype(d)> a, b, c, e;
        hn::LoadInterleaved4(d, inPixels + done * 4, a, b, c, e);
        if (outRows[0]) {
            hn::StoreU(a, d, outRows[0] + done);
        }
        hn::StoreU(b, d, outRows[1] + done);
        hn::StoreU(c, d, outRows[2] + done);
        if (outRows[3]) {
            hn::StoreU(e, d, outRows[3] + done);
        }
        if (checked) {
            different = hn::Or(different, hn::Xor(inAlphaRow == 0 ? a : e, opaque));
        }
    }
    bool same = hn::AllTrue(d, hn::Eq(different, hn::Zero(d)));
    for (; done < inCount; ++done) {
        for (int row = 0; row < 4; ++row) {
            const T sample = inPixels[done * 4 + static_cast<std::size_t>(row)];
            if (outRows[row]) {
                outRows[row][done] = sample;
            } else if (row == inAlphaRow) {
                same = same && sample == inOpaque;
            }
        }
    }
    return same;
}

template <typename T>
void Join(T* outPixels, std::size_t inCount, const T* const* inRows, T inOpaque)
{
    const hn::ScalableTag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto opaque = hn::Set(d, inOpaque);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        const auto a = inRows[0] ? hn::LoadU(d, inRows[0] + done) : opaque;
        const auto b = hn::LoadU(d, inRows[1] + done);
        const auto c = hn::LoadU(d, inRows[2] + done);
        const auto e = inRows[3] ? hn::LoadU(d, inRows[3] + done) : opaque;
        hn::StoreInterleaved4(a, b, c, e, d, outPixels + done * 4);
    }
    for (; done < inCount; ++done) {
        for (int row = 0; row < 4; ++row) {
            outPixels[done * 4 + static_cast<std::size_t>(row)] = inRows[row] ? inRows[row][done] : inOpaque;
        }
    }
}

// Not templates themselves, as a table of functions needs their address.
bool Split8(const std::uint8_t* in, std::size_t n, std::uint8_t* const* out, int alpha, std::uint8_t opaque)
{
    return Split(in, n, out, alpha, opaque);
}
bool Split16(const std::uint16_t* in, std::size_t n, std::uint16_t* const* out, int alpha,
             std::uint16_t opaque)
{
    return Split(in, n, out, alpha, opaque);
}
bool Split32(const std::uint32_t* in, std::size_t n, std::uint32_t* const* out, int alpha,
             std::uint32_t opaque)
{
    return Split(in, n, out, alpha, opaque);
}
void Join8(std::uint8_t* out, std::size_t n, const std::uint8_t* const* in, std::uint8_t opaque)
{
    Join(out, n, in, opaque);
}
void Join16(std::uint16_t* out, std::size_t n, const std::uint16_t* const* in, std::uint16_t opaque)
{
    Join(out, n, in, opaque);
}
void Join32(std::uint32_t* out, std::size_t n, const std::uint32_t* const* in, std::uint32_t opaque)
{
    Join(out, n, in, opaque);
}

void SplitPairs(const std::uint8_t* inPairs, std::size_t inCount, std::uint8_t* outY, std::uint8_t* outCb,
                std::uint8_t* outCr)
{
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        hn::Vec<decltype(d)> cb, first, cr, second;
        hn::LoadInterleaved4(d, inPairs + done * 4, cb, first, cr, second);
        hn::StoreU(cb, d, outCb + done);
        hn::StoreU(cr, d, outCr + done);
        hn::StoreInterleaved2(first, second, d, outY + done * 2);
    }
    for (; done < inCount; ++done) {
        const std::uint8_t* const pair = inPairs + done * 4;
        outCb[done] = pair[0];
        outY[done * 2] = pair[1];
        outCr[done] = pair[2];
        outY[done * 2 + 1] = pair[3];
    }
}

void JoinPairs(std::uint8_t* outPairs, std::size_t inCount, const std::uint8_t* inY, const std::uint8_t* inCb,
               const std::uint8_t* inCr)
{
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        hn::Vec<decltype(d)> first, second;
        hn::LoadInterleaved2(d, inY + done * 2, first, second);
        hn::StoreInterleaved4(hn::LoadU(d, inCb + done), first, hn::LoadU(d, inCr + done), second, d,
                              outPairs + done * 4);
    }
    for (; done < inCount; ++done) {
        std::uint8_t* const pair = outPairs + done * 4;
        pair[0] = inCb[done];
        pair[1] = inY[done * 2];
        pair[2] = inCr[done];
        pair[3] = inY[done * 2 + 1];
    }
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(Split8);
HWY_EXPORT(Split16);
HWY_EXPORT(Split32);
HWY_EXPORT(Join8);
HWY_EXPORT(Join16);
HWY_EXPORT(Join32);
HWY_EXPORT(SplitPairs);
HWY_EXPORT(JoinPairs);

} // namespace

template <>
bool SplitFour(const std::uint8_t* inPixels, std::size_t inCount, std::uint8_t* const (&outRows)[4],
               int inAlphaRow, std::uint8_t inOpaque)
{
    return HWY_DYNAMIC_DISPATCH(Split8)(inPixels, inCount, outRows, inAlphaRow, inOpaque);
}
template <>
bool SplitFour(const std::uint16_t* inPixels, std::size_t inCount, std::uint16_t* const (&outRows)[4],
               int inAlphaRow, std::uint16_t inOpaque)
{
    return HWY_DYNAMIC_DISPATCH(Split16)(inPixels, inCount, outRows, inAlphaRow, inOpaque);
}
template <>
bool SplitFour(const std::uint32_t* inPixels, std::size_t inCount, std::uint32_t* const (&outRows)[4],
               int inAlphaRow, std::uint32_t inOpaque)
{
    return HWY_DYNAMIC_DISPATCH(Split32)(inPixels, inCount, outRows, inAlphaRow, inOpaque);
}
template <>
void JoinFour(std::uint8_t* outPixels, std::size_t inCount, const std::uint8_t* const (&inRows)[4],
              std::uint8_t inOpaque)
{
    HWY_DYNAMIC_DISPATCH(Join8)(outPixels, inCount, inRows, inOpaque);
}
template <>
void JoinFour(std::uint16_t* outPixels, std::size_t inCount, const std::uint16_t* const (&inRows)[4],
              std::uint16_t inOpaque)
{
    HWY_DYNAMIC_DISPATCH(Join16)(outPixels, inCount, inRows, inOpaque);
}
template <>
void JoinFour(std::uint32_t* outPixels, std::size_t inCount, const std::uint32_t* const (&inRows)[4],
              std::uint32_t inOpaque)
{
    HWY_DYNAMIC_DISPATCH(Join32)(outPixels, inCount, inRows, inOpaque);
}

void SplitUYVY(const std::uint8_t* inPairs, std::size_t inCount, std::uint8_t* outY, std::uint8_t* outCb,
               std::uint8_t* outCr)
{
    HWY_DYNAMIC_DISPATCH(SplitPairs)(inPairs, inCount, outY, outCb, outCr);
}
void JoinUYVY(std::uint8_t* outPairs, std::size_t inCount, const std::uint8_t* inY, const std::uint8_t* inCb,
              const std::uint8_t* inCr)
{
    HWY_DYNAMIC_DISPATCH(JoinPairs)(outPairs, inCount, inY, inCb, inCr);
}

} // namespace VF
#endif
