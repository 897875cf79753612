#include <TR/PixelComparisonObject.h>

#include "VFRawFile.h"

#include <MF/BinaryData.h>
#include <VF/PNG.h>
#include <VF/VideoFrames.h>
#include <kiocore/filesupport/File.h>
#include <kioscripting/ClassBuilder.h>

namespace TRFoundation::Scripting {
namespace {

kioscripting::ClassDefinition DefinePixelComparison()
{
    return kioscripting::ClassBuilder<PixelComparisonObject>(
               "Halcyon.TRFoundation", "PixelComparison",
               "Performs pixel comparison between two video frames.")
        .Constructor("Construct a pixelComparator object")
        .Method("pixelCompare", "Takes in 2 PNGs and performs pixel-based comparison on the images",
                &PixelComparisonObject::PixelCompareVideoFrame,
                {{"inImagePath", "string"},
                 {"compareImagePath", "string"},
                 {"epsilon", "number", kioscripting::kParameter_Optional}},
                {"pixelData", "PixelCompareTestResults"})
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator
    sPixelComparisonDefinition(&DefinePixelComparison);

VF::ComputedDifference Failed(PixelComparisonError inError)
{
    VF::ComputedDifference difference;
    difference.status = static_cast<std::int32_t>(inError);
    return difference;
}

struct FramePair {
    MF::IVideoFrameRef first;
    MF::IVideoFrameRef second;
};

/// Empty frames where a file is not valid or the two differ in form.
FramePair ReadRawFrames(const kiocore::UTF16String& inImagePath, const kiocore::UTF16String& inComparePath)
{
    const VFRawFile image(inImagePath);
    const VFRawFile compared(inComparePath);
    if (!image.IsValid() || !compared.IsValid() || !image.MatchesFormOf(compared)) {
        return {};
    }
    return {image.GetVideoFrame(), compared.GetVideoFrame()};
}

FramePair ReadFrames(const kiocore::UTF16String& inImagePath, const kiocore::UTF16String& inComparePath)
{
    if (kiocore::filesupport::File(inImagePath).GetExtension(true) != u".png") {
        return ReadRawFrames(inImagePath, inComparePath);
    }
    VF::PNGPair pair = VF::DecompressPNGs(inImagePath, inComparePath);
    return {std::move(pair.first), std::move(pair.second)};
}

} // namespace

const char* PixelComparisonObject::GetClassname() const
{
    return "PixelComparison";
}

PixelCompareTestResultsObjectPtr
PixelComparisonObject::PixelCompareVideoFrame(const kiocore::UTF16String& inImagePath,
                                              const kiocore::UTF16String& inComparePath, double) const
{
    int context = GetContextHdl();
    const FramePair frames = ReadFrames(inImagePath, inComparePath);
    std::string diffData;
    const VF::ComputedDifference difference = frames.first && frames.second
                                                  ? CompareVideoFrames(frames.first, frames.second, diffData)
                                                  : Failed(kPixelComparison_NotLoaded);
    return MakeResultObject(context, difference, diffData);
}

VF::ComputedDifference PixelComparisonObject::CompareVideoFrames(const MF::IVideoFrameRef& inFrame,
                                                                 const MF::IVideoFrameRef& inCompareFrame,
                                                                 std::string& outDiffData) const
{
    MF::IVideoFrameRef picture;
    VF::CreateVideoFrame(picture, inFrame->GetPixelFormat(), inFrame->GetWidth(), inFrame->GetHeight(),
                         inFrame->GetPixelAspectRatio(), inFrame->GetColorSpace(), false, true);
    VF::DifferenceDetails details;
    VF::ComputedDifference difference =
        VF::ComputeDifferenceImages(inFrame, inCompareFrame, picture, 0.0f, &details);
    if (difference.status < 0) {
        return difference;
    }
    VF::PNGOptions options;
    options.isDifference = true;
    options.rowsInUse = details.differingRows;
    options.texts = VF::DescribeDifference(difference, details);
    const auto png = VF::CompressPNG(picture, options);
    if (!png) {
        difference.status = static_cast<std::int32_t>(kPixelComparison_NotEncoded);
        outDiffData.clear();
        return difference;
    }
    outDiffData = MF::EncodeBinaryDataToUTF8String(MF::BinaryData(png.bytes.get(), png.size));
    return difference;
}

PixelCompareTestResultsObjectPtr PixelComparisonObject::MakeResultObject(int& inContext,
                                                                         VF::ComputedDifference inDifference,
                                                                         const std::string& inDiffData) const
{
    const auto result = kioscripting::CreateScriptObject<PixelCompareTestResultsObject>(inContext);
    if (result) {
        result->Initialize(inDiffData, inDifference);
    }
    return result;
}

} // namespace TRFoundation::Scripting
