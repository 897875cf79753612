#include "BGRA16Conversion.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace trhost::media {
namespace {

using namespace kiomediatypes::color;

constexpr int kTaps = 4;
using Weights = std::array<float, kTaps>;

/// Catmull-Rom (b = 0, c = 0.5), for a place between the second and the third of four samples.
Weights BicubicWeights(double inFraction)
{
    const double t = inFraction;
    return {float(((-0.5 * t + 1) * t - 0.5) * t), float((1.5 * t - 2.5) * t * t + 1),
            float(((-1.5 * t + 2) * t + 0.5) * t), float((0.5 * t - 0.5) * t * t)};
}

/// How luma samples of one direction are made of chroma samples: each phase has its weights.
struct Axis {
    Axis(int inShift, double inPosition) : shift(inShift)
    {
        for (int phase = 0; phase < 1 << inShift; ++phase) {
            const double at = (phase - inPosition) / (1 << inShift);
            first.push_back(int(std::floor(at)) - 1);
            weights.push_back(BicubicWeights(at - std::floor(at)));
        }
    }
    bool IsWhole() const { return shift == 0; }

    int shift;
    std::vector<int> first; // of the four samples, from that which the luma sample belongs to
    std::vector<Weights> weights;
};

struct Component {
    float offset = 0;
    float scale = 1;
};

/// From code values to 0..1 of luma, alpha and RGB.
Component FullScale(int inDepth)
{
    return {0, 1.0F / float((1 << inDepth) - 1)};
}
Component Luma(int inDepth, Range inRange)
{
    const float unit = float(1 << (inDepth - 8));
    return inRange == Range::kFull ? FullScale(inDepth) : Component{16 * unit, 1 / (219 * unit)};
}
/// To -0.5..0.5.
Component Chroma(int inDepth, Range inRange)
{
    const float unit = float(1 << (inDepth - 8));
    return {128 * unit, inRange == Range::kFull ? 1.0F / float((1 << inDepth) - 1) : 1 / (224 * unit)};
}

struct LumaCoefficients {
    double red;
    double blue;
};
LumaCoefficients CoefficientsOf(const AVFrame& inPicture, Matrix inMatrix)
{
    if (inPicture.colorspace == AVCOL_SPC_SMPTE240M) {
        return {0.212, 0.087}; // has no name among ours, but on the way to RGB none is needed
    }
    switch (inMatrix) {
    case Matrix::kBT709:
        return {0.2126, 0.0722};
    case Matrix::kFCC:
        return {0.30, 0.11};
    case Matrix::kBT601_525:
    case Matrix::kBT601_625:
        return {0.299, 0.114};
    case Matrix::kBT2020_NCL:
        return {0.2627, 0.0593};
    }
    return {0.2126, 0.0722};
}

std::uint16_t Rounded(float inValue)
{
    return std::uint16_t(std::clamp(inValue, 0.0F, 1.0F) * 65535.0F + 0.5F);
}

class Conversion {
public:
    Conversion(const AVFrame& inPicture, Matrix inMatrix, Range inRange);
    void Run(Plane outPixels);

private:
    int ChromaWidth() const { return (mPicture.width + (1 << mAcross.shift) - 1) >> mAcross.shift; }
    int ChromaHeight() const { return (mPicture.height + (1 << mDown.shift) - 1) >> mDown.shift; }
    void ReadRow(int inComponent, int inRow, int inWidth, const Component& inScale, float* outRow);
    const float* ChromaSamples(int inComponent, int inRow);
    void ReadChroma(int inComponent, int inLumaRow, std::vector<float>& outRow);
    void ToRGB();

    const AVFrame& mPicture;
    const AVPixFmtDescriptor& mFormat;
    const bool mIsRGB;
    const bool mHasChroma;
    const int mAlphaComponent; // -1 for none
    const Axis mAcross;
    const Axis mDown;
    Component mLuma;
    Component mChroma;
    float mRedFromCr = 0;
    float mGreenFromCb = 0;
    float mGreenFromCr = 0;
    float mBlueFromCb = 0;

    std::vector<std::uint16_t> mCodes;
    std::vector<float> mRows[4]; // red, green, blue or Y, Cb, Cr; alpha
    std::vector<float> mMixed;   // chroma between its rows, with the edges repeated for the taps
    /// The rows of chroma that the taps reach, each under its number modulo their count.
    struct ChromaRow {
        int row = -1;
        std::vector<float> samples;
    };
    ChromaRow mChromaRows[2][kTaps];
};

/// Halves of luma samples; where chroma is quartered, at the left and in the middle between the rows.
double PositionAcross(const AVFrame& inPicture, int inShift)
{
    return inShift == 1 ? ChromaPositionOf(inPicture).x / 2.0 : 0;
}
double PositionDown(const AVFrame& inPicture, int inShift)
{
    return inShift == 1 ? ChromaPositionOf(inPicture).y / 2.0 : ((1 << inShift) - 1) / 2.0;
}

Conversion::Conversion(const AVFrame& inPicture, Matrix inMatrix, Range inRange)
    : mPicture(inPicture), mFormat(*av_pix_fmt_desc_get(AVPixelFormat(inPicture.format))),
      mIsRGB(mFormat.flags & AV_PIX_FMT_FLAG_RGB), mHasChroma(mFormat.nb_components >= 3),
      mAlphaComponent(mFormat.flags & AV_PIX_FMT_FLAG_ALPHA ? mFormat.nb_components - 1 : -1),
      mAcross(mFormat.log2_chroma_w, PositionAcross(inPicture, mFormat.log2_chroma_w)),
      mDown(mFormat.log2_chroma_h, PositionDown(inPicture, mFormat.log2_chroma_h))
{
    const int depth = mFormat.comp[0].depth;
    // Black-and-white formats of less than 8 bits have no footroom.
    mLuma = depth < 8 ? FullScale(depth) : Luma(depth, inRange);
    mChroma = depth < 8 ? Component{} : Chroma(depth, inRange);
    const auto [red, blue] = CoefficientsOf(inPicture, inMatrix);
    const double green = 1 - red - blue;
    mRedFromCr = float(2 * (1 - red));
    mBlueFromCb = float(2 * (1 - blue));
    mGreenFromCr = float(-2 * (1 - red) * red / green);
    mGreenFromCb = float(-2 * (1 - blue) * blue / green);

    const auto width = std::size_t(inPicture.width);
    // Some packed formats are read a group of pixels at a time.
    mCodes.resize(width + 8);
    for (std::vector<float>& row : mRows) {
        row.resize(width + 8);
    }
    mMixed.resize(std::size_t(ChromaWidth()) + 2 * kTaps);
}

void Conversion::ReadRow(int inComponent, int inRow, int inWidth, const Component& inScale, float* outRow)
{
    const std::uint8_t* data[4] = {mPicture.data[0], mPicture.data[1], mPicture.data[2], mPicture.data[3]};
    av_read_image_line2(mCodes.data(), data, mPicture.linesize, &mFormat, 0, inRow, inComponent, inWidth, 0,
                        2);
    const std::uint16_t* const codes = mCodes.data();
    for (int x = 0; x < inWidth; ++x) {
        outRow[x] = (float(codes[x]) - inScale.offset) * inScale.scale;
    }
}

const float* Conversion::ChromaSamples(int inComponent, int inRow)
{
    const int row = std::clamp(inRow, 0, ChromaHeight() - 1);
    ChromaRow& kept = mChromaRows[inComponent - 1][row % kTaps];
    if (kept.row != row) {
        kept.row = row;
        kept.samples.resize(std::size_t(ChromaWidth()) + 8);
        ReadRow(inComponent, row, ChromaWidth(), mChroma, kept.samples.data());
    }
    return kept.samples.data();
}

void Conversion::ReadChroma(int inComponent, int inLumaRow, std::vector<float>& outRow)
{
    const int width = ChromaWidth();
    float* const mixed = mMixed.data() + kTaps;
    const int group = inLumaRow >> mDown.shift;
    if (mDown.IsWhole()) {
        std::copy_n(ChromaSamples(inComponent, group), width, mixed);
    } else {
        const auto phase = std::size_t(inLumaRow & ((1 << mDown.shift) - 1));
        const int first = group + mDown.first[phase];
        const Weights& weights = mDown.weights[phase];
        const float* rows[kTaps];
        for (int i = 0; i < kTaps; ++i) {
            rows[i] = ChromaSamples(inComponent, first + i);
        }
        for (int x = 0; x < width; ++x) {
            mixed[x] = weights[0] * rows[0][x] + weights[1] * rows[1][x] + weights[2] * rows[2][x] +
                       weights[3] * rows[3][x];
        }
    }
    if (mAcross.IsWhole()) {
        std::copy_n(mixed, width, outRow.data());
        return;
    }
    std::fill_n(mMixed.data(), kTaps, mixed[0]);
    std::fill_n(mixed + width, kTaps, mixed[width - 1]);
    const int phases = 1 << mAcross.shift;
    for (int phase = 0; phase < phases; ++phase) {
        const Weights& weights = mAcross.weights[std::size_t(phase)];
        const float* const from = mixed + mAcross.first[std::size_t(phase)];
        const int count = (mPicture.width - phase + phases - 1) / phases;
        for (int i = 0; i < count; ++i) {
            outRow[std::size_t(i * phases + phase)] = weights[0] * from[i] + weights[1] * from[i + 1] +
                                                      weights[2] * from[i + 2] + weights[3] * from[i + 3];
        }
    }
}

/// Y, Cb, Cr to red, green, blue, in place.
void Conversion::ToRGB()
{
    float* const first = mRows[0].data();
    float* const second = mRows[1].data();
    float* const third = mRows[2].data();
    for (int x = 0; x < mPicture.width; ++x) {
        const float luma = first[x];
        const float blue = second[x];
        const float red = third[x];
        first[x] = luma + mRedFromCr * red;
        second[x] = luma + mGreenFromCb * blue + mGreenFromCr * red;
        third[x] = luma + mBlueFromCb * blue;
    }
}

void Conversion::Run(Plane outPixels)
{
    const int width = mPicture.width;
    const float* const alpha = mRows[3].data();
    std::fill(mRows[3].begin(), mRows[3].end(), 1.0F);
    for (int y = 0; y < mPicture.height; ++y) {
        if (mIsRGB) {
            for (int i = 0; i < 3; ++i) {
                ReadRow(i, y, width, FullScale(mFormat.comp[i].depth), mRows[i].data());
            }
        } else {
            ReadRow(0, y, width, mLuma, mRows[0].data());
            if (mHasChroma) {
                ReadChroma(1, y, mRows[1]);
                ReadChroma(2, y, mRows[2]);
                ToRGB();
            } else {
                if (mPicture.format == AV_PIX_FMT_MONOWHITE) {
                    std::transform(mRows[0].begin(), mRows[0].end(), mRows[0].begin(),
                                   [](float inValue) { return 1 - inValue; });
                }
                mRows[1] = mRows[0];
                mRows[2] = mRows[0];
            }
        }
        if (mAlphaComponent >= 0) {
            ReadRow(mAlphaComponent, y, width, FullScale(mFormat.comp[mAlphaComponent].depth),
                    mRows[3].data());
        }
        auto* const to = reinterpret_cast<std::uint16_t*>(outPixels.pixels + y * outPixels.rowBytes);
        const float* const red = mRows[0].data();
        const float* const green = mRows[1].data();
        const float* const blue = mRows[2].data();
        for (int x = 0; x < width; ++x) {
            to[4 * x] = Rounded(blue[x]);
            to[4 * x + 1] = Rounded(green[x]);
            to[4 * x + 2] = Rounded(red[x]);
            to[4 * x + 3] = Rounded(alpha[x]);
        }
    }
}

} // namespace

bool IsConvertibleToBGRA16(int inFormat)
{
    constexpr std::uint64_t kOthers =
        AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(AVPixelFormat(inFormat));
    if (!format || format->flags & kOthers || format->nb_components == 0 || inFormat == AV_PIX_FMT_XYZ12LE ||
        inFormat == AV_PIX_FMT_XYZ12BE) {
        return false;
    }
    return std::all_of(format->comp, format->comp + format->nb_components,
                       [](const AVComponentDescriptor& component) { return component.depth <= 16; });
}

void ConvertToBGRA16(const AVFrame& inPicture, Matrix inMatrix, Range inRange, Plane outPixels)
{
    Conversion(inPicture, inMatrix, inRange).Run(outPixels);
}

} // namespace trhost::media
