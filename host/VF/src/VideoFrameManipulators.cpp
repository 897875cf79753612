#include <VF/VideoFrameManipulators.h>

namespace VF {

bool VideoFrameManipulators::CopyFrame(const MF::IVideoFrameRef&, const MF::IVideoFrameRef&,
                                       kiomediatypes::RenderQuality, const ColorManagementSettings&)
{
    return false;
}

} // namespace VF
