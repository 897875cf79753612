#pragma once

#include "../../DevicesModule.h"

namespace trhost::devices {

/// @throws as IDevicesModule.
std::unique_ptr<IAudioOutput> OpenAlsaOutput(const std::string& inDevice, const AudioFormat& inFormat);
std::unique_ptr<IAudioInput> OpenAlsaInput(const std::string& inDevice, const AudioFormat& inFormat);

std::string AlsaVersion();
/// Sends what the library has to say to the trace channel "ALSA" instead of standard error.
void RouteAlsaMessagesToTrace();

} // namespace trhost::devices
