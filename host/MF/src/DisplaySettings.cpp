#include <MF/DisplaySettings.h>

namespace MF {

IDisplaySettings::~IDisplaySettings() = default;
const CFUUIDBytes& IDisplaySettings::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0xd1, 0x6c, 0xd3, 0x09, 0x25, 0xa4, 0x42, 0xde, 0xb4, 0x04, 0xe0, 0xcb, 0x13, 0x40, 0xb2, 0xf1}};
    return kID;
}

} // namespace MF
