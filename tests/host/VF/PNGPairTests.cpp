#include "PNGBytes.h"

#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include <support/TemporaryFolder.h>
#include <support/TraceRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace support;

/// One of many equal pixels, or so; large enough to be read in several blocks when it is not compressed.
std::string FileOf(std::uint32_t inSide, std::uint32_t inValue)
{
    StoredPicture picture;
    picture.width = inSide;
    picture.height = inSide;
    picture.sample = [=](std::uint32_t x, std::uint32_t y, int channel) {
        return (x * 7919 + y * 104729 + static_cast<std::uint32_t>(channel) * 31 + inValue) * 2654435761u >>
               24;
    };
    return PNGFile(picture);
}

bool IsPixelOf(const MF::IVideoFrameRef& inFrame, std::uint32_t inValue)
{
    const VF::InterfaceRef<VF::IVideoFrameMemoryAccess> access = inFrame;
    return access->GetPixels()[2] == static_cast<std::byte>(inValue * 2654435761u >> 24);
}

TEST(PNGPair, GivesBothPicturesOrTheReasons)
{
    const TemporaryFolder folder;
    WriteFile(folder / "one.png", FileOf(200, 1));
    WriteFile(folder / "two.png", FileOf(200, 2));
    WriteFile(folder / "other size.png", FileOf(100, 2));
    WriteFile(folder / "cut.png", FileOf(200, 2).substr(0, 3000));
    WriteFile(folder / "text.png", "not a picture, though its name says so: see for yourself");
    const struct {
        const char* first;
        const char* second;
        const char* firstReason; // null: there is a frame
        const char* secondReason;
    } kCases[] = {
        {"one.png", "two.png", nullptr, nullptr},
        {"two.png", "other size.png", nullptr, nullptr},
        {"one.png", "cut.png", nullptr, "claims"},
        {"missing.png", "two.png", "No such file", nullptr},
        {"text.png", "one.png", "does not start as a PNG", nullptr},
        {"cut.png", "cut.png", "claims", "claims"},
        {"", "text.png", "no file", "does not start as a PNG"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(test.first) + " and " + test.second);
        const TraceRecorder trace("Host");
        const VF::PNGPair pair = VF::DecompressPNGs(folder.UTF16(test.first), folder.UTF16(test.second));
        EXPECT_EQ(trace.CountContaining("VF::DecompressPNG"), 2);
        EXPECT_EQ(bool(pair.first), test.firstReason == nullptr);
        EXPECT_EQ(bool(pair.second), test.secondReason == nullptr);
        EXPECT_THAT(pair.firstReason, testing::HasSubstr(test.firstReason ? test.firstReason : ""));
        EXPECT_THAT(pair.secondReason, testing::HasSubstr(test.secondReason ? test.secondReason : ""));
        if (pair.first) {
            EXPECT_EQ(pair.firstReason, "");
            EXPECT_TRUE(IsPixelOf(pair.first, std::strcmp(test.first, "one.png") == 0 ? 1 : 2));
        }
        if (pair.second) {
            EXPECT_EQ(pair.secondReason, "");
            EXPECT_TRUE(IsPixelOf(pair.second, std::strcmp(test.second, "one.png") == 0 ? 1 : 2));
        }
    }
}

TEST(PNGPair, DecodesTheSameBytesOnce)
{
    const TemporaryFolder folder;
    const std::string file = FileOf(300, 1);
    std::string differsLate = file + "behind the end";
    WriteFile(folder / "one.png", differsLate);
    WriteFile(folder / "copy.png", differsLate);
    differsLate.back() = 'x';
    WriteFile(folder / "nearly.png", differsLate);
    std::string damaged = file;
    damaged[damaged.size() - 20] = static_cast<char>(damaged[damaged.size() - 20] ^ 1);
    WriteFile(folder / "damaged.png", damaged);
    WriteFile(folder / "damaged copy.png", damaged);
    const struct {
        const char* name;
        const char* first;
        const char* second;
        bool areOne;
        bool areTaken;
    } kCases[] = {
        {"a file and itself", "one.png", "one.png", true, true},
        {"a copy", "one.png", "copy.png", true, true},
        {"the last byte differs", "one.png", "nearly.png", false, true},
        {"damaged alike", "damaged.png", "damaged copy.png", true, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const TraceRecorder trace("Host");
        const VF::PNGPair pair = VF::DecompressPNGs(folder.UTF16(test.first), folder.UTF16(test.second));
        EXPECT_EQ(trace.CountContaining("VF::CreateVideoFrame"), test.areOne ? 1 : 2);
        EXPECT_EQ(bool(pair.first), test.areTaken);
        EXPECT_EQ(pair.first.Get() == pair.second.Get(), test.areOne);
        EXPECT_EQ(pair.firstReason.empty(), test.areTaken);
        EXPECT_EQ(pair.firstReason.empty(), pair.secondReason.empty());
        const VF::InterfaceRef<VF::IVideoFrameMemoryAccess> access = pair.first;
        EXPECT_EQ(access && access->GetWritablePixels() == nullptr, test.areOne && test.areTaken);
    }
}

TEST(PNGPair, TellsOneWhyItsFileWasRefused)
{
    const TemporaryFolder folder;
    std::string reason = "untouched";
    EXPECT_TRUE(VF::DecompressPNG(WriteFile(folder / "one.png", FileOf(3, 1)), reason));
    EXPECT_EQ(reason, "untouched");
    EXPECT_FALSE(VF::DecompressPNG(WriteFile(folder / "cut.png", FileOf(3, 1).substr(0, 40)), reason));
    EXPECT_THAT(reason, testing::HasSubstr("breaks off after 40 bytes"));
}

} // namespace
