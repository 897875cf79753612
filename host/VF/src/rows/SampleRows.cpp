#include "SampleRows.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/SampleRows.cpp"
#include <hwy/foreach_target.h>
// Has to follow.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Integers = hn::Rebind<std::int32_t, Floats>;

template <typename T>
void Widen(const T* inRow, std::size_t inCount, float inDivisor, float* outRow)
{
    const Floats floats;
    const hn::Rebind<T, Floats> narrow;
    const std::size_t lanes = hn::Lanes(floats);
    const auto divisor = hn::Set(floats, inDivisor);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        const auto wide = hn::ConvertTo(floats, hn::PromoteTo(Integers(), hn::LoadU(narrow, inRow + done)));
        hn::StoreU(hn::Div(wide, divisor), floats, outRow + done);
    }
    for (; done < inCount; ++done) {
        outRow[done] = static_cast<float>(inRow[done]) / inDivisor;
    }
}

template <typename T>
void Narrow(const float* inRow, std::size_t inCount, float inFull, T* outRow)
{
    const Floats floats;
    const hn::Rebind<T, Floats> narrow;
    const std::size_t lanes = hn::Lanes(floats);
    const auto full = hn::Set(floats, inFull);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        const auto value = hn::Mul(hn::LoadU(floats, inRow + done), full);
        const auto clamped = hn::Min(hn::Max(value, hn::Zero(floats)), full); // not-a-number becomes 0
        hn::StoreU(hn::DemoteTo(narrow, hn::NearestInt(clamped)), narrow, outRow + done);
    }
    for (; done < inCount; ++done) {
        const float value = inRow[done] * inFull;
        const float clamped = value > 0 ? (value < inFull ? value : inFull) : 0;
        outRow[done] = static_cast<T>(__builtin_lrintf(clamped));
    }
}

void Widen8(const std::uint8_t* in, std::size_t n, float divisor, float* out)
{
    Widen(in, n, divisor, out);
}
void Widen16(const std::uint16_t* in, std::size_t n, float divisor, float* out)
{
    Widen(in, n, divisor, out);
}
void Narrow8(const float* in, std::size_t n, std::uint8_t* out)
{
    Narrow(in, n, 255.0f, out);
}
void Narrow16(const float* in, std::size_t n, std::uint16_t* out)
{
    Narrow(in, n, 65535.0f, out);
}

void Times(float* ioColor, const float* inAlpha, std::size_t inCount)
{
    const Floats floats;
    const std::size_t lanes = hn::Lanes(floats);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        const auto product = hn::Mul(hn::LoadU(floats, ioColor + done), hn::LoadU(floats, inAlpha + done));
        hn::StoreU(product, floats, ioColor + done);
    }
    for (; done < inCount; ++done) {
        ioColor[done] *= inAlpha[done];
    }
}

void Over(float* ioColor, const float* inAlpha, std::size_t inCount)
{
    const Floats floats;
    const std::size_t lanes = hn::Lanes(floats);
    const auto least = hn::Set(floats, kLeastAlpha);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        const auto alpha = hn::LoadU(floats, inAlpha + done);
        const auto quotient = hn::Div(hn::LoadU(floats, ioColor + done), alpha);
        hn::StoreU(hn::IfThenElseZero(hn::Ge(alpha, least), quotient), floats, ioColor + done);
    }
    for (; done < inCount; ++done) {
        ioColor[done] = inAlpha[done] >= kLeastAlpha ? ioColor[done] / inAlpha[done] : 0.0f;
    }
}

template <typename D, typename T>
HWY_INLINE hn::Vec<Floats> LoadAsFloats(D inFloats, const T* inFrom)
{
    if constexpr (std::is_same_v<T, float>) {
        return hn::LoadU(inFloats, inFrom);
    } else {
        const hn::Rebind<T, D> narrow;
        return hn::ConvertTo(inFloats, hn::PromoteTo(Integers(), hn::LoadU(narrow, inFrom)));
    }
}

template <typename T>
void AddWeighted(float* ioSum, const T* inRow, float inWeight, std::size_t inCount)
{
    const Floats floats;
    const std::size_t lanes = hn::Lanes(floats);
    const auto weight = hn::Set(floats, inWeight);
    std::size_t done = 0;
    for (; done + lanes <= inCount; done += lanes) {
        const auto row = LoadAsFloats(floats, inRow + done);
        hn::StoreU(hn::MulAdd(row, weight, hn::LoadU(floats, ioSum + done)), floats, ioSum + done);
    }
    for (; done < inCount; ++done) {
        ioSum[done] += static_cast<float>(inRow[done]) * inWeight;
    }
}

void AddWeighted8(float* sum, const std::uint8_t* in, float weight, std::size_t n)
{
    AddWeighted(sum, in, weight, n);
}
void AddWeighted16(float* sum, const std::uint16_t* in, float weight, std::size_t n)
{
    AddWeighted(sum, in, weight, n);
}
void AddWeighted32(float* sum, const float* in, float weight, std::size_t n)
{
    AddWeighted(sum, in, weight, n);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(Widen8);
HWY_EXPORT(Widen16);
HWY_EXPORT(Narrow8);
HWY_EXPORT(Narrow16);
HWY_EXPORT(Times);
HWY_EXPORT(Over);
HWY_EXPORT(AddWeighted8);
HWY_EXPORT(AddWeighted16);
HWY_EXPORT(AddWeighted32);

} // namespace

void ToFloats(SampleType inType, const std::byte* inRow, std::size_t inCount, float inDivisor, float* outRow)
{
    switch (inType) {
    case SampleType::kByte:
        HWY_DYNAMIC_DISPATCH(Widen8)
        (reinterpret_cast<const std::uint8_t*>(inRow), inCount, inDivisor, outRow);
        break;
    case SampleType::kWord:
        HWY_DYNAMIC_DISPATCH(Widen16)
        (reinterpret_cast<const std::uint16_t*>(inRow), inCount, inDivisor, outRow);
        break;
    case SampleType::kFloat:
        std::transform(reinterpret_cast<const float*>(inRow), reinterpret_cast<const float*>(inRow) + inCount,
                       outRow, [&](float inSample) { return inSample / inDivisor; });
        break;
    }
}

void FromFloats(const float* inRow, std::size_t inCount, SampleType inType, std::byte* outRow)
{
    switch (inType) {
    case SampleType::kByte:
        HWY_DYNAMIC_DISPATCH(Narrow8)(inRow, inCount, reinterpret_cast<std::uint8_t*>(outRow));
        break;
    case SampleType::kWord:
        HWY_DYNAMIC_DISPATCH(Narrow16)(inRow, inCount, reinterpret_cast<std::uint16_t*>(outRow));
        break;
    case SampleType::kFloat:
        std::memcpy(outRow, inRow, inCount * sizeof(float));
        break;
    }
}

void Premultiply(float* ioColor, const float* inAlpha, std::size_t inCount)
{
    HWY_DYNAMIC_DISPATCH(Times)(ioColor, inAlpha, inCount);
}
void Unpremultiply(float* ioColor, const float* inAlpha, std::size_t inCount)
{
    HWY_DYNAMIC_DISPATCH(Over)(ioColor, inAlpha, inCount);
}
void Accumulate(float* ioSum, SampleType inType, const std::byte* inRow, float inWeight, std::size_t inCount)
{
    switch (inType) {
    case SampleType::kByte:
        HWY_DYNAMIC_DISPATCH(AddWeighted8)
        (ioSum, reinterpret_cast<const std::uint8_t*>(inRow), inWeight, inCount);
        break;
    case SampleType::kWord:
        HWY_DYNAMIC_DISPATCH(AddWeighted16)
        (ioSum, reinterpret_cast<const std::uint16_t*>(inRow), inWeight, inCount);
        break;
    case SampleType::kFloat:
        HWY_DYNAMIC_DISPATCH(AddWeighted32)
        (ioSum, reinterpret_cast<const float*>(inRow), inWeight, inCount);
        break;
    }
}

} // namespace VF
#endif
