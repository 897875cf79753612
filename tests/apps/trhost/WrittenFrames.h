#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace trhosttest {

/// A picture that trhost wrote, as it lies in its file.
struct WrittenFrame {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::string format; ///< "bgra8"
    std::string shape;  ///< of its pixels, "16:15"; empty for PNG
    std::string pixels; ///< rows from the top, without padding
};
/// Reads a .raw file by its description, a .png with the library. Fails the test when something is wrong.
WrittenFrame ReadWrittenFrame(const std::filesystem::path& inPath);

/// Runs the ffmpeg tool. Throws when it fails.
void RunFFmpeg(const std::string& inArguments);
/// What it writes.
std::string FFmpegBytes(const std::string& inArguments, const std::filesystem::path& inFolder);

void WriteBytes(const std::filesystem::path& inPath, const std::string& inBytes);

} // namespace trhosttest
