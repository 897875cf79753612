#include "VideoReader.h"

namespace trhost::media {

std::unique_ptr<IVideoReader> OpenVideoReader(const std::string&, int, const ICancel&)
{
    return {};
}

} // namespace trhost::media
