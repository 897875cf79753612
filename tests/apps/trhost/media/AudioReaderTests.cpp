// Sound read sample by sample: at its own rate, from any place, on the same time line as a conformed file.

#include "MediaTestSupport.h"

#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <support/KeptText.h>

#include <gmock/gmock.h>

#include <cmath>

using namespace mediatests;
using namespace trhost::media;

namespace {

/// No two stretches of it are alike.
double Chirp(int inChannel, std::int64_t inFrame)
{
    const double t = double(inFrame) / 44100;
    return 0.5 * std::sin((200 + 40 * t + 3 * inChannel) * 6.283185307 * t);
}

std::vector<float> ReadAll(IAudioReader& ioReader, int inChunk)
{
    const auto channels = std::size_t(ioReader.Stream().channels);
    std::vector<float> samples;
    std::vector<float> chunk(std::size_t(inChunk) * channels);
    while (const int got = ioReader.Read(chunk.data(), inChunk, NoCancel())) {
        samples.insert(samples.end(), chunk.begin(), chunk.begin() + std::ptrdiff_t(got) * int(channels));
    }
    return samples;
}

} // namespace

TEST(AudioReader, GivesEverySampleOfASixteenBitWave)
{
    const support::TemporaryFolder folder;
    WriteWav(folder / "a.wav", WavFormat::kInt16, 44100, 2, 30'001, [](int inChannel, std::int64_t inFrame) {
        return double(std::int16_t(inFrame * 37 + inChannel)) / 32768;
    });
    const auto reader = Module().OpenAudio(folder / "a.wav", -1, NoCancel());
    EXPECT_EQ(reader->Stream().sampleRate, 44100);
    EXPECT_EQ(reader->Stream().channels, 2);
    const std::vector<float> samples = ReadAll(*reader, 777);
    ASSERT_EQ(samples.size(), 60'002u);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(samples[i] * 32768, float(std::int16_t(i / 2 * 37 + i % 2))) << "sample " << i;
    }
}

TEST(AudioReader, FromAnyPlaceTheSamplesAreThoseOfTheWhole)
{
    const support::TemporaryFolder folder;
    WriteWav(folder / "in.wav", WavFormat::kInt16, 44100, 2, 44100 * 8, Chirp);
    const struct {
        const char* name;
        const char* file;
        const char* options;
        double tolerance = 0;
    } kCases[] = {
        {"PCM", "a.wav", "-c:a pcm_s24le"},
        {"FLAC", "a.flac", ""},
        {"AAC in MPEG-4, whose decoder adds noise of its own", "a.m4a", "-c:a aac", 2e-4},
        {"AAC in Matroska, whose times are rounded", "a.mka", "-c:a aac"},
        {"AAC without a container", "a.aac", "-c:a aac"},
        {"MP3", "a.mp3", "-c:a libmp3lame"},
        {"Vorbis", "a.ogg", "-c:a libvorbis"},
        {"PCM in QuickTime", "a.mov", "-c:a pcm_s16be"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        RunCommand("ffmpeg -v error -i " + Quoted(folder / "in.wav") + " " + test.options + " " +
                   Quoted(folder / test.file));
        const auto reader = Module().OpenAudio(folder / test.file, -1, NoCancel());
        const std::vector<float> whole = ReadAll(*reader, 5000);
        ASSERT_GT(whole.size(), 2u * 44100 * 7);
        const auto frames = std::int64_t(whole.size() / 2);
        for (const std::int64_t at :
             {std::int64_t(0), std::int64_t(3), std::int64_t(44100 * 6 + 17), std::int64_t(44100 * 6 + 5000),
              std::int64_t(44100 * 3 + 1), std::int64_t(1000), frames - 1, frames, frames + 44100}) {
            SCOPED_TRACE(at);
            reader->SeekTo(at, NoCancel());
            std::vector<float> part(2 * 1000);
            const int got = reader->Read(part.data(), 1000, NoCancel());
            const std::int64_t expected = std::clamp<std::int64_t>(frames - at, 0, 1000);
            ASSERT_EQ(got, expected);
            part.resize(std::size_t(got) * 2);
            const auto from = whole.begin() + std::min(at, frames) * 2;
            double furthest = 0;
            for (std::size_t i = 0; i < part.size(); ++i) {
                furthest = std::max(furthest, double(std::abs(part[i] - from[std::ptrdiff_t(i)])));
            }
            EXPECT_LE(furthest, test.tolerance);
        }
    }
}

TEST(AudioReader, LiesOnTheTimeLineOfTheConformedFile)
{
    const support::TemporaryFolder folder;
    WriteWav(folder / "in.wav", WavFormat::kFloat32, 48000, 1, 96'000,
             [](int, std::int64_t inFrame) { return double(inFrame + 1) / (1 << 23); });
    RunCommand("ffmpeg -v error -f lavfi -i testsrc2=s=64x64:r=25:d=4 -itsoffset 1.5 -i " +
               Quoted(folder / "in.wav") + " -c:v mpeg4 -c:a pcm_f32le " + Quoted(folder / "late.mov"));
    const auto out = folder / "out";
    std::filesystem::create_directories(out);
    const Conformed conformed = ConformAll(folder / "late.mov", out);
    const auto reader = Module().OpenAudio(folder / "late.mov", -1, NoCancel());
    const std::vector<float> samples = ReadAll(*reader, 4096);
    ASSERT_EQ(samples.size(), 72'000u + 96'000u);
    for (const Output& output : conformed.outputs) {
        if (output.kind == OutputKind::kConformedAudio) {
            EXPECT_EQ(samples, ReadConformed(output.path).samples);
        }
    }
    reader->SeekTo(10, NoCancel()); // into the silence
    float sample = 1;
    ASSERT_EQ(reader->Read(&sample, 1, NoCancel()), 1);
    EXPECT_EQ(sample, 0);
}

TEST(AudioReader, SaysWhatIsWrong)
{
    const support::TemporaryFolder folder;
    WriteWav(folder / "a.wav", WavFormat::kInt16, 48000, 1, 480'000, Chirp);
    RunCommand("ffmpeg -v error -f lavfi -i testsrc2=s=64x64:r=25:d=1 -c:v mpeg4 " +
               Quoted(folder / "mute.mp4"));
    const auto codeOf = [&](const char* inFile, int inStream) -> std::uint32_t {
        try {
            Module().OpenAudio(folder / inFile, inStream, NoCancel());
        } catch (const kiocore::kio_exception& error) {
            EXPECT_THAT(trhost::ToldText(error.what()), testing::HasSubstr(inFile));
            return error.Code();
        }
        return 0;
    };
    EXPECT_EQ(codeOf("mute.mp4", -1), kMediaError_NotMedia);
    EXPECT_EQ(codeOf("mute.mp4", 0), kMediaError_NotMedia); // the picture
    EXPECT_EQ(codeOf("a.wav", 1), kMediaError_NotMedia);
    EXPECT_EQ(codeOf("gone.wav", -1), std::uint32_t(kiocore::kError_File));

    const auto reader = Module().OpenAudio(folder / "a.wav", 0, NoCancel());
    std::vector<float> room(480'000);
    try {
        while (reader->Read(room.data(), 480'000, CancelAt(2)) > 0) {
        }
        FAIL() << "read to the end";
    } catch (const kiocore::kio_exception& error) {
        EXPECT_EQ(error.Code(), std::uint32_t(kiocore::kError_Cancelled));
    }
}
