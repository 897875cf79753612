#pragma once

#include "DevicesModule.h"
#include "SampleConversion.h"

#include <cstdint>
#include <string>
#include <vector>

namespace trhost::devices {

/// A WAVE file in the making, under a temporary name; removed unless it is finished. Beyond 4 GB it becomes
/// an RF64 file, which programs read as they read WAVE.
///
/// Threading: one thread at a time.
class WaveFile {
public:
    /// @param inNativePath  its folder must exist.
    /// @param inForm        kInt16, kInt24 or kFloat32.
    /// @throws file_exception when it cannot be made; kio_exception (kError_BadArgument) when there is such a
    ///     file that may not be overwritten, or something that is no file.
    WaveFile(const std::string& inNativePath, const AudioFormat& inFormat, SampleForm inForm,
             bool inOverwrite);
    ~WaveFile();
    WaveFile(const WaveFile&) = delete;
    WaveFile& operator=(const WaveFile&) = delete;

    const std::string& Path() const { return mPath; }
    const AudioFormat& Format() const { return mFormat; }
    std::int64_t Frames() const { return mFrames; }

    /// Appends.
    /// @throws file_exception; what was written before can still be finished.
    void Write(const float* inSamples, int inFrames);
    /// Completes it and gives it its name, in one step, with what was written.
    /// @throws file_exception; kio_exception (kError_BadArgument) when a file of that name has come meanwhile
    ///     and may not be overwritten. Nothing is left then.
    void Finish();
    bool IsFinished() const { return mFinished; }

private:
    void CheckPlace() const;
    std::vector<std::uint8_t> Header() const;
    void Flush();
    void Publish();

    const std::string mPath;
    const AudioFormat mFormat;
    const SampleForm mForm;
    const bool mOverwrite;
    std::string mTemporaryPath;
    int mFile = -1;
    std::vector<std::uint8_t> mBuffer; // not written yet
    std::int64_t mFrames = 0;          // given, the buffered ones included
    std::int64_t mDataBytes = 0;       // on disk
    bool mFailed = false;
    bool mFinished = false;
};

} // namespace trhost::devices
