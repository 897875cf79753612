#pragma once

#include "../MediaModule.h"
#include "MediaSource.h"

#include <memory>
#include <string>
#include <vector>

namespace trhost::media {

StreamInfo DescribeStream(const AVStream& inStream, const MediaSource& inSource);

/// Threading: one thread at a time.
class MediaFile : public IMediaFile {
public:
    /// @throws as IMediaModule::Open.
    MediaFile(const std::string& inNativePath, const ICancel& inCancel);
    ~MediaFile() override;

    const std::vector<StreamInfo>& Streams() const override { return mStreams; }
    const std::string& Container() const override { return mContainer; }
    double DurationSeconds() const override { return mDurationSeconds; }
    ConformResult Conform(const std::vector<Output>& inOutputs, IProgress* inProgress,
                          const ICancel& inCancel) override;

private:
    void Open(const ICancel& inCancel);
    void CheckOutputs(const std::vector<Output>& inOutputs) const;

    const std::string mPath;
    std::unique_ptr<MediaSource> mSource; // empty once its packets have been read
    std::vector<StreamInfo> mStreams;
    std::string mContainer;
    double mDurationSeconds = -1;
};

} // namespace trhost::media
