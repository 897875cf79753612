#pragma once

#include "DevicesModule.h"
#include "WaveFile.h"

#include <memory>

namespace trhost::devices {

/// Sound that goes to a file instead of a device: takes whatever comes, at once. Being closed and opened
/// again it goes on in the same file, which is finished when all was played.
///
/// Threading: one thread at a time.
class WaveSink final : public IAudioOutput {
public:
    explicit WaveSink(std::shared_ptr<WaveFile> inFile) : mFile(std::move(inFile)) {}

    const AudioFormat& Format() const override { return mFile->Format(); }
    int BufferFrames() const override { return 0; }
    int Write(const float* inSamples, int inFrames) override
    {
        mFile->Write(inSamples, inFrames);
        return inFrames;
    }
    void Wait(int) override {}
    bool Drain() override
    {
        mFile->Finish();
        return true;
    }
    int QueuedFrames() override { return 0; }
    int Breaks() const override { return 0; }

private:
    const std::shared_ptr<WaveFile> mFile;
};

} // namespace trhost::devices
