#include "DirectConversion.h"

namespace VF {

bool HasDirectConversion(const SourcePicture&, const DestinationPicture&, kiomediatypes::RenderQuality)
{
    return false;
}

void ConvertRowsDirectly(const SourcePicture&, const DestinationPicture&, std::uint32_t, std::uint32_t) {}

} // namespace VF
