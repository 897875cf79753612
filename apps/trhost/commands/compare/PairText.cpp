#include "PairText.h"

#include <cmath>
#include <cstdio>

namespace trhost::compare {

namespace {

using namespace kiomediatypes;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

/// Three digits that count, so that nothing but 0 is shown as 0.
std::string Short(double inNumber)
{
    char text[40];
    std::snprintf(text, sizeof(text), "%.3g", inNumber);
    return text;
}

/// Never "100" where a pixel is left that does not differ.
std::string ShortPercent(double inPercent)
{
    const std::string text = Short(inPercent);
    return text == "100" && inPercent < 100 ? "> 99.9" : text;
}

std::string Decibels(double inPSNR)
{
    char text[40];
    std::snprintf(text, sizeof(text), "%.2f", inPSNR);
    return text;
}

/// How many steps the comparison's channels have above 0; 0 for floats.
int StepsOf(const PairResult& inResult)
{
    const PixelDepth a = DepthOf(inResult.formatA);
    const PixelDepth b = DepthOf(inResult.formatB);
    if (a == PixelDepth::k32Float || b == PixelDepth::k32Float) {
        return 0;
    }
    if (a == PixelDepth::k8 && b == PixelDepth::k8) {
        return 255;
    }
    return inResult.formatA == kPixelFormat_V210_422_10u && inResult.formatB == kPixelFormat_V210_422_10u
               ? 1023
               : 65535;
}

/// "17/255"; of floats "0.0667".
std::string LargestText(const PairResult& inResult)
{
    const int steps = StepsOf(inResult);
    return steps == 0
               ? Short(inResult.details.largest)
               : std::to_string(std::lround(inResult.details.largest * steps)) + "/" + std::to_string(steps);
}

UTF16String DescribePicture(const PairResult& inResult)
{
    const UTF16String a = ToUTF16(NameOf(inResult.formatA));
    const UTF16String b = ToUTF16(NameOf(inResult.formatB));
    return Text("$$$/Halcyon/TrHost/FrameIs=@0 x @1, @2#{@0: width, @1: height, @2: pixel format}",
                {DecimalText(inResult.width), DecimalText(inResult.height), a == b ? a : a + u"/" + b});
}

/// What the pair is called; the same words on both sides are said once.
UTF16String Called(const PairNames& inNames)
{
    return inNames.name.empty()
               ? Text("$$$/Halcyon/TrHost/Compare/TwoFiles=@0 and @1#{@0, @1: files}", {inNames.a, inNames.b})
               : inNames.name;
}

UTF16String DescribeDifference(const PairNames& inNames, const PairResult& inResult)
{
    const VF::DifferenceDetails& details = inResult.details;
    UTF16String line =
        Text("$$$/Halcyon/TrHost/Compare/Different=@0: different: @1 of @2 pixels (@3 %), variance @4 %, "
             "largest difference @5, within @6 x @7 at (@8, @9)#{@5: such as 17/255, @6, @7: width and "
             "height, @8, @9: left and top}",
             {Called(inNames), DecimalText(inResult.difference.numDiffPixels),
              DecimalText(std::uint64_t(inResult.width) * inResult.height),
              ToUTF16(ShortPercent(inResult.DifferingPercent())),
              ToUTF16(Short(double(inResult.difference.variance))), ToUTF16(LargestText(inResult)),
              DecimalText(details.width), DecimalText(details.height), DecimalText(details.left),
              DecimalText(details.top)});
    if (std::isfinite(details.psnr)) {
        line += Text("$$$/Halcyon/TrHost/Compare/PSNR=, PSNR @0 dB", {ToUTF16(Decibels(details.psnr))});
    }
    return line;
}

} // namespace

const char* NameOf(Outcome inOutcome)
{
    switch (inOutcome) {
    case Outcome::kSame:
        return "same";
    case Outcome::kDifferent:
        return "different";
    case Outcome::kOnlyInA:
        return "onlyInA";
    case Outcome::kOnlyInB:
        return "onlyInB";
    case Outcome::kFailed:
        return "failed";
    case Outcome::kNotDone:
        return "notDone";
    }
    return "";
}

UTF16String Describe(const PairNames& inNames, const PairResult& inResult)
{
    switch (inResult.outcome) {
    case Outcome::kSame:
        // Within the tolerance they may differ all the same.
        return inResult.details.largest > 0
                   ? Text("$$$/Halcyon/TrHost/Compare/SameWithin=@0: the same within the tolerance (@1), "
                          "variance @2 %, largest difference @3",
                          {Called(inNames), DescribePicture(inResult),
                           ToUTF16(Short(double(inResult.difference.variance))),
                           ToUTF16(LargestText(inResult))})
                   : Text("$$$/Halcyon/TrHost/Compare/Same=@0: the same (@1)#{@1: size and pixel format}",
                          {Called(inNames), DescribePicture(inResult)});
    case Outcome::kDifferent:
        return DescribeDifference(inNames, inResult);
    case Outcome::kOnlyInA:
        return Text("$$$/Halcyon/TrHost/Compare/OnlyInA=@0: only in the first folder", {inNames.name});
    case Outcome::kOnlyInB:
        return Text("$$$/Halcyon/TrHost/Compare/OnlyInB=@0: only in the second folder", {inNames.name});
    case Outcome::kFailed:
        return inResult.reason;
    case Outcome::kNotDone:
        break;
    }
    return {};
}

JsonLine DescribeForPrograms(const PairNames& inNames, const PairResult& inResult)
{
    JsonLine object;
    if (!inNames.name.empty()) {
        object.Add("name", inNames.name);
    }
    if (!inNames.a.empty()) {
        object.Add("a", inNames.a);
    }
    if (!inNames.b.empty()) {
        object.Add("b", inNames.b);
    }
    object.Add("outcome", NameOf(inResult.outcome));
    if (inResult.outcome == Outcome::kFailed) {
        object.Add("reason", inResult.reason);
    }
    if (!inResult.WasCompared()) {
        return object;
    }
    const VF::DifferenceDetails& details = inResult.details;
    object.Add("width", inResult.width)
        .Add("height", inResult.height)
        .Add("formatA", NameOf(inResult.formatA))
        .Add("formatB", NameOf(inResult.formatB))
        .Add("differingPixels", inResult.difference.numDiffPixels)
        .Add("differingPercent", inResult.DifferingPercent())
        .Add("variance", double(inResult.difference.variance))
        .Add("largestDifference", details.largest)
        .Add("psnr", details.psnr)
        .Add("box", JsonLine()
                        .Add("left", details.left)
                        .Add("top", details.top)
                        .Add("width", details.width)
                        .Add("height", details.height));
    if (!inResult.differencePath.empty()) {
        object.Add("difference", inResult.differencePath);
    }
    return object;
}

} // namespace trhost::compare
