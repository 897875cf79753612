#pragma once

#include <cstdint>
#include <filesystem>

namespace trhosttest {

/// A 16-bit mono wave file at 48 kHz: a ramp whose values depend on the seed.
void WriteWave(const std::filesystem::path& inPath, int inFrames = 4800, int inSeed = 1);
/// One that claims and has this many frames of silence, without taking room on disk.
void WriteSparseWave(const std::filesystem::path& inPath, std::uint32_t inFrames);
/// One second of picture and sound, made with the ffmpeg tool; the container follows the name.
void WriteMovie(const std::filesystem::path& inPath);

} // namespace trhosttest
