#pragma once

#include "../MediaModule.h"
#include "AudioConformer.h"
#include "MediaSource.h"
#include "VideoIndexer.h"

#include <memory>
#include <vector>

namespace trhost::media {

/// One way through a media file, making some outputs.
///
/// Threading: one thread at a time.
class ConformPass {
public:
    /// @param inOutputs  checked: each names a stream of its kind. As the source, it outlives this.
    ConformPass(MediaSource& inSource, const std::vector<Output>& inOutputs, const ICancel& inCancel);
    ~ConformPass();

    /// @throws as IMediaFile::Conform.
    ConformResult Run(IProgress* inProgress);

private:
    struct Stream {
        std::unique_ptr<AudioConformer> audio;
        std::unique_ptr<VideoIndexer> video;
        std::string Failure() const;
    };

    void ReadAll(IProgress* inProgress);
    void NoteEnd(const AVPacket& inPacket);
    void Finish(ConformResult& outResult);
    void Report(ConformResult& ioResult) const;
    void WarnIfShort(ConformResult& ioResult) const;
    void Publish(ConformResult& ioResult);

    MediaSource& mSource;
    const std::vector<Output>& mOutputs;
    const ICancel& mCancel;
    std::vector<std::unique_ptr<OutputFile>> mFiles; // as mOutputs
    std::vector<Stream> mStreams;                    // by index in the media file
    std::int64_t mContainerDamage = 0;
    std::int64_t mEndMicroseconds = 0; // of the packet that reaches furthest, on the file's own clock
};

} // namespace trhost::media
