#include <devices/WaveFile.h>

#include <support/FaultyFileCalls.h>
#include <support/TemporaryFolder.h>

#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <limits>
#include <unistd.h>

using namespace trhost::devices;

namespace {

constexpr AudioFormat kMono{48000, 1};

/// What a reader of WAVE files of its own finds in it: codec, rate, channels, frames.
std::string Probe(const std::filesystem::path& inPath)
{
    const std::string command = "ffprobe -v error -of csv=p=0 -show_entries "
                                "stream=codec_name,sample_rate,channels,duration_ts '" +
                                inPath.native() + "'";
    FILE* const pipe = popen(command.c_str(), "r");
    char text[256] = "";
    [[maybe_unused]] const auto got = fread(text, 1, sizeof text - 1, pipe);
    pclose(pipe);
    return std::string(text).substr(0, std::string(text).find('\n'));
}

/// Full after so many bytes, in the middle of a frame; overwriting still works.
class FullDisk : public support::FaultyFileCalls {
public:
    ssize_t Write(int inFile, const void* inBytes, std::size_t inSize) override
    {
        const off_t at = lseek(inFile, 0, SEEK_CUR);
        if (at >= kBytes) {
            errno = ENOSPC;
            return -1;
        }
        return FaultyFileCalls::Write(inFile, inBytes, std::min(inSize, std::size_t(kBytes - at)));
    }
    static constexpr off_t kBytes = 80 + 200'001;
};

bool IsEmpty(const support::TemporaryFolder& inFolder)
{
    return std::filesystem::is_empty(inFolder.Path());
}

} // namespace

TEST(WaveFile, OtherProgramsReadEveryForm)
{
    const struct {
        const char* name;
        SampleForm form;
        AudioFormat format;
        const char* codec;
    } kCases[] = {
        {"16 bit", SampleForm::kInt16, {44100, 2}, "pcm_s16le"},
        {"24 bit, an odd number of bytes", SampleForm::kInt24, {48000, 1}, "pcm_s24le"},
        {"float", SampleForm::kFloat32, {96000, 2}, "pcm_f32le"},
        {"more than two channels", SampleForm::kInt16, {48000, 6}, "pcm_s16le"},
        {"more than two channels of float", SampleForm::kFloat32, {48000, 5}, "pcm_f32le"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TemporaryFolder folder;
        const std::vector<float> samples(std::size_t(4801 * test.format.channels), 0.25f);
        WaveFile file(folder / "a.wav", test.format, test.form, false);
        file.Write(samples.data(), 4801);
        file.Finish();
        EXPECT_EQ(Probe(folder / "a.wav"), std::string(test.codec) + "," + std::to_string(test.format.rate) +
                                               "," + std::to_string(test.format.channels) + ",4801");
        EXPECT_EQ(std::filesystem::file_size(folder / "a.wav") % 2, 0u);
    }
}

TEST(WaveFile, SamplesComeBackAsTheyWereAndLoudOnesAreClipped)
{
    for (const SampleForm form : {SampleForm::kInt16, SampleForm::kInt24, SampleForm::kInt32}) {
        const int bits = std::min(BytesOf(form) * 8, 24); // what a float holds
        const float step = std::ldexp(1.0f, 1 - bits);
        const std::vector<float> samples = {0, step, -step, 0.5f, -1, 1 - step};
        std::vector<std::uint8_t> bytes(samples.size() * std::size_t(BytesOf(form)));
        std::vector<float> back(samples.size());
        FromFloat(form, samples.data(), samples.size(), bytes.data());
        ToFloat(form, bytes.data(), back.size(), back.data());
        EXPECT_EQ(back, samples) << BytesOf(form);
        const float loud[] = {1, 7, -7, std::numeric_limits<float>::quiet_NaN()};
        FromFloat(form, loud, 4, bytes.data());
        ToFloat(form, bytes.data(), 4, back.data());
        EXPECT_NEAR(back[0], 1, step);
        EXPECT_EQ(back[1], back[0]);
        EXPECT_EQ(back[2], -1);
        EXPECT_EQ(back[3], 0);
    }
}

TEST(WaveFile, ReplacesAFileOnlyWhenToldTo)
{
    const support::TemporaryFolder folder;
    support::WriteFile(folder / "a.wav", "old");
    EXPECT_THROW(WaveFile(folder / "a.wav", kMono, SampleForm::kInt16, false), kiocore::kio_exception);
    EXPECT_THROW(WaveFile(folder.Path(), kMono, SampleForm::kInt16, true), kiocore::kio_exception);
    EXPECT_THROW(WaveFile(folder / "gone/a.wav", kMono, SampleForm::kInt16, true), kiocore::file_exception);
    {
        WaveFile dropped(folder / "a.wav", kMono, SampleForm::kInt16, true);
    }
    EXPECT_EQ(support::ReadFile(folder / "a.wav"), "old");
    WaveFile(folder / "a.wav", kMono, SampleForm::kInt16, true).Finish();
    EXPECT_EQ(std::filesystem::file_size(folder / "a.wav"), 80u);

    // One that comes while ours is being made stays, too.
    std::filesystem::remove(folder / "a.wav");
    {
        WaveFile late(folder / "a.wav", kMono, SampleForm::kInt16, false);
        support::WriteFile(folder / "a.wav", "somebody's");
        EXPECT_THROW(late.Finish(), kiocore::kio_exception);
    }
    EXPECT_EQ(support::ReadFile(folder / "a.wav"), "somebody's");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST(WaveFile, WorksWhereThereAreNoHardLinks)
{
    const support::TemporaryFolder folder;
    support::FaultyFileCalls calls;
    calls.FailCalls("Link", EPERM);
    WaveFile file(folder / "a.wav", kMono, SampleForm::kInt16, false);
    file.Finish();
    EXPECT_EQ(std::filesystem::file_size(folder / "a.wav"), 80u);
}

TEST(WaveFile, OnAFullDiskWhatWasWrittenCanBeKept)
{
    const support::TemporaryFolder folder;
    const FullDisk disk;
    const std::vector<float> samples(10'000, 0.5f);
    {
        WaveFile file(folder / "a.wav", {48000, 2}, SampleForm::kInt16, false);
        EXPECT_THROW(
            {
                for (;;) {
                    file.Write(samples.data(), 5000);
                }
            },
            kiocore::file_exception);
        EXPECT_EQ(file.Frames(), 50'000);
        file.Finish();
    }
    EXPECT_EQ(std::filesystem::file_size(folder / "a.wav"), 80u + 200'000);
    EXPECT_EQ(Probe(folder / "a.wav"), "pcm_s16le,48000,2,50000");
}

TEST(WaveFile, NothingIsLeftOfOneThatCannotBeCompleted)
{
    for (const char* call : {"Open", "Sync", "Close"}) {
        SCOPED_TRACE(call);
        const support::TemporaryFolder folder;
        support::FaultyFileCalls calls;
        calls.FailCalls(call, EIO);
        EXPECT_THROW(WaveFile(folder / "a.wav", kMono, SampleForm::kInt16, false).Finish(),
                     kiocore::file_exception);
        EXPECT_TRUE(IsEmpty(folder));
    }
}
