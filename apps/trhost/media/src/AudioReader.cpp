#include "AudioReader.h"

namespace trhost::media {

std::unique_ptr<IAudioReader> OpenAudioReader(const std::string&, int, const ICancel&)
{
    return {};
}

} // namespace trhost::media
