#include "ComponentRows.h"

#include <algorithm>
#include <cstring>

namespace trhost::effects::avfilter {
namespace {

constexpr int kPixelsInGroup = 6;
constexpr int kBytesInGroup = 16;

// Steps that are known while compiling are what lets the compiler use wide instructions.
template <typename T, int FromStep, int ToStep>
void CopyRow(const T* __restrict inFrom, int inFromStep, T* __restrict outTo, int inToStep, int inCount)
{
    const std::ptrdiff_t from = FromStep ? FromStep : inFromStep;
    const std::ptrdiff_t to = ToStep ? ToStep : inToStep;
    for (std::ptrdiff_t i = 0; i < inCount; ++i) {
        outTo[i * to] = inFrom[i * from];
    }
}

template <typename T>
using RowFunction = void (*)(const T*, int, T*, int, int);

template <typename T, int FromStep>
RowFunction<T> RowFunctionTo(int inToStep)
{
    switch (inToStep) {
    case 1:
        return &CopyRow<T, FromStep, 1>;
    case 2:
        return &CopyRow<T, FromStep, 2>;
    case 4:
        return &CopyRow<T, FromStep, 4>;
    default:
        return &CopyRow<T, FromStep, 0>;
    }
}

template <typename T>
RowFunction<T> RowFunctionFor(int inFromStep, int inToStep)
{
    switch (inFromStep) {
    case 1:
        return RowFunctionTo<T, 1>(inToStep);
    case 2:
        return RowFunctionTo<T, 2>(inToStep);
    case 4:
        return RowFunctionTo<T, 4>(inToStep);
    default:
        return RowFunctionTo<T, 0>(inToStep);
    }
}

template <typename T>
T* RowOf(const Samples& inSamples, int inRow)
{
    return reinterpret_cast<T*>(inSamples.first + inRow * inSamples.rowBytes);
}

template <typename T>
void CopyAll(const Samples& inFrom, const Samples& inTo)
{
    const int fromStep = inFrom.stepBytes / int(sizeof(T));
    const int toStep = inTo.stepBytes / int(sizeof(T));
    const RowFunction<T> copyRow = RowFunctionFor<T>(fromStep, toStep);
    for (int row = 0; row < inTo.height; ++row) {
        copyRow(RowOf<T>(inFrom, row), fromStep, RowOf<T>(inTo, row), toStep, inTo.width);
    }
}

/// The place of a value in a group: which word, and how far up.
struct Place {
    int word;
    int shift;
};
constexpr Place kLuma[kPixelsInGroup] = {{0, 10}, {1, 0}, {1, 20}, {2, 10}, {3, 0}, {3, 20}};
constexpr Place kBlue[kPixelsInGroup / 2] = {{0, 0}, {1, 10}, {2, 20}};
constexpr Place kRed[kPixelsInGroup / 2] = {{0, 20}, {2, 0}, {3, 10}};

struct Group {
    std::uint32_t words[4] = {};

    explicit Group(const std::uint8_t* inBytes)
    {
        for (int i = 0; i < kBytesInGroup; ++i) {
            words[i / 4] |= std::uint32_t(inBytes[i]) << (8 * (i % 4));
        }
    }
    Group() = default;
    void Write(std::uint8_t* outBytes) const
    {
        for (int i = 0; i < kBytesInGroup; ++i) {
            outBytes[i] = std::uint8_t(words[i / 4] >> (8 * (i % 4)));
        }
    }
    std::uint16_t Get(Place inPlace) const { return words[inPlace.word] >> inPlace.shift & 1023; }
    void Set(Place inPlace, std::uint16_t inCode)
    {
        words[inPlace.word] |= (std::uint32_t(inCode) & 1023) << inPlace.shift;
    }
};

} // namespace

void CopySamples(const Samples& inFrom, const Samples& inTo, int inSampleBytes)
{
    switch (inSampleBytes) {
    case 1:
        return CopyAll<std::uint8_t>(inFrom, inTo);
    case 2:
        return CopyAll<std::uint16_t>(inFrom, inTo);
    default:
        return CopyAll<std::uint32_t>(inFrom, inTo);
    }
}

void FillSamples(const Samples& inTo, int inSampleBytes, const void* inValue)
{
    for (int row = 0; row < inTo.height; ++row) {
        std::uint8_t* sample = RowOf<std::uint8_t>(inTo, row);
        for (int i = 0; i < inTo.width; ++i, sample += inTo.stepBytes) {
            std::memcpy(sample, inValue, std::size_t(inSampleBytes));
        }
    }
}

void UnpackV210Row(const std::uint8_t* inRow, int inWidth, const Planes422& outPlanes)
{
    for (int x = 0; x < inWidth; x += kPixelsInGroup, inRow += kBytesInGroup) {
        const Group group(inRow);
        const int count = std::min(kPixelsInGroup, inWidth - x);
        for (int i = 0; i < count; ++i) {
            outPlanes.y[x + i] = group.Get(kLuma[i]);
        }
        for (int i = 0; i < (count + 1) / 2; ++i) {
            outPlanes.cb[x / 2 + i] = group.Get(kBlue[i]);
            outPlanes.cr[x / 2 + i] = group.Get(kRed[i]);
        }
    }
}

void PackV210Row(const Planes422& inPlanes, int inWidth, std::uint8_t* outRow)
{
    for (int x = 0; x < inWidth; x += kPixelsInGroup, outRow += kBytesInGroup) {
        Group group;
        for (int i = 0; i < kPixelsInGroup; ++i) {
            const int pixel = std::min(x + i, inWidth - 1);
            group.Set(kLuma[i], inPlanes.y[pixel]);
            if (i % 2 == 0) {
                group.Set(kBlue[i / 2], inPlanes.cb[pixel / 2]);
                group.Set(kRed[i / 2], inPlanes.cr[pixel / 2]);
            }
        }
        group.Write(outRow);
    }
}

} // namespace trhost::effects::avfilter
