// Where sound comes to lie: sample 0 of a conformed file is the start of the media file.

#include "MediaTestSupport.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace mediatests;
using namespace trhost::media;

namespace {

constexpr double kStep = 1.0 / (1 << 23);

/// Each sample says its own number, exactly: what 24 bit hold.
double Numbered(int, std::int64_t inFrame)
{
    return double(inFrame + 1) * kStep;
}

/// The number that a sample says; 0 for silence.
std::int64_t NumberOf(float inSample)
{
    return std::llround(double(inSample) / kStep);
}

void WriteNumbered(const Path& inPath, std::int64_t inFrames)
{
    WriteWav(inPath, WavFormat::kFloat32, 48000, 1, inFrames, Numbered);
}

const std::string kPicture = "ffmpeg -v error -f lavfi -i testsrc2=s=64x64:r=25:d=4 ";

} // namespace

TEST(Timeline, SoundLiesWhereTheContainerPutsIt)
{
    const struct {
        const char* name;
        const char* file;
        const char* inputs; // what stands before the sound
        const char* options;
        std::int64_t expectedSilence;
    } kCases[] = {
        {"at once", "a.mkv", "", "-c:v mpeg4 -c:a copy", 0},
        {"late in Matroska", "a.mkv", "-itsoffset 2", "-c:v mpeg4 -c:a copy", 96'000},
        {"late by less than a packet", "a.mkv", "-itsoffset 0.005", "-c:v mpeg4 -c:a copy", 240},
        {"late in QuickTime, by an edit list", "a.mov", "-itsoffset 1.5", "-c:v mpeg4 -c:a pcm_f32le",
         72'000},
        {"sound alone starts the file, however late", "a.mkv", "-itsoffset 2", "-vn -c:a copy", 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TemporaryFolder folder;
        WriteNumbered(folder / "in.wav", 96'000);
        RunCommand(kPicture + test.inputs + " -i " + Quoted(folder / "in.wav") + " " + test.options + " " +
                   Quoted(folder / test.file));
        const Conformed made = ConformAll(folder / test.file, folder.Path());
        const int stream = made.streams.back().index;
        const ConformedAudio audio = ReadConformed(folder / (std::to_string(stream) + ".cfa"));
        ASSERT_EQ(std::int64_t(audio.header.frameCount), test.expectedSilence + 96'000);
        std::int64_t different = 0;
        for (std::int64_t i = 0; i < std::int64_t(audio.header.frameCount); ++i) {
            different += NumberOf(audio.At(i)) != std::max<std::int64_t>(0, i - test.expectedSilence + 1);
        }
        EXPECT_EQ(different, 0);
        EXPECT_EQ(made.result.insertedFrames, test.expectedSilence);
        EXPECT_EQ(made.result.droppedFrames, 0);
        EXPECT_THAT(made.result.warnings, testing::IsEmpty());
    }
}

TEST(Timeline, AGapLeavesSilenceAndWhatFollowsInItsPlace)
{
    support::TemporaryFolder folder;
    WriteNumbered(folder / "in.wav", 192'000);
    RunCommand(kPicture + "-i " + Quoted(folder / "in.wav") +
               " -af \"aselect='not(between(t,1,2))'\" -c:v mpeg4 -c:a pcm_f32le " +
               Quoted(folder / "a.mkv"));
    const Conformed made = ConformAll(folder / "a.mkv", folder.Path());
    const ConformedAudio audio = ReadConformed(folder / "1.cfa");
    const std::int64_t tick = 48; // Matroska counts milliseconds
    EXPECT_NEAR(double(audio.header.frameCount), 192'000, tick);
    EXPECT_EQ(NumberOf(audio.At(40'000)), 40'001);
    EXPECT_EQ(NumberOf(audio.At(72'000)), 0);
    EXPECT_NEAR(double(NumberOf(audio.At(150'000))), 150'001, tick);
    EXPECT_NEAR(double(made.result.insertedFrames), 48'000, 2048);
}

TEST(Timeline, SoundSaidTwiceIsDroppedAndAClockSetAnewIsJoined)
{
    const struct {
        const char* name;
        const char* secondStart; // of the broadcast that is joined to one of 3 seconds
        double expectedSeconds;
        double expectedDropped;
        bool expectedWarning;
    } kCases[] = {
        {"overlap of half a second", "2.5", 5.5, 0.5, false},
        {"starts from 0 again", "0", 6, 0, true},
        {"hours away", "20000", 6, 0, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TemporaryFolder folder;
        const std::string source = "ffmpeg -v error -f lavfi -i sine=d=3:r=48000 -c:a mp2 ";
        RunCommand(source + Quoted(folder / "1.ts"));
        RunCommand(source + "-output_ts_offset " + test.secondStart + " " + Quoted(folder / "2.ts"));
        support::WriteFile(folder / "a.ts",
                           support::ReadFile(folder / "1.ts") + support::ReadFile(folder / "2.ts"));
        const Conformed made = ConformAll(folder / "a.ts", folder.Path());
        EXPECT_NEAR(double(made.result.outputs[0].count) / 48000, test.expectedSeconds, 0.06);
        EXPECT_NEAR(double(made.result.droppedFrames) / 48000, test.expectedDropped, 0.06);
        EXPECT_EQ(!made.result.warnings.empty(), test.expectedWarning);
    }
}

TEST(Timeline, SamplesThatOnlyWarmUpTheDecoderAreLeftOut)
{
    const struct {
        const char* file;
        const char* codec;
    } kCases[] = {{"a.mp4", "aac"},
                  {"a.mkv", "libopus"},
                  {"a.webm", "libopus"},
                  {"a.ogg", "libvorbis"},
                  {"a.mp3", "libmp3lame"}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.file);
        support::TemporaryFolder folder;
        // A click after exactly one second shows where the codec's delay went.
        WriteWav(folder / "in.wav", WavFormat::kInt16, 48000, 1, 96'000,
                 [](int, std::int64_t f) { return f >= 48'000 && f < 48'100 ? 0.9 : 0.0; });
        RunCommand("ffmpeg -v error -i " + Quoted(folder / "in.wav") + " -b:a 128k -c:a " + test.codec + " " +
                   Quoted(folder / test.file));
        ConformAll(folder / test.file, folder.Path());
        const ConformedAudio audio = ReadConformed(folder / "0.cfa");
        std::int64_t rise = 0;
        while (rise < std::int64_t(audio.header.frameCount) && std::abs(audio.At(rise)) < 0.45F) {
            ++rise;
        }
        EXPECT_NEAR(double(rise), 48'000, 48);
    }
}

TEST(Timeline, AChangeOfRateAndChannelsInMidStreamGoesOnInTheFirstLayout)
{
    support::TemporaryFolder folder;
    const std::string source = "ffmpeg -v error -f lavfi -i sine=d=2:r=";
    RunCommand(source + "44100 -ac 2 -c:a mp2 " + Quoted(folder / "1.mp2"));
    RunCommand(source + "32000 -ac 1 -c:a mp2 " + Quoted(folder / "2.mp2"));
    support::WriteFile(folder / "a.mp2",
                       support::ReadFile(folder / "1.mp2") + support::ReadFile(folder / "2.mp2"));
    ConformAll(folder / "a.mp2", folder.Path());
    const ConformedAudio audio = ReadConformed(folder / "0.cfa");
    EXPECT_EQ(audio.header.channels, 2u);
    EXPECT_NEAR(double(audio.header.frameCount) / 48000, 4.0, 0.1);
    double energy = 0;
    for (std::int64_t i = 3 * 48000; i < 3 * 48000 + 4800; ++i) {
        energy += std::abs(audio.At(i, 1));
    }
    EXPECT_GT(energy / 4800, 0.02); // the mono part sounds on both sides
}
