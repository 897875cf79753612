#pragma once

#include "DevicesModule.h"

namespace trhost::devices {

/// The devices module, loaded by the first call: a run that opens no audio device never needs it.
/// @throws kio_exception (kError_File) when it is not there or cannot be loaded, naming what is missing;
///     Failure (kExit_Failed) when it was built for another version of trhost.
///
/// Threading: any thread; callers wait for the first one.
IDevicesModule& LoadDevicesModule();

} // namespace trhost::devices
