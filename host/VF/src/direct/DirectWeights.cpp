#include "DirectWeights.h"

namespace VF {
namespace {

using namespace kiomediatypes;
using color::Matrix;

/// What red and blue weigh in luma, by H.273; green weighs the rest. Nothing for an unknown matrix.
struct LumaOf {
    double red = 0;
    double blue = 0;
    double Green() const { return 1 - red - blue; }
};
LumaOf LumaOfMatrix(Matrix inMatrix)
{
    switch (inMatrix) {
    case Matrix::kBT709:
        return {0.2126, 0.0722};
    case Matrix::kFCC:
        return {0.30, 0.11};
    case Matrix::kBT601_625:
    case Matrix::kBT601_525:
        return {0.299, 0.114};
    case Matrix::kBT2020_NCL:
        return {0.2627, 0.0593};
    }
    return {}; // a number that no name stands for, as files may hold
}

} // namespace

CodeScale CodeScaleOf(PixelFormat inFormat, color::Range inRange)
{
    const bool deep = DepthOf(inFormat) == PixelDepth::k10;
    const double most = deep ? 1023 : 255;
    const double step = deep ? 4 : 1;
    if (inRange == color::Range::kFull) {
        return {0, most, 128 * step, most, most};
    }
    return {16 * step, 219 * step, 128 * step, 224 * step, most};
}

CodeScale TimesFour(const CodeScale& inScale)
{
    return {inScale.lumaOffset * 4, inScale.lumaSpan * 4, inScale.chromaOffset * 4, inScale.chromaSpan * 4,
            inScale.most * 4};
}

bool IsKnownMatrix(Matrix inMatrix)
{
    return LumaOfMatrix(inMatrix).red != 0;
}

bool AreSameMatrix(Matrix inFirst, Matrix inSecond)
{
    const LumaOf first = LumaOfMatrix(inFirst);
    const LumaOf second = LumaOfMatrix(inSecond);
    return inFirst == inSecond || (first.red != 0 && first.red == second.red && first.blue == second.blue);
}

ToYUVWeights ToYUVWeightsOf(const CodeScale& inScale, Matrix inMatrix, double inComponentMost)
{
    const LumaOf luma = LumaOfMatrix(inMatrix);
    const double y = inScale.lumaSpan / inComponentMost;
    const double cb = inScale.chromaSpan / inComponentMost / (2 * (1 - luma.blue)) / 4;
    const double cr = inScale.chromaSpan / inComponentMost / (2 * (1 - luma.red)) / 4;
    const auto code = [](double inBlue, double inGreen, double inRed, double inOffset) {
        return ToYUVWeights::OfCode{static_cast<float>(inBlue), static_cast<float>(inGreen),
                                    static_cast<float>(inRed), static_cast<float>(inOffset + kRounding)};
    };
    return {code(y * luma.blue, y * luma.Green(), y * luma.red, inScale.lumaOffset),
            code(cb * (1 - luma.blue), -cb * luma.Green(), -cb * luma.red, inScale.chromaOffset),
            code(-cr * luma.blue, -cr * luma.Green(), cr * (1 - luma.red), inScale.chromaOffset),
            static_cast<float>(inScale.most + kRounding)};
}

FromYUVWeights FromYUVWeightsOf(const CodeScale& inScale, Matrix inMatrix, double inComponentMost)
{
    const LumaOf luma = LumaOfMatrix(inMatrix);
    const double y = inComponentMost / inScale.lumaSpan;
    const double cb = inComponentMost / inScale.chromaSpan * 2 * (1 - luma.blue);
    const double cr = inComponentMost / inScale.chromaSpan * 2 * (1 - luma.red);
    return {static_cast<float>(y),
            static_cast<float>(cr),
            static_cast<float>(-cb * luma.blue / luma.Green()),
            static_cast<float>(-cr * luma.red / luma.Green()),
            static_cast<float>(cb),
            static_cast<float>(inScale.lumaOffset),
            static_cast<float>(inScale.chromaOffset),
            static_cast<float>(inComponentMost)};
}

} // namespace VF
