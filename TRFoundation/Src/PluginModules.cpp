#include <TR/PluginModules.h>

namespace TR {

const kiocore::Guid kMediaType_Video("0F5C1B39-6A0E-4D3C-8E51-B7A2943DC610");
const kiocore::Guid kMediaType_Audio("A9D6F2C4-17B8-4E65-9B0D-32C85E7F14A1");

IFilterModule::~IFilterModule() = default;
const CFUUIDBytes& IFilterModule::InterfaceID()
{
    static constexpr CFUUIDBytes kID{
        {0x3e, 0x7a, 0x90, 0x1d, 0xb5, 0x62, 0x4c, 0x8f, 0x8d, 0x04, 0xf1, 0x6e, 0x29, 0xa7, 0x5b, 0xc3}};
    return kID;
}

ITransitionModule::~ITransitionModule() = default;
const CFUUIDBytes& ITransitionModule::InterfaceID()
{
    static constexpr CFUUIDBytes kID{
        {0xc8, 0x15, 0x4d, 0x76, 0x0e, 0x93, 0x4a, 0x2b, 0xb6, 0xfd, 0x58, 0x21, 0x9c, 0xe4, 0x70, 0x3a}};
    return kID;
}

} // namespace TR
