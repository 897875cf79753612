#include "CacheSetup.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace bench {
namespace {

/// Wall time of a whole process. @throws when it fails.
double TimeOfProcess(const std::vector<std::string>& inCommand)
{
    std::vector<char*> arguments;
    for (const std::string& word : inCommand) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    int status = 0;
    const double time = Timed(CLOCK_MONOTONIC, [&] {
        pid_t process = 0;
        if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
            throw std::runtime_error("cannot start " + inCommand[0]);
        }
        waitpid(process, &status, 0);
    });
    posix_spawn_file_actions_destroy(&actions);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(inCommand[0] + " failed");
    }
    return time;
}

void Put(std::ofstream& ioFile, std::uint32_t inValue, int inBytes)
{
    for (int i = 0; i < inBytes; ++i) {
        ioFile.put(static_cast<char>(inValue >> 8 * i));
    }
}

/// Ten minutes of 44.1 kHz stereo: a sweep, so that the resampler has something to do.
void MakeWav(const std::string& inPath, unsigned inSeconds)
{
    constexpr std::uint32_t kRate = 44100;
    const std::uint32_t bytes = inSeconds * kRate * 4;
    std::ofstream file(inPath, std::ios::binary);
    file << "RIFF";
    Put(file, bytes + 36, 4);
    file << "WAVEfmt ";
    Put(file, 16, 4);
    Put(file, 1, 2);
    Put(file, 2, 2);
    Put(file, kRate, 4);
    Put(file, kRate * 4, 4);
    Put(file, 4, 2);
    Put(file, 16, 2);
    file << "data";
    Put(file, bytes, 4);
    std::vector<std::int16_t> second(kRate * 2);
    for (std::uint32_t i = 0; i < kRate; ++i) {
        const double phase = i * (0.01 + i * 1e-6);
        second[i * 2] = static_cast<std::int16_t>(20000 * std::sin(phase));
        second[i * 2 + 1] = static_cast<std::int16_t>(15000 * std::cos(phase));
    }
    for (unsigned s = 0; s < inSeconds; ++s) {
        file.write(reinterpret_cast<const char*>(second.data()),
                   static_cast<std::streamsize>(second.size() * 2));
    }
}

} // namespace

void BenchIngest(CacheSetup& ioSetup)
{
    PrintHeader("ingest of one file (against ffmpeg doing the same conform; wall, whole processes)");
    const std::string wav = ioSetup.Root() + "/ten minutes.wav";
    const std::string mp4 = ioSetup.Root() + "/ten minutes.mp4";
    const std::string out = ioSetup.Root() + "/out.wav";
    const std::string state = ioSetup.Root() + "/state";
    MakeWav(wav, 600);
    TimeOfProcess({"ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", "color=s=320x180:d=600",
                   "-i", wav, "-c:v", "mpeg4", "-c:a", "aac", "-shortest", mp4});
    for (const std::string& media : {wav, mp4}) {
        const std::string kind = media.substr(media.rfind('.') + 1);
        const Comparison measured = Compare(
            [&] {
                std::filesystem::remove(out);
                return TimeOfProcess({"ffmpeg", "-nostdin", "-v", "error", "-y", "-i", media, "-map", "0:a",
                                      "-ar", "48000", "-c:a", "pcm_f32le", out});
            },
            [&] {
                std::filesystem::remove_all(state);
                return TimeOfProcess({TRHOST_PROGRAM, "--quiet", "--state", state, "ingest", media});
            },
            5, 1);
        PrintRow("first run, 10 minutes of " + kind, measured, 1.1, "ms");
        const auto again = [&] {
            return TimeOfProcess({TRHOST_PROGRAM, "--quiet", "--state", state, "ingest", media});
        };
        std::vector<double> seconds;
        for (int i = 0; i < 9; ++i) {
            seconds.push_back(again());
        }
        const double second = Median(seconds);
        PrintRow("second run against our first, " + kind, {measured.ours, second, second / measured.ours},
                 0.02, "ms");
    }
}

} // namespace bench
