#include "MediaTestSupport.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace mediatests {

using namespace trhost::media;

IMediaModule& Module()
{
    static IMediaModule* const sModule = [] {
        void* library = dlopen(MEDIA_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        void* function = library ? dlsym(library, kMediaModuleFunctionName) : nullptr;
        if (!function) {
            throw std::runtime_error(dlerror());
        }
        return reinterpret_cast<MediaModuleFunction>(function)(kMediaModuleVersion);
    }();
    return *sModule;
}

std::vector<Output> AllOutputs(const IMediaFile& inFile, const Path& inFolder)
{
    std::vector<Output> outputs;
    for (const StreamInfo& stream : inFile.Streams()) {
        const std::string path = (inFolder / std::to_string(stream.index)).string();
        if (stream.kind == StreamKind::kAudio) {
            outputs.push_back({OutputKind::kConformedAudio, stream.index, path + ".cfa"});
            outputs.push_back({OutputKind::kPeaks, stream.index, path + ".pek"});
        } else {
            outputs.push_back({OutputKind::kVideoIndex, stream.index, path + ".mcvideoindex"});
        }
    }
    return outputs;
}

Conformed ConformAll(const Path& inMedia, const Path& inFolder, const ICancel& inCancel,
                     IProgress* inProgress)
{
    const auto file = Module().Open(inMedia.string(), inCancel);
    Conformed conformed;
    conformed.streams = file->Streams();
    conformed.outputs = AllOutputs(*file, inFolder);
    conformed.result = file->Conform(conformed.outputs, inProgress, inCancel);
    return conformed;
}

void WriteWav(const Path& inPath, WavFormat inFormat, int inRate, int inChannels, std::int64_t inFrames,
              const Signal& inSignal)
{
    const int sampleBytes = inFormat == WavFormat::kInt16 ? 2 : inFormat == WavFormat::kInt24 ? 3 : 4;
    std::string bytes;
    const auto number = [&bytes](std::uint64_t inValue, int inSize) {
        for (int i = 0; i < inSize; ++i) {
            bytes += static_cast<char>(inValue >> (8 * i));
        }
    };
    const auto dataBytes = static_cast<std::uint64_t>(inFrames * inChannels * sampleBytes);
    bytes += "RIFF";
    number(36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    number(16, 4);
    number(inFormat == WavFormat::kFloat32 ? 3 : 1, 2);
    number(std::uint64_t(inChannels), 2);
    number(std::uint64_t(inRate), 4);
    number(std::uint64_t(inRate * inChannels * sampleBytes), 4);
    number(std::uint64_t(inChannels * sampleBytes), 2);
    number(std::uint64_t(sampleBytes * 8), 2);
    bytes += "data";
    number(dataBytes, 4);
    for (std::int64_t frame = 0; frame < inFrames; ++frame) {
        for (int channel = 0; channel < inChannels; ++channel) {
            const double value = inSignal(channel, frame);
            if (inFormat == WavFormat::kFloat32) {
                number(std::bit_cast<std::uint32_t>(static_cast<float>(value)), 4);
            } else {
                const double full = inFormat == WavFormat::kInt16 ? 32768.0 : 8388608.0;
                number(static_cast<std::uint64_t>(std::llround(value * full)), sampleBytes);
            }
        }
    }
    support::WriteFile(inPath, bytes);
}

float ConformedAudio::At(std::int64_t inFrame, int inChannel) const
{
    return samples.at(std::size_t(inFrame) * header.channels + std::size_t(inChannel));
}

ConformedAudio ReadConformed(const Path& inPath)
{
    const std::string bytes = support::ReadFile(inPath);
    ConformedAudio audio;
    if (bytes.size() < sizeof audio.header) {
        throw std::runtime_error(inPath.string() + " has only " + std::to_string(bytes.size()) + " bytes");
    }
    std::memcpy(&audio.header, bytes.data(), sizeof audio.header);
    EXPECT_EQ(std::string(audio.header.magic, 8), "TRH-CFA\n");
    EXPECT_EQ(audio.header.version, 1u);
    EXPECT_EQ(audio.header.headerBytes, 64u);
    EXPECT_EQ(audio.header.sampleRate, 48000u);
    EXPECT_EQ(bytes.size(), 64 + audio.header.frameCount * audio.header.channels * 4);
    audio.samples.resize((bytes.size() - 64) / sizeof(float));
    std::memcpy(audio.samples.data(), bytes.data() + 64, audio.samples.size() * sizeof(float));
    return audio;
}

std::vector<std::string> Names(const Path& inFolder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(inFolder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string RunCommand(const std::string& inCommand)
{
    FILE* const pipe = popen((inCommand + " </dev/null 2>&1").c_str(), "r");
    std::string text;
    char part[4096];
    while (const std::size_t got = fread(part, 1, sizeof part, pipe)) {
        text.append(part, got);
    }
    if (const int status = pclose(pipe); status != 0) {
        throw std::runtime_error(inCommand + " failed (" + std::to_string(status) + "): " + text);
    }
    return text;
}

std::string Quoted(const Path& inPath)
{
    std::string quoted = "'";
    for (const char c : inPath.string()) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

} // namespace mediatests
