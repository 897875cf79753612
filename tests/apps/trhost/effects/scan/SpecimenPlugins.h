#pragma once

#include "effects/EffectEngine.h"

#include <memory>
#include <string>

namespace specimens {

/// The memory that buffers come from; null: the heap.
void SetMemory(trhost::effects::IFrameMemory* inMemory);

/// Plug-ins by name; each does one thing wrong:
///   "clean", "writes behind", "writes before", "writes into gap", "reads behind", "writes input",
///   "shared state", "varies", "crashes at 719x487", "hangs at 320x240", "throws", "even sizes only"
std::unique_ptr<trhost::effects::IVideoEffect> OpenVideo(const std::string& inName,
                                                         trhost::effects::IPluginCalls& inCalls,
                                                         const TR::IFilterModuleRef& inModule,
                                                         const trhost::effects::VideoEffectForm& inForm);
/// "sound clean", "sound infinite", "sound writes behind".
std::unique_ptr<trhost::effects::IAudioEffect> OpenAudio(const std::string& inName,
                                                         trhost::effects::IPluginCalls& inCalls,
                                                         const TR::IFilterModuleRef& inModule,
                                                         int inChannels);

} // namespace specimens
