#include <VF/PNG.h>

namespace VF {

MF::IVideoFrameRef DecompressPNG(const kiocore::utility::SharedRecycledMemory&)
{
    return {};
}

MF::IVideoFrameRef DecompressPNG(const kiocore::UTF16String&)
{
    return {};
}

kiocore::utility::SharedRecycledMemory CompressPNG(const MF::IVideoFrameRef&, int)
{
    return {};
}

} // namespace VF
