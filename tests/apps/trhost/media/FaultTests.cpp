// What goes wrong: cancelling, damaged and foreign files, full disks, odd names.

#include "MediaTestSupport.h"

#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <support/KeptText.h>

#include <gmock/gmock.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <random>

using namespace mediatests;
using namespace trhost::media;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// What conforming all of a file throws.
struct Thrown {
    std::uint32_t code = 0;
    std::string text = "nothing";
};
Thrown ConformThrows(const Path& inMedia, const Path& inFolder, const ICancel& inCancel = NoCancel())
{
    try {
        ConformAll(inMedia, inFolder, inCancel);
    } catch (const kiocore::kio_exception& exception) {
        return {exception.Code(), trhost::ToldText(exception.what())};
    }
    return {};
}

double Tone(int, std::int64_t inFrame)
{
    return double(inFrame % 200) / 400;
}

std::string Noise(std::size_t inSize)
{
    std::mt19937 random(5);
    std::string bytes(inSize, '\0');
    for (char& c : bytes) {
        c = static_cast<char>(random());
    }
    return bytes;
}

} // namespace

TEST(Faults, ACancelAtAnyMomentLeavesNothing)
{
    support::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "cache");
    RunCommand(
        "ffmpeg -v error -f lavfi -i testsrc2=s=64x64:r=25:d=3 -f lavfi -i sine=d=3 -map 0 -map 1 -c:v mpeg4 "
        "-c:a aac " +
        Quoted(folder / "in.mp4"));
    const CancelAt never(1'000'000);
    ConformAll(folder / "in.mp4", folder / "cache", never);
    ASSERT_THAT(Names(folder / "cache"), ElementsAre("0.mcvideoindex", "1.cfa", "1.pek"));
    const std::string before = support::ReadFile(folder / "cache/1.cfa");
    support::WriteFile(folder / "cache/1.cfa", "older");
    const long step = std::max(1L, never.Asked() / 40);
    for (long question = 1; question <= never.Asked(); question += step) {
        SCOPED_TRACE("question " + std::to_string(question) + " of " + std::to_string(never.Asked()));
        const CancelAt cancel(question);
        const Thrown thrown = ConformThrows(folder / "in.mp4", folder / "cache", cancel);
        EXPECT_EQ(thrown.code, kiocore::kError_Cancelled) << thrown.text;
        EXPECT_THAT(Names(folder / "cache"), ElementsAre("0.mcvideoindex", "1.cfa", "1.pek"));
        EXPECT_EQ(support::ReadFile(folder / "cache/1.cfa"), "older");
    }
    // The very last question comes before anything appears.
    EXPECT_EQ(ConformThrows(folder / "in.mp4", folder / "cache", CancelAt(never.Asked())).code,
              kiocore::kError_Cancelled);
    EXPECT_EQ(support::ReadFile(folder / "cache/1.cfa"), "older");
    ConformAll(folder / "in.mp4", folder / "cache");
    EXPECT_TRUE(support::ReadFile(folder / "cache/1.cfa") == before);
}

TEST(Faults, ProgressGrowsToTheEndAndWhatItThrowsPassesThrough)
{
    struct Progress : IProgress {
        void Progressed(double inFraction) override
        {
            steps.push_back(inFraction);
            if (inFraction >= stopAt) {
                throw std::runtime_error("stop");
            }
        }
        std::vector<double> steps;
        double stopAt = 2;
    };
    support::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "cache");
    WriteWav(folder / "in.wav", WavFormat::kInt16, 48000, 2, 480'000, Tone);
    Progress progress;
    ConformAll(folder / "in.wav", folder.Path(), NoCancel(), &progress);
    EXPECT_TRUE(std::is_sorted(progress.steps.begin(), progress.steps.end()));
    EXPECT_EQ(progress.steps.back(), 1.0);
    EXPECT_THAT(progress.steps.size(), AllOf(testing::Ge(5u), testing::Le(210u)));
    progress.stopAt = 0.5;
    EXPECT_THROW(ConformAll(folder / "in.wav", folder / "cache", NoCancel(), &progress), std::runtime_error);
    EXPECT_THAT(Names(folder / "cache"), IsEmpty());
}

TEST(Faults, WhatIsNoMediaIsNamedInOneLine)
{
    support::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "cache");
    const auto write = [&](const char* inName, const std::string& inBytes) {
        support::WriteFile(folder / inName, inBytes);
    };
    WriteWav(folder / "whole.wav", WavFormat::kInt16, 48000, 1, 100, Tone);
    const std::string wav = support::ReadFile(folder / "whole.wav");
    write("empty.wav", "");
    write("noise.mp3", Noise(50'000));
    write("noise.mov", Noise(50'000));
    write("text.txt", "Some words.\n");
    write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\nwhole.wav\n#EXT-X-ENDLIST\n");
    write("join.ffconcat", "ffconcat version 1.0\nfile whole.wav\n");
    write("words.srt", "1\n00:00:01,000 --> 00:00:02,000\nWords\n\n");
    write("header.wav", wav.substr(0, 44));
    write("strange.wav", std::string(wav).replace(20, 2, "\x99\x99", 2));
    RunCommand("ffmpeg -v error -f lavfi -i testsrc2=s=64x64:d=1 -frames:v 1 " +
               Quoted(folder / "still.png"));
    RunCommand("ffmpeg -v error -f lavfi -i testsrc2=s=64x64:d=1 -c:v mpeg4 " + Quoted(folder / "whole.mp4"));
    write("cut.mp4", support::ReadFile(folder / "whole.mp4").substr(0, 5000));
    mkfifo((folder / "pipe.wav").c_str(), 0600);
    const struct {
        const char* name;
        std::uint32_t expectedCode;
        const char* expectedText;
    } kCases[] = {
        {"missing.wav", kiocore::kError_File, "No such file"},
        {"cache", kMediaError_NotMedia, "is a folder; expected a media file"},
        {"pipe.wav", kMediaError_NotMedia, "not a regular file"},
        {"empty.wav", kMediaError_NotMedia, "is empty"},
        {"noise.mp3", kMediaError_NotMedia, "expected a media file"},
        {"noise.mov", kMediaError_NotMedia, "expected a media file"},
        {"text.txt", kMediaError_NotMedia, "expected a media file"},
        {"list.m3u8", kMediaError_NotMedia, "expected a media file"},
        {"join.ffconcat", kMediaError_NotMedia, "expected a media file"},
        {"words.srt", kMediaError_NotMedia, "no audio or video streams"},
        {"still.png", kMediaError_NotMedia, "a still picture"},
        {"cut.mp4", kMediaError_NotMedia, "damaged or cut short"},
        {"header.wav", kMediaError_NothingDecoded, "stream 0: no sound in it"},
        {"strange.wav", kMediaError_NothingDecoded, "has no decoder"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const Thrown thrown = ConformThrows(folder / test.name, folder / "cache");
        EXPECT_EQ(thrown.code, test.expectedCode);
        EXPECT_THAT(thrown.text, AllOf(HasSubstr((folder / test.name).string()), HasSubstr(test.expectedText),
                                       testing::Not(HasSubstr("\n"))));
        EXPECT_THAT(Names(folder / "cache"), IsEmpty());
    }
}

TEST(Faults, DamageIsPassedOverCountedAndToldOfWhileTheRestIsKept)
{
    support::TemporaryFolder folder;
    const std::string make =
        "ffmpeg -v error -f lavfi -i testsrc2=s=64x64:r=25:d=10 -f lavfi -i sine=d=10:r=48000 "
        "-map 0 -map 1 -c:v mpeg4 -c:a aac ";
    RunCommand(make + "-movflags +faststart " + Quoted(folder / "whole.mp4"));
    RunCommand(make + Quoted(folder / "whole.mkv"));
    WriteWav(folder / "whole.wav", WavFormat::kInt16, 48000, 1, 480'000, Tone);
    const struct {
        const char* name;
        const char* file;
        bool cut; // at half of it; else a stretch in the middle is overwritten
        double leastSeconds;
        double mostSeconds;
    } kCases[] = {
        {"MP4 cut short", "whole.mp4", true, 3, 7},
        {"Matroska cut short", "whole.mkv", true, 3, 7},
        {"WAVE cut short", "whole.wav", true, 4.9, 5.1},
        {"a bad stretch in an MP4", "whole.mp4", false, 9.9, 10.1},
        {"a bad stretch in a Matroska file", "whole.mkv", false, 9.9, 10.1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::string bytes = support::ReadFile(folder / test.file);
        if (test.cut) {
            bytes.resize(bytes.size() / 2);
        } else {
            const std::string noise = Noise(bytes.size() / 10);
            bytes.replace(bytes.size() / 2, noise.size(), noise);
        }
        const Path media = folder / (std::string("bad-") + test.file);
        support::WriteFile(media, bytes);
        const Conformed made = ConformAll(media, folder.Path());
        const std::size_t audio = made.outputs.size() - 2;
        ASSERT_TRUE(made.result.outputs[audio].made) << made.result.outputs[audio].reason;
        const double seconds = double(made.result.outputs[audio].count) / 48000;
        EXPECT_GE(seconds, test.leastSeconds);
        EXPECT_LE(seconds, test.mostSeconds);
        EXPECT_THAT(made.result.warnings, testing::Contains(HasSubstr(media.string())));
    }
}

TEST(Faults, AStreamThatCannotBeDecodedFailsAlone)
{
    support::TemporaryFolder folder;
    RunCommand(
        "ffmpeg -v error -f lavfi -i sine=d=1 -f lavfi -i sine=d=1 -map 0 -map 1 -c:a:0 pcm_s16le -c:a:1 "
        "aac " +
        Quoted(folder / "in.mkv"));
    std::string bytes = support::ReadFile(folder / "in.mkv");
    bytes.replace(bytes.find("A_AAC"), 5, "A_ZZZ");
    support::WriteFile(folder / "in.mkv", bytes);
    const Conformed made = ConformAll(folder / "in.mkv", folder.Path());
    EXPECT_THAT(Names(folder.Path()), ElementsAre("0.cfa", "0.pek", "in.mkv"));
    EXPECT_FALSE(made.streams[1].decodable);
    EXPECT_TRUE(made.result.outputs[0].made);
    EXPECT_FALSE(made.result.outputs[2].made);
    EXPECT_THAT(made.result.outputs[2].reason, HasSubstr("has no decoder"));
    ASSERT_EQ(made.result.warnings.size(), 1u);
    EXPECT_THAT(trhost::ToldText(made.result.warnings[0]), HasSubstr("in.mkv: stream 1: "));
}

TEST(Faults, WhenAFileCannotBeWrittenNoneAppears)
{
    support::TemporaryFolder folder;
    WriteWav(folder / "in.wav", WavFormat::kInt16, 48000, 2, 480'000, Tone);
    const auto conform = [&](const std::vector<Output>& inOutputs) -> std::string {
        try {
            Module().Open((folder / "in.wav").string(), NoCancel())->Conform(inOutputs, nullptr, NoCancel());
        } catch (const kiocore::kio_exception& exception) {
            return trhost::ToldText(exception.what());
        }
        return "nothing thrown";
    };
    const Output conformed{OutputKind::kConformedAudio, 0, (folder / "cache/0.cfa").string()};
    const Output peaks{OutputKind::kPeaks, 0, (folder / "cache/0.pek").string()};
    EXPECT_THAT(conform({conformed, peaks}), HasSubstr("cache/0.cfa")) << "the folder does not exist";

    std::filesystem::create_directory(folder / "cache");
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit small{1'000'000, old.rlim_max};
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string full = conform({conformed, peaks});
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_THAT(full, AllOf(HasSubstr("cache/0.cfa"), HasSubstr("File too large")));
    EXPECT_THAT(Names(folder / "cache"), IsEmpty());

    std::filesystem::create_directories(folder / "cache/0.pek/in the way");
    EXPECT_THAT(conform({conformed, peaks}), HasSubstr("cache/0.pek"));
    EXPECT_THAT(Names(folder / "cache"), ElementsAre("0.pek")) << "the other had appeared already";
}

TEST(Faults, OutputsThatMakeNoSenseAreRefused)
{
    support::TemporaryFolder folder;
    WriteWav(folder / "in.wav", WavFormat::kInt16, 48000, 1, 100, Tone);
    const std::string media = (folder / "in.wav").string();
    const std::string path = (folder / "x").string();
    const struct {
        const char* name;
        std::vector<Output> outputs;
    } kCases[] = {
        {"no such stream", {{OutputKind::kPeaks, 1, path}}},
        {"negative stream", {{OutputKind::kPeaks, -1, path}}},
        {"index of an audio stream", {{OutputKind::kVideoIndex, 0, path}}},
        {"one kind twice", {{OutputKind::kPeaks, 0, path}, {OutputKind::kPeaks, 0, path + "2"}}},
        {"one path twice", {{OutputKind::kPeaks, 0, path}, {OutputKind::kConformedAudio, 0, path}}},
        {"over the media file", {{OutputKind::kConformedAudio, 0, media}}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto file = Module().Open(media, NoCancel());
        try {
            file->Conform(test.outputs, nullptr, NoCancel());
            ADD_FAILURE() << "nothing thrown";
        } catch (const kiocore::kio_exception& exception) {
            EXPECT_EQ(exception.Code(), kiocore::kError_BadArgument) << exception.what();
        }
        EXPECT_THAT(Names(folder.Path()), ElementsAre("in.wav"));
    }
}

TEST(Faults, OddNamesAreJustNames)
{
    const std::string kNames[] = {
        "spaces and ünïcode 映像.wav",
        "100% %03d.wav",
        "http:x.wav",
        "-i.wav",
        "a?b*c[d].wav",
        "new\nline.wav",
        "not UTF-8 \xff\xfe.wav",
        "concat:a|b.wav",
        "no extension",
        std::string(251, 'n') + ".wav",
    };
    for (const std::string& name : kNames) {
        SCOPED_TRACE(name);
        support::TemporaryFolder folder;
        WriteWav(folder / name, WavFormat::kInt16, 48000, 1, 1000, Tone);
        const auto file = Module().Open((folder / name).string(), NoCancel());
        const Path made = folder / (name.substr(0, 251) + ".cfa");
        file->Conform({{OutputKind::kConformedAudio, 0, made.string()}}, nullptr, NoCancel());
        EXPECT_EQ(ReadConformed(made).header.frameCount, 1000u);
        EXPECT_EQ(Names(folder.Path()).size(), 2u);
    }
}
