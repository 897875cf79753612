#pragma once

#include <media/CacheFileFormats.h>
#include <media/MediaModule.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace mediatests {

using Path = std::filesystem::path;

/// The module, loaded as trhost loads it.
trhost::media::IMediaModule& Module();

/// Says yes from the given question on, counted over all calls.
class CancelAt : public trhost::media::ICancel {
public:
    explicit CancelAt(long inQuestion) : mQuestion(inQuestion) {}
    bool IsCancelled() const noexcept override { return ++mAsked >= mQuestion; }
    long Asked() const { return mAsked; }

private:
    const long mQuestion;
    mutable std::atomic<long> mAsked{0};
};

class NoCancel : public trhost::media::ICancel {
public:
    bool IsCancelled() const noexcept override { return false; }
};

/// What Conform made of all streams of a file, in "<folder>/<stream index>.<extension>".
struct Conformed {
    std::vector<trhost::media::StreamInfo> streams;
    std::vector<trhost::media::Output> outputs;
    trhost::media::ConformResult result;
};
std::vector<trhost::media::Output> AllOutputs(const trhost::media::IMediaFile& inFile, const Path& inFolder);
Conformed ConformAll(const Path& inMedia, const Path& inFolder,
                     const trhost::media::ICancel& inCancel = NoCancel(),
                     trhost::media::IProgress* inProgress = nullptr);

enum class WavFormat { kInt16, kInt24, kFloat32 };
using Signal = std::function<double(int inChannel, std::int64_t inFrame)>;
/// Writes a WAVE file by hand, so that every sample in it is known.
void WriteWav(const Path& inPath, WavFormat inFormat, int inRate, int inChannels, std::int64_t inFrames,
              const Signal& inSignal);

struct ConformedAudio {
    trhost::media::ConformedAudioHeader header{};
    std::vector<float> samples; // interleaved
    float At(std::int64_t inFrame, int inChannel = 0) const;
};
/// Reads and checks everything that holds for all such files.
ConformedAudio ReadConformed(const Path& inPath);

/// Files of a folder by name, sorted.
std::vector<std::string> Names(const Path& inFolder);

/// Runs a shell command; fails the test with what it printed when it fails.
/// @return its standard output.
std::string RunCommand(const std::string& inCommand);
/// As a shell argument.
std::string Quoted(const Path& inPath);

} // namespace mediatests
