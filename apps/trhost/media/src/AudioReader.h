#pragma once

#include "../MediaModule.h"

#include <memory>
#include <string>

namespace trhost::media {

/// @throws as IMediaModule::OpenAudio.
std::unique_ptr<IAudioReader> OpenAudioReader(const std::string& inNativePath, int inStreamIndex,
                                              const ICancel& inCancel);

} // namespace trhost::media
