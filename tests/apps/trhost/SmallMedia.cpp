#include "SmallMedia.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

namespace trhosttest {

namespace {

void AppendLittle(std::string& ioBytes, std::uint32_t inNumber, int inSize)
{
    for (int i = 0; i < inSize; ++i) {
        ioBytes += char(inNumber >> (8 * i));
    }
}

std::string WaveHeader(std::uint32_t inFrames)
{
    constexpr std::uint32_t kRate = 48000;
    std::string bytes = "RIFF";
    AppendLittle(bytes, 36 + inFrames * 2, 4);
    bytes += "WAVEfmt ";
    AppendLittle(bytes, 16, 4);
    AppendLittle(bytes, 1, 2); // PCM
    AppendLittle(bytes, 1, 2); // one channel
    AppendLittle(bytes, kRate, 4);
    AppendLittle(bytes, kRate * 2, 4);
    AppendLittle(bytes, 2, 2);
    AppendLittle(bytes, 16, 2);
    bytes += "data";
    AppendLittle(bytes, inFrames * 2, 4);
    return bytes;
}

} // namespace

void WriteWave(const std::filesystem::path& inPath, int inFrames, int inSeed)
{
    std::string bytes = WaveHeader(std::uint32_t(inFrames));
    for (int i = 0; i < inFrames; ++i) {
        AppendLittle(bytes, std::uint32_t(i * 37 * inSeed) & 0xFFFF, 2);
    }
    std::ofstream(inPath, std::ios::binary) << bytes;
}

void WriteSparseWave(const std::filesystem::path& inPath, std::uint32_t inFrames)
{
    std::ofstream(inPath, std::ios::binary) << WaveHeader(inFrames);
    std::filesystem::resize_file(inPath, 44 + std::uintmax_t(inFrames) * 2);
}

void WriteMovie(const std::filesystem::path& inPath)
{
    const std::string command =
        "ffmpeg -nostdin -v error -y -f lavfi -i testsrc=d=1:s=64x64:r=10 -f lavfi -i sine=d=1 "
        "-c:v mpeg4 -c:a aac -shortest '" +
        inPath.native() + "'";
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("the ffmpeg tool could not make " + inPath.native());
    }
}

} // namespace trhosttest
