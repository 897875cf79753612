#include "../MediaModule.h"

#include "AudioReader.h"
#include "FFmpegSupport.h"
#include "MediaFile.h"
#include "VideoReader.h"

namespace trhost::media {
namespace {

std::string Version(const char* inName, unsigned inVersion)
{
    return std::string(inName) + " " + std::to_string(AV_VERSION_MAJOR(inVersion)) + "." +
           std::to_string(AV_VERSION_MINOR(inVersion)) + "." + std::to_string(AV_VERSION_MICRO(inVersion));
}

class MediaModule : public IMediaModule {
public:
    MediaModule() { RouteMessagesToTrace(); }

    std::unique_ptr<IMediaFile> Open(const std::string& inNativePath, const ICancel& inCancel) override
    {
        return std::make_unique<MediaFile>(inNativePath, inCancel);
    }

    std::unique_ptr<IVideoReader> OpenVideo(const std::string& inNativePath, int inStreamIndex,
                                            const ICancel& inCancel) override
    {
        return OpenVideoReader(inNativePath, inStreamIndex, inCancel);
    }
    std::unique_ptr<IAudioReader> OpenAudio(const std::string& inNativePath, int inStreamIndex,
                                            const ICancel& inCancel) override
    {
        return OpenAudioReader(inNativePath, inStreamIndex, inCancel);
    }

    std::string LibraryVersions() const override
    {
        return Version("libavformat", avformat_version()) + ", " + Version("libavcodec", avcodec_version()) +
               ", " + Version("libavutil", avutil_version()) + ", " +
               Version("libswresample", swresample_version());
    }
};

} // namespace
} // namespace trhost::media

extern "C" trhost::media::IMediaModule* trhost_media_module(int inVersion)
{
    static trhost::media::MediaModule sModule;
    return inVersion == trhost::media::kMediaModuleVersion ? &sModule : nullptr;
}
