#include "WrittenFrames.h"

#include <support/TemporaryFolder.h>

#include <VF/PNG.h>
#include <VF/VideoFrames.h>
#include <kiocore/filesupport/NativePath.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

namespace trhosttest {

namespace {

std::uint32_t Little(const std::string& inBytes, std::size_t inAt)
{
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) {
        number = number << 8 | std::uint8_t(inBytes.at(inAt + i));
    }
    return number;
}

WrittenFrame ReadRaw(const std::string& inBytes)
{
    WrittenFrame frame;
    EXPECT_EQ(inBytes.substr(0, 8), std::string("WRFV\x02\0\x01\0", 8));
    frame.width = Little(inBytes, 12);
    frame.height = Little(inBytes, 16);
    for (const kiomediatypes::NamedPixelFormat& format : kiomediatypes::kPixelFormats) {
        if (inBytes.substr(8, 4) == std::string({char(format.format), char(format.format >> 8),
                                                 char(format.format >> 16), char(format.format >> 24)})) {
            frame.format = format.name;
        }
    }
    frame.shape = std::to_string(Little(inBytes, 24)) + ":" + std::to_string(Little(inBytes, 28));
    const std::size_t rowBytes = Little(inBytes, 20);
    EXPECT_EQ(inBytes.size(), 32 + rowBytes * frame.height);
    for (std::size_t row = frame.height; row-- > 0;) {
        frame.pixels += inBytes.substr(32 + row * rowBytes, rowBytes);
    }
    return frame;
}

} // namespace

WrittenFrame ReadWrittenFrame(const std::filesystem::path& inPath)
{
    if (inPath.extension() == ".raw") {
        return ReadRaw(support::ReadFile(inPath));
    }
    const MF::IVideoFrameRef picture = VF::DecompressPNG(kiocore::filesupport::FromNative(inPath.native()));
    if (!picture) {
        throw std::runtime_error(inPath.native() + " is no PNG");
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(picture);
    WrittenFrame frame{
        picture->GetWidth(), picture->GetHeight(), kiomediatypes::NameOf(picture->GetPixelFormat()), {}, {}};
    const VF::FrameLayout layout = VF::LayoutOf(picture->GetPixelFormat(), frame.width, frame.height, true);
    for (std::uint32_t row = 0; row < frame.height; ++row) {
        frame.pixels.append(reinterpret_cast<const char*>(memory->GetPixels() + row * memory->GetRowBytes()),
                            layout.planes[0].usedBytes);
    }
    return frame;
}

void RunFFmpeg(const std::string& inArguments)
{
    const std::string command = "ffmpeg -nostdin -v error -y " + inArguments;
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

std::string FFmpegBytes(const std::string& inArguments, const std::filesystem::path& inFolder)
{
    const std::filesystem::path output = inFolder / "ffmpeg-output";
    RunFFmpeg(inArguments + " '" + output.native() + "'");
    return support::ReadFile(output);
}

void WriteBytes(const std::filesystem::path& inPath, const std::string& inBytes)
{
    support::WriteFile(inPath, inBytes);
}

} // namespace trhosttest
