#include <TR/PixelCompareTestResultsObject.h>

#include <kioscripting/ClassBuilder.h>

namespace TRFoundation::Scripting {
namespace {

kioscripting::ClassDefinition DefinePixelCompareTestResults()
{
    using Results = PixelCompareTestResultsObject;
    return kioscripting::ClassBuilder<Results>("Halcyon.TRFoundation", "PixelCompareTestResults",
                                               "Results of a pixel-based comparison. Includes number of "
                                               "different pixels, percent variation, and "
                                               "an error message if necessary.")
        .Constructor("Construct a pixelComparator test result object")
        .Property("diffData", "string", "Image data for the diff image generated", &Results::GetDiffData)
        .Property("result", "number",
                  "Error message, if any, for pixel comparison process. Or successful result",
                  &Results::GetError)
        .Property("numDiffPixels", "number", "Number of pixels that were different between the 2 images",
                  &Results::GetDiffPixels)
        .Property("variance", "number", "Calculated variance between images as a percent",
                  &Results::GetVariance)
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator
    sPixelCompareTestResultsDefinition(&DefinePixelCompareTestResults);

} // namespace

const char* PixelCompareTestResultsObject::GetClassname() const
{
    return "PixelCompareTestResults";
}

void PixelCompareTestResultsObject::Initialize(const std::string& inDiffData,
                                               VF::ComputedDifference inDifference)
{
    mVariance = inDifference.variance;
    mDiffPixels = inDifference.numDiffPixels;
    mDiffData = inDiffData;
    mError = inDifference.status;
}

} // namespace TRFoundation::Scripting
