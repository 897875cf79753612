#include "DirectConversion.h"

#include "DirectRows.h"
#include "DirectWeights.h"

namespace VF {
namespace {

using namespace kiomediatypes;

bool IsPackedYUV(PixelFormat inFormat)
{
    return inFormat == kPixelFormat_UYVY_422_8u || inFormat == kPixelFormat_V210_422_10u;
}
bool IsRGB(PixelFormat inFormat)
{
    return inFormat != kPixelFormat_Any && !IsYUV(inFormat);
}

} // namespace

bool HasDirectConversion(const SourcePicture& inSource, const DestinationPicture& inDestination,
                         RenderQuality inQuality)
{
    if (inSource.width != inDestination.width || inSource.height != inDestination.height) {
        return false;
    }
    if (IsRGB(inSource.format) && IsRGB(inDestination.format)) {
        return true;
    }
    if (IsPackedYUV(inSource.format) && IsPackedYUV(inDestination.format)) {
        return AreSameMatrix(inSource.colorSpace.matrix, inDestination.colorSpace.matrix);
    }
    if (inQuality == kRenderQuality_High) {
        return false;
    }
    if (IsRGB(inSource.format) && IsPackedYUV(inDestination.format)) {
        return IsKnownMatrix(inDestination.colorSpace.matrix);
    }
    return IsYUV(inSource.format) && IsRGB(inDestination.format) && IsKnownMatrix(inSource.colorSpace.matrix);
}

void ConvertRowsDirectly(const SourcePicture& inSource, const DestinationPicture& inDestination,
                         std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    const bool fromYUV = IsYUV(inSource.format);
    const bool toYUV = IsYUV(inDestination.format);
    const auto convert = fromYUV ? (toYUV ? &ConvertYUVToYUV : &ConvertYUVToRGB)
                                 : (toYUV ? &ConvertRGBToYUV : &ConvertRGBToRGB);
    convert(inSource, inDestination, inFirstRow, inEndRow);
}

} // namespace VF
