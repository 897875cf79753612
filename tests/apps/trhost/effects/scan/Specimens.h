#pragma once

#include "support/TemporaryFolder.h"

#include "effects/scan/EffectCatalogue.h"
#include "effects/scan/WorkerPool.h"

#include <chrono>
#include <string>
#include <vector>

namespace specimens {

/// A worker that gives up early enough for a test to wait for, or never.
trhost::effects::WorkerSettings Worker(std::chrono::milliseconds inTimeLimit = std::chrono::minutes(5));
inline constexpr std::chrono::milliseconds kShortLimit{500};

/// Writes a plug-in file of the test engine.
trhost::effects::PluginFile WritePlugins(const support::TemporaryFolder& inFolder, const std::string& inName,
                                         const std::vector<std::string>& inLines);
/// Descriptors that this process has open, and children that it has not waited for.
int OpenFileCount();
bool HasChildren();

} // namespace specimens
