#include "ComponentRows.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace trhost::effects::avfilter {
namespace {

constexpr int kMostComponents = 4;
constexpr int kPixelsInGroup = 6;
constexpr int kBytesInGroup = 16;

template <typename T>
T* RowOf(const Samples& inSamples, int inRow)
{
    return reinterpret_cast<T*>(inSamples.first + inRow * inSamples.rowBytes);
}

/// Where a row of each component begins.
template <typename T>
struct Rows {
    T* components[kMostComponents];

    Rows(const Samples* inSamples, int inCount, int inRow)
    {
        for (int i = 0; i < inCount; ++i) {
            components[i] = RowOf<T>(inSamples[i], inRow);
        }
    }
};

// What is known while compiling is what lets the compiler use wide instructions.
template <typename T, int Count, int FromStep, int ToStep>
void CopyRow(const Rows<T>& inFrom, int inFromStep, const Rows<T>& inTo, int inToStep, int inWidth)
{
    const std::ptrdiff_t fromStep = FromStep ? FromStep : inFromStep;
    const std::ptrdiff_t toStep = ToStep ? ToStep : inToStep;
    const T* from[Count];
    T* to[Count];
    for (int i = 0; i < Count; ++i) {
        from[i] = inFrom.components[i];
        to[i] = inTo.components[i];
    }
    for (std::ptrdiff_t x = 0; x < inWidth; ++x) {
        T values[Count];
        for (int i = 0; i < Count; ++i) {
            values[i] = from[i][x * fromStep];
        }
        for (int i = 0; i < Count; ++i) {
            to[i][x * toStep] = values[i];
        }
    }
}

template <typename T>
using RowFunction = void (*)(const Rows<T>&, int, const Rows<T>&, int, int);

template <typename T, int Count>
RowFunction<T> RowFunctionFor(int inFromStep, int inToStep)
{
    // Planes and pixels of four, the arrangements that matter most.
    if (inFromStep == 4 && inToStep == 1) {
        return &CopyRow<T, Count, 4, 1>;
    }
    if (inFromStep == 1 && inToStep == 4) {
        return &CopyRow<T, Count, 1, 4>;
    }
    if (inFromStep == 4 && inToStep == 4) {
        return &CopyRow<T, Count, 4, 4>;
    }
    return &CopyRow<T, Count, 0, 0>;
}

/// Whether samples lie alike, one component to the next, within pixels without gaps.
bool IsSameArrangement(const Samples* inFrom, const Samples* inTo, int inCount, int inSampleBytes)
{
    for (int i = 0; i < inCount; ++i) {
        if (inFrom[i].stepBytes != inCount * inSampleBytes || inTo[i].stepBytes != inFrom[i].stepBytes ||
            inFrom[i].first - inFrom[0].first != inTo[i].first - inTo[0].first) {
            return false;
        }
    }
    return true;
}

const Samples& Lowest(const Samples* inSamples, int inCount)
{
    return *std::min_element(inSamples, inSamples + inCount, [](const Samples& inA, const Samples& inB) {
        return std::less<>()(inA.first, inB.first);
    });
}

void CopyWholeRows(const Samples& inFrom, const Samples& inTo)
{
    for (int row = 0; row < inTo.height; ++row) {
        std::memcpy(RowOf<std::uint8_t>(inTo, row), RowOf<std::uint8_t>(inFrom, row),
                    std::size_t(inTo.width) * std::size_t(inTo.stepBytes));
    }
}

template <typename T, int Count>
void CopyRows(const Samples* inFrom, const Samples* inTo)
{
    const int fromStep = inFrom->stepBytes / int(sizeof(T));
    const int toStep = inTo->stepBytes / int(sizeof(T));
    const RowFunction<T> copyRow = RowFunctionFor<T, Count>(fromStep, toStep);
    for (int row = 0; row < inTo->height; ++row) {
        copyRow({inFrom, Count, row}, fromStep, {inTo, Count, row}, toStep, inTo->width);
    }
}

template <typename T>
void CopyAll(const Samples* inFrom, const Samples* inTo, int inCount)
{
    switch (inCount) {
    case 4:
        return CopyRows<T, 4>(inFrom, inTo);
    case 3:
        return CopyRows<T, 3>(inFrom, inTo);
    default:
        for (int i = 0; i < inCount; ++i) {
            CopyRows<T, 1>(inFrom + i, inTo + i);
        }
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

void CopySamples(const Samples* inFrom, const Samples* inTo, int inCount, int inSampleBytes)
{
    if (IsSameArrangement(inFrom, inTo, inCount, inSampleBytes)) {
        return CopyWholeRows(Lowest(inFrom, inCount), Lowest(inTo, inCount));
    }
    switch (inSampleBytes) {
    case 1:
        return CopyAll<std::uint8_t>(inFrom, inTo, inCount);
    case 2:
        return CopyAll<std::uint16_t>(inFrom, inTo, inCount);
    default:
        return CopyAll<std::uint32_t>(inFrom, inTo, inCount);
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
