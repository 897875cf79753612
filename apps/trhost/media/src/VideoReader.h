#pragma once

#include "../MediaModule.h"

#include <memory>
#include <string>

namespace trhost::media {

/// @throws as IMediaModule::OpenVideo.
std::unique_ptr<IVideoReader> OpenVideoReader(const std::string& inNativePath, int inStreamIndex,
                                              const ICancel& inCancel);

} // namespace trhost::media
