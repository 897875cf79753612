#include "SampleConversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace trhost::devices {
namespace {

template <class T>
void Store(std::uint8_t* outBytes, T inValue)
{
    std::memcpy(outBytes, &inValue, sizeof inValue);
}

template <class T>
T Load(const std::uint8_t* inBytes)
{
    T value;
    std::memcpy(&value, inBytes, sizeof value);
    return value;
}

std::int64_t Whole(float inSample, double inFullScale)
{
    if (std::isnan(inSample)) {
        return 0;
    }
    return std::int64_t(
        std::clamp(std::nearbyint(double(inSample) * inFullScale), -inFullScale, inFullScale - 1));
}

constexpr double kFull16 = 32768.0;
constexpr double kFull24 = 8388608.0;
constexpr double kFull32 = 2147483648.0;

} // namespace

int BytesOf(SampleForm inForm)
{
    switch (inForm) {
    case SampleForm::kFloat32:
    case SampleForm::kInt32:
        return 4;
    case SampleForm::kInt24:
        return 3;
    case SampleForm::kInt16:
        return 2;
    }
    return 0;
}

void FromFloat(SampleForm inForm, const float* inSamples, std::size_t inCount, std::uint8_t* outBytes)
{
    switch (inForm) {
    case SampleForm::kFloat32:
        for (std::size_t i = 0; i < inCount; ++i) {
            Store(outBytes + 4 * i, std::isnan(inSamples[i]) ? 0.0f : inSamples[i]);
        }
        break;
    case SampleForm::kInt32:
        for (std::size_t i = 0; i < inCount; ++i) {
            Store(outBytes + 4 * i, std::int32_t(Whole(inSamples[i], kFull32)));
        }
        break;
    case SampleForm::kInt24:
        for (std::size_t i = 0; i < inCount; ++i) {
            const auto whole = std::uint32_t(Whole(inSamples[i], kFull24));
            for (int byte = 0; byte < 3; ++byte) {
                outBytes[3 * i + std::size_t(byte)] = std::uint8_t(whole >> (8 * byte));
            }
        }
        break;
    case SampleForm::kInt16:
        for (std::size_t i = 0; i < inCount; ++i) {
            Store(outBytes + 2 * i, std::int16_t(Whole(inSamples[i], kFull16)));
        }
        break;
    }
}

void ToFloat(SampleForm inForm, const std::uint8_t* inBytes, std::size_t inCount, float* outSamples)
{
    switch (inForm) {
    case SampleForm::kFloat32:
        std::memcpy(outSamples, inBytes, inCount * sizeof(float));
        break;
    case SampleForm::kInt32:
        for (std::size_t i = 0; i < inCount; ++i) {
            outSamples[i] = float(Load<std::int32_t>(inBytes + 4 * i) / kFull32);
        }
        break;
    case SampleForm::kInt24:
        for (std::size_t i = 0; i < inCount; ++i) {
            const std::uint8_t* bytes = inBytes + 3 * i;
            const auto high =
                std::uint32_t(bytes[0]) << 8 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 24;
            outSamples[i] = float((std::int32_t(high) >> 8) / kFull24);
        }
        break;
    case SampleForm::kInt16:
        for (std::size_t i = 0; i < inCount; ++i) {
            outSamples[i] = float(Load<std::int16_t>(inBytes + 2 * i) / kFull16);
        }
        break;
    }
}

} // namespace trhost::devices
