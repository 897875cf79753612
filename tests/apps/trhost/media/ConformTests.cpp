// What lies in the files that are made: samples, peaks, the index.

#include "MediaTestSupport.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <sstream>
#include <thread>

using namespace mediatests;
using namespace trhost::media;

TEST(Conform, KeepsEverySampleThatNeedsNoConversion)
{
    const struct {
        const char* name;
        WavFormat format;
        int channels;
        std::int64_t frames;
    } kCases[] = {
        {"float stereo, longer than any buffer", WavFormat::kFloat32, 2, 200'001},
        {"float mono, one sample", WavFormat::kFloat32, 1, 1},
        {"24 bit, 6 channels", WavFormat::kInt24, 6, 50'000},
        {"16 bit, 3 channels that no speaker layout has by default", WavFormat::kInt16, 3, 40'000},
        {"16 bit, 19 channels", WavFormat::kInt16, 19, 5'000},
    };
    const auto signal = [](int inChannel, std::int64_t inFrame) {
        return double((inFrame * 37 + inChannel * 1009) % 65536 - 32768) / 32768.0;
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TemporaryFolder folder;
        WriteWav(folder / "in.wav", test.format, 48000, test.channels, test.frames, signal);
        const Conformed made = ConformAll(folder / "in.wav", folder.Path());
        EXPECT_THAT(made.result.warnings, testing::IsEmpty());
        const ConformedAudio audio = ReadConformed(folder / "0.cfa");
        ASSERT_EQ(audio.header.frameCount, std::uint64_t(test.frames));
        ASSERT_EQ(audio.header.channels, std::uint32_t(test.channels));
        EXPECT_EQ(made.result.outputs[0].count, test.frames);
        EXPECT_EQ(made.result.outputs[0].bytes, 64 + test.frames * test.channels * 4);
        std::int64_t different = 0;
        for (std::int64_t frame = 0; frame < test.frames; ++frame) {
            for (int channel = 0; channel < test.channels; ++channel) {
                different += audio.At(frame, channel) != static_cast<float>(signal(channel, frame));
            }
        }
        EXPECT_EQ(different, 0);
    }
}

TEST(Conform, ResamplesWithoutChangingPitchLevelPhaseOrLength)
{
    const struct {
        const char* name;
        int rate;
        std::int64_t frames;
        std::uint64_t expectedFrames;
        double tolerance; // what 16 bit and the resampler's filter leave
    } kCases[] = {
        {"compact disc", 44100, 88'200, 96'000, 2e-4},
        {"high rate", 96000, 96'000, 48'000, 2e-4},
        {"telephone", 8000, 16'000, 96'000, 5e-4},
        {"odd length is rounded up", 44100, 44'101, 48'002, 2e-4},
        {"shorter than the filter", 44100, 5, 6, 1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TemporaryFolder folder;
        const auto sine = [](int inChannel, double inSeconds) {
            return 0.5 * std::sin(2 * std::numbers::pi * (inChannel == 0 ? 440.0 : 1000.0) * inSeconds);
        };
        WriteWav(folder / "in.wav", WavFormat::kInt16, test.rate, 2, test.frames,
                 [&](int inChannel, std::int64_t inFrame) {
                     return sine(inChannel, double(inFrame) / test.rate);
                 });
        ConformAll(folder / "in.wav", folder.Path());
        const ConformedAudio audio = ReadConformed(folder / "0.cfa");
        ASSERT_EQ(audio.header.frameCount, test.expectedFrames);
        EXPECT_EQ(audio.header.sourceSampleRate, std::uint32_t(test.rate));
        // The first and last samples have nothing beyond them to be filtered with.
        double worst = 0;
        for (std::int64_t frame = 500; frame < std::int64_t(test.expectedFrames) - 500; ++frame) {
            for (int channel = 0; channel < 2; ++channel) {
                worst = std::max(worst,
                                 std::abs(audio.At(frame, channel) - sine(channel, double(frame) / 48000)));
            }
        }
        EXPECT_LT(worst, test.tolerance);
    }
}

TEST(Conform, PeaksOfEveryLevelAreThoseOfTheSamples)
{
    const struct {
        const char* name;
        int channels;
        std::int64_t frames;
        std::uint32_t expectedLevels;
        bool withNaN;
    } kCases[] = {
        {"one frame", 2, 1, 1, false},
        {"exactly one bucket", 1, 256, 1, false},
        {"one frame over", 2, 257, 2, false},
        {"a full second level", 2, 1024, 2, false},
        {"an open bucket on every level", 6, 256 * 85 + 3, 5, false},
        {"channels that fill no vector", 5, 70'000, 6, false},
        {"what is not a number counts as none", 2, 3000, 3, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TemporaryFolder folder;
        std::mt19937 random(7);
        std::uniform_real_distribution<double> values(-1.5, 1.5);
        WriteWav(folder / "in.wav", WavFormat::kFloat32, 48000, test.channels, test.frames,
                 [&](int inChannel, std::int64_t inFrame) {
                     const bool bad = test.withNaN && (inFrame % 7 == 0 || (inChannel == 1 && inFrame < 256));
                     return bad ? std::numeric_limits<double>::quiet_NaN() : values(random);
                 });
        ConformAll(folder / "in.wav", folder.Path());
        const ConformedAudio audio = ReadConformed(folder / "0.cfa");
        const std::string bytes = support::ReadFile(folder / "0.pek");
        PeakHeader header;
        ASSERT_GE(bytes.size(), sizeof header);
        std::memcpy(&header, bytes.data(), sizeof header);
        EXPECT_EQ(std::string(header.magic, 8), "TRH-PEK\n");
        EXPECT_EQ(header.frameCount, std::uint64_t(test.frames));
        EXPECT_EQ(header.channels, std::uint32_t(test.channels));
        ASSERT_EQ(header.levelCount, test.expectedLevels);
        std::uint64_t end = sizeof header;
        std::int64_t bucketFrames = 256;
        for (std::uint32_t level = 0; level < header.levelCount; ++level, bucketFrames *= 4) {
            SCOPED_TRACE("level " + std::to_string(level));
            const auto count = std::uint64_t((test.frames + bucketFrames - 1) / bucketFrames);
            ASSERT_EQ(header.levels[level].bucketCount, count);
            ASSERT_EQ(header.levels[level].offset, end);
            end += count * std::uint64_t(test.channels) * sizeof(Peak);
            ASSERT_LE(end, bytes.size());
            std::int64_t different = 0;
            for (std::int64_t i = 0; i < std::int64_t(count) * test.channels; ++i) {
                const int channel = static_cast<int>(i % test.channels);
                const std::int64_t first = i / test.channels * bucketFrames;
                float low = std::numeric_limits<float>::max();
                float high = std::numeric_limits<float>::lowest();
                for (std::int64_t f = first; f < std::min(first + bucketFrames, test.frames); ++f) {
                    low = std::fmin(low, audio.At(f, channel));
                    high = std::fmax(high, audio.At(f, channel));
                }
                if (test.withNaN && channel == 1 && first == 0) { // its first bucket holds no number: 0 and 0
                    low = level == 0 ? 0 : std::fmin(low, 0.0F);
                    high = level == 0 ? 0 : std::fmax(high, 0.0F);
                }
                Peak peak;
                std::memcpy(&peak, bytes.data() + header.levels[level].offset + std::size_t(i) * sizeof peak,
                            sizeof peak);
                different += peak.low != low || peak.high != high;
            }
            EXPECT_EQ(different, 0);
        }
        EXPECT_EQ(end, bytes.size());
    }
}

TEST(Conform, IndexesThePacketsThatLieInTheFile)
{
    const struct {
        const char* name;
        const char* file;
        const char* options;
    } kCases[] = {
        {"MP4 with B-frames", "a.mp4", "-c:v libx264 -preset ultrafast -bf 2 -g 12 -c:a aac"},
        {"MOV of key frames only", "a.mov", "-c:v mjpeg -c:a pcm_s16le"},
        {"MXF", "a.mxf", "-c:v mpeg2video -g 12 -bf 2 -c:a pcm_s16le -ar 48000"},
        {"Matroska", "a.mkv", "-c:v mpeg4 -g 12 -c:a libopus"},
        {"broadcast stream that does not start at 0", "a.ts", "-c:v mpeg2video -c:a mp2"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::TemporaryFolder folder;
        const Path media = folder / test.file;
        RunCommand(
            "ffmpeg -v error -f lavfi -i testsrc2=s=160x120:r=25:d=2 -f lavfi -i sine=d=2 -map 0:v -map "
            "1:a " +
            std::string(test.options) + " " + Quoted(media));
        const Conformed made = ConformAll(media, folder.Path());
        EXPECT_THAT(made.result.warnings, testing::IsEmpty());
        const std::string bytes = support::ReadFile(folder / "0.mcvideoindex");
        VideoIndexHeader header;
        ASSERT_GE(bytes.size(), sizeof header);
        std::memcpy(&header, bytes.data(), sizeof header);
        EXPECT_EQ(std::string(header.magic, 8), "TRH-MVI\n");
        EXPECT_EQ(header.width, 160u);
        EXPECT_EQ(header.height, 120u);
        ASSERT_EQ(bytes.size(), sizeof header + header.entryCount * sizeof(VideoIndexEntry));
        std::string found;
        std::uint32_t keyFrames = 0;
        const auto number = [](std::int64_t inValue, std::int64_t inUnknown) {
            return inValue == inUnknown ? "N/A" : std::to_string(inValue);
        };
        for (std::uint64_t i = 0; i < header.entryCount; ++i) {
            VideoIndexEntry entry;
            std::memcpy(&entry, bytes.data() + sizeof header + i * sizeof entry, sizeof entry);
            keyFrames += entry.flags & kVideoIndexFlag_KeyFrame;
            found += number(entry.pts, kNoTimestamp) + "," + number(entry.dts, kNoTimestamp) + "," +
                     std::to_string(entry.bytes) + "," + number(entry.position, -1) + "," +
                     (entry.flags & kVideoIndexFlag_KeyFrame ? "K" : "_") +
                     (entry.flags & kVideoIndexFlag_Discard ? "D" : "_") + "\n";
        }
        std::string expected;
        std::istringstream probed(RunCommand("ffprobe -v error -select_streams v -show_entries "
                                             "packet=pts,dts,size,pos,flags -of csv=p=0 " +
                                             Quoted(media)));
        for (std::string line; std::getline(probed, line);) { // side data adds columns and empty lines
            expected += line.empty() ? "" : line.substr(0, line.find_first_of("K_") + 2) + "\n";
        }
        EXPECT_EQ(found, expected);
        EXPECT_EQ(header.keyFrameCount, keyFrames);
        EXPECT_GE(keyFrames, 1u);
    }
}

TEST(Conform, MakesOnlyWhatIsAskedForAndGoesAgain)
{
    support::TemporaryFolder folder;
    WriteWav(folder / "in.wav", WavFormat::kInt16, 44100, 2, 44'100,
             [](int, std::int64_t f) { return f % 100 / 200.0; });
    const auto file = Module().Open((folder / "in.wav").string(), NoCancel());
    ASSERT_EQ(file->Streams().size(), 1u);
    EXPECT_EQ(file->Streams()[0].codec, "pcm_s16le");
    EXPECT_EQ(file->Streams()[0].sampleRate, 44100);
    EXPECT_EQ(file->Streams()[0].channels, 2);
    EXPECT_DOUBLE_EQ(file->DurationSeconds(), 1.0);
    file->Conform({}, nullptr, NoCancel());
    EXPECT_THAT(Names(folder.Path()), testing::ElementsAre("in.wav"));
    file->Conform({{OutputKind::kPeaks, 0, (folder / "alone.pek").string()}}, nullptr, NoCancel());
    EXPECT_THAT(Names(folder.Path()), testing::ElementsAre("alone.pek", "in.wav"));
    file->Conform(AllOutputs(*file, folder.Path()), nullptr, NoCancel());
    EXPECT_THAT(Names(folder.Path()), testing::ElementsAre("0.cfa", "0.pek", "alone.pek", "in.wav"));
    EXPECT_EQ(support::ReadFile(folder / "alone.pek"), support::ReadFile(folder / "0.pek"));
}

TEST(Conform, FilesOnSeveralThreadsDoNotDisturbEachOther)
{
    support::TemporaryFolder folder;
    RunCommand("ffmpeg -v error -f lavfi -i testsrc2=s=160x120:r=25:d=2 -f lavfi -i sine=d=2 -f lavfi -i "
               "anoisesrc=d=2:seed=1 "
               "-map 0:v -map 1:a -map 2:a -c:v mpeg4 -c:a libopus -b:a 64k " +
               Quoted(folder / "in.mkv"));
    const char* const kFolders[] = {"a", "b", "c"};
    std::vector<std::thread> threads;
    for (const char* name : kFolders) {
        std::filesystem::create_directory(folder / name);
        threads.emplace_back([&, name] { ConformAll(folder / "in.mkv", folder / name); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const char* file : {"0.mcvideoindex", "1.cfa", "1.pek", "2.cfa", "2.pek"}) {
        const std::string first = support::ReadFile(folder / "a" / file);
        EXPECT_GT(first.size(), 64u);
        EXPECT_TRUE(first == support::ReadFile(folder / "b" / file)) << file;
        EXPECT_TRUE(first == support::ReadFile(folder / "c" / file)) << file;
    }
    EXPECT_FALSE(support::ReadFile(folder / "a/1.cfa") == support::ReadFile(folder / "a/2.cfa"));
}
