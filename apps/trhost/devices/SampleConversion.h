#pragma once

#include <cstddef>
#include <cstdint>

namespace trhost::devices {

/// The forms in which devices and files take samples; all in the machine's byte order but kInt24.
enum class SampleForm {
    kFloat32,
    kInt32,
    kInt24, ///< three bytes, the lowest first
    kInt16,
};

int BytesOf(SampleForm inForm);

/// Full scale is 1 in float and -2^(bits-1) in whole numbers, so that whole numbers of up to 24 bit survive
/// the way to float and back. Whole numbers are clipped at full scale; what is not a number is silence.
///
/// Threading: any thread.
void FromFloat(SampleForm inForm, const float* inSamples, std::size_t inCount, std::uint8_t* outBytes);
void ToFloat(SampleForm inForm, const std::uint8_t* inBytes, std::size_t inCount, float* outSamples);

} // namespace trhost::devices
