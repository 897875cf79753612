#include "../DevicesModule.h"

#include "platform/AlsaStreams.h"

namespace trhost::devices {
namespace {

class DevicesModule : public IDevicesModule {
public:
    DevicesModule() { RouteAlsaMessagesToTrace(); }

    std::unique_ptr<IAudioOutput> OpenOutput(const std::string& inDevice,
                                             const AudioFormat& inFormat) override
    {
        return OpenAlsaOutput(inDevice, inFormat);
    }
    std::unique_ptr<IAudioInput> OpenInput(const std::string& inDevice, const AudioFormat& inFormat) override
    {
        return OpenAlsaInput(inDevice, inFormat);
    }
    std::string LibraryVersion() const override { return AlsaVersion(); }
};

} // namespace
} // namespace trhost::devices

extern "C" trhost::devices::IDevicesModule* trhost_devices_module(int inVersion)
{
    static trhost::devices::DevicesModule sModule;
    return inVersion == trhost::devices::kDevicesModuleVersion ? &sModule : nullptr;
}
