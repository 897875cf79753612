#include <TR/PixelComparisonObject.h>

#include <VF/PNG.h>
#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>
#include <kioscripting/Context.h>

#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>

namespace {

using namespace kiomediatypes;
using kioscripting::ClassDefinitionPtr;
using kioscripting::ClassRegistry;
using kioscripting::ScriptObjectPtr;
using kioscripting::Value;
using kioscripting::Values;

constexpr double kNotLoaded = -1544749055;

struct RawHeader {
    std::uint32_t magic = 0x56465257;
    std::uint32_t version = 0x00010002;
    std::uint32_t format = 0x41524742; // "BGRA"
    std::uint32_t width = 2;
    std::uint32_t height = 3;
    std::uint32_t rowBytes = 8;
    std::uint32_t aspectNumerator = 1;
    std::uint32_t aspectDenominator = 1;
};

/// What a script reads of a result, in the order of the properties.
struct Read {
    std::string diffData;
    double result;
    double numDiffPixels;
    double variance;
};

Read ReadAll(const kioscripting::ScriptObject& inResults)
{
    const auto read = [&](const char* inName) { return kioscripting::ReadProperty(inResults, inName); };
    return {*read("diffData").As<std::string>(), *read("result").As<double>(),
            *read("numDiffPixels").As<double>(), *read("variance").As<double>()};
}

class PixelComparison : public testing::Test {
protected:
    ~PixelComparison() override { kioscripting::CloseContext(mContext); }

    ScriptObjectPtr Construct(const char* inClass) const
    {
        return kioscripting::ConstructObject(*ClassRegistry::FindClass(inClass), mContext);
    }
    Read Compare(const std::string& inImage, const std::string& inCompared, const Value& inEpsilon = {}) const
    {
        const ScriptObjectPtr comparison = Construct("Halcyon.TRFoundation.PixelComparison");
        const Value result = kioscripting::InvokeMethod(
            *comparison, "pixelCompare",
            {(mFolder / inImage).native(), (mFolder / inCompared).native(), inEpsilon});
        return ReadAll(**result.As<ScriptObjectPtr>());
    }

    void WritePNG(const std::string& inName, std::uint32_t inWidth, std::uint32_t inHeight,
                  std::uint8_t inLastByte = 0) const
    {
        MF::IVideoFrameRef frame;
        ASSERT_TRUE(VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, inWidth, inHeight,
                                         kPixelAspectRatio_Square, color::GetDefaultColorSpace(), true,
                                         true));
        ASSERT_TRUE(frame->InitializePixels(0));
        const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory = frame;
        memory->GetWritablePixels()[frame->GetSizeBytes() - 1] = std::byte{inLastByte};
        const auto png = VF::CompressPNG(frame);
        std::ofstream(mFolder / inName, std::ios::binary)
            .write(reinterpret_cast<const char*>(png.bytes.get()), static_cast<std::streamsize>(png.size));
    }
    /// Pixel bytes count up from inFirstByte.
    void WriteRaw(const std::string& inName, const RawHeader& inHeader, std::uint64_t inPixelBytes,
                  int inFirstByte = 0) const
    {
        std::ofstream file(mFolder / inName, std::ios::binary);
        file.write(reinterpret_cast<const char*>(&inHeader), sizeof(inHeader));
        for (std::uint64_t i = 0; i < inPixelBytes; ++i) {
            file.put(static_cast<char>(inFirstByte + int(i)));
        }
    }

    support::TemporaryFolder mFolder;
    const int mContext = kioscripting::OpenContext();
};

MF::IVideoFrameRef PictureOf(const std::string& inBase64)
{
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char digit : inBase64.substr(0, inBase64.find('='))) {
        bits = bits << 6 | static_cast<std::uint32_t>(kDigits.find(digit));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count);
        }
    }
    auto memory = kiocore::utility::MakeSharedRecycledMemory(bytes.size());
    std::memcpy(memory.bytes.get(), bytes.data(), bytes.size());
    return VF::DecompressPNG(memory);
}

} // namespace

TEST_F(PixelComparison, IsPublishedWithItsNamesAndOrders)
{
    EXPECT_EQ(kioscripting::Describe("Halcyon.TRFoundation.PixelComparison"),
              "class Halcyon.TRFoundation.PixelComparison\n"
              "    Performs pixel comparison between two video frames.\n\n"
              "  new PixelComparison()\n      Construct a pixelComparator object\n\n"
              "  pixelCompare(inImagePath: string, compareImagePath: string, epsilon?: number): "
              "PixelCompareTestResults  (pixelData)\n"
              "      Takes in 2 PNGs and performs pixel-based comparison on the images\n");
    EXPECT_EQ(
        kioscripting::Describe("Halcyon.TRFoundation.PixelCompareTestResults"),
        "class Halcyon.TRFoundation.PixelCompareTestResults\n"
        "    Results of a pixel-based comparison. Includes number of different pixels, percent variation, "
        "and an error message if necessary.\n\n"
        "  new PixelCompareTestResults()\n      Construct a pixelComparator test result object\n\n"
        "  diffData: string  (read-only)\n      Image data for the diff image generated\n\n"
        "  result: number  (read-only)\n"
        "      Error message, if any, for pixel comparison process. Or successful result\n\n"
        "  numDiffPixels: number  (read-only)\n"
        "      Number of pixels that were different between the 2 images\n\n"
        "  variance: number  (read-only)\n      Calculated variance between images as a percent\n");
}

TEST_F(PixelComparison, ReadsPNGFilesWhereTheFirstPathEndsInSmallLetters)
{
    WritePNG("a.png", 3, 2);
    WritePNG("same.png", 3, 2);
    WritePNG("other.png", 3, 2, 255);
    WritePNG("large.png", 3, 3);
    WritePNG("capital.PNG", 3, 2);
    WriteRaw("raw", {}, 24);
    std::ofstream(mFolder / "broken.png") << "not a picture";

    const double kSizesDiffer = static_cast<std::int32_t>(VF::kDifference_SizesDiffer);
    const struct {
        const char* name;
        const char* image;
        const char* compared;
        Value epsilon;
        double result;
        double differing;
        bool hasPicture;
    } kCases[] = {
        {"the same file", "a.png", "a.png", {}, 0, 0, true},
        {"equal files", "a.png", "same.png", {}, 0, 0, true},
        {"alpha of one pixel", "a.png", "other.png", {}, 0, 1, true},
        {"epsilon changes nothing: 0", "a.png", "other.png", 0, 0, 1, true},
        {"epsilon changes nothing: 100", "a.png", "other.png", 100, 0, 1, true},
        {"only the first path decides", "a.png", "capital.PNG", {}, 0, 0, true},
        {"other sizes", "a.png", "large.png", {}, kSizesDiffer, 0, false},
        {"capital letters mean a raw file", "capital.PNG", "capital.PNG", {}, kNotLoaded, 0, false},
        {"a raw file is no PNG", "a.png", "raw", {}, kNotLoaded, 0, false},
        {"the first is broken", "broken.png", "a.png", {}, kNotLoaded, 0, false},
        {"the second is missing", "a.png", "none.png", {}, kNotLoaded, 0, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const Read read = Compare(test.image, test.compared, test.epsilon);
        EXPECT_EQ(read.result, test.result);
        EXPECT_EQ(read.numDiffPixels, test.differing);
        EXPECT_EQ(read.variance > 0, test.differing > 0);
        EXPECT_EQ(read.diffData.empty(), !test.hasPicture);
    }
}

TEST_F(PixelComparison, GivesThePictureOfTheDifferenceAsText)
{
    WritePNG("a.png", 3, 2);
    WritePNG("b.png", 3, 2, 255);
    const MF::IVideoFrameRef picture = PictureOf(Compare("a.png", "b.png").diffData);
    ASSERT_TRUE(picture);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory = picture;
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t y = 0; y < 2; ++y) {
        for (std::uint32_t x = 0; x < 3; ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, memory->GetPixels() + y * memory->GetRowBytes() + x * 4, 4);
            pixels.push_back(pixel);
        }
    }
    // Alpha 0 against 255: grey of the full lift, 64 + 0.75 * 255.
    EXPECT_THAT(pixels,
                testing::ElementsAre(0xFF000000, 0xFF000000, 0xFF000000, 0xFF000000, 0xFF000000, 0xFFFFFFFF));
}

TEST_F(PixelComparison, TakesRawFilesThatSayExactlyTheSame)
{
    WriteRaw("a", {}, 24);
    const struct {
        const char* name;
        std::function<void(RawHeader&)> change;
        int pixelBytes;
        bool isCompared;
    } kCases[] = {
        {"equal", [](RawHeader&) {}, 24, true},
        {"another magic", [](RawHeader& h) { h.magic ^= 1; }, 24, false},
        {"another version", [](RawHeader& h) { h.version = 0x00010001; }, 24, false},
        {"one byte more", [](RawHeader&) {}, 25, false},
        {"one byte less", [](RawHeader&) {}, 23, false},
        {"only a header", [](RawHeader&) {}, 0, false},
        {"another format of the same size", [](RawHeader& h) { h.format = 0x42475241; }, 24, false},
        {"another aspect denominator", [](RawHeader& h) { h.aspectDenominator = 2; }, 24, false},
        {"another aspect numerator", [](RawHeader& h) { h.aspectNumerator = 2; }, 24, false},
        {"another width", [](RawHeader& h) { h.width = 1; }, 24, false},
        {"as many bytes in other rows", [](RawHeader& h) { h.height = 6, h.rowBytes = 4; }, 24, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        RawHeader header;
        test.change(header);
        WriteRaw("b", header, static_cast<std::uint64_t>(test.pixelBytes));
        EXPECT_EQ(Compare("a", "b").result, test.isCompared ? 0 : kNotLoaded);
        EXPECT_EQ(Compare("b", "a").result, test.isCompared ? 0 : kNotLoaded);
    }
    EXPECT_EQ(Compare("a", "missing").result, kNotLoaded);
    EXPECT_EQ(Compare("a", ".").result, kNotLoaded) << "a folder";
    std::ofstream(mFolder / "b", std::ios::binary) << std::string("WRFV\2\0\1", 7);
    EXPECT_EQ(Compare("a", "b").result, kNotLoaded) << "shorter than a header";
}

// Whatever the header says of itself, both files agree.
TEST_F(PixelComparison, MakesFramesOfWhatRawFilesSay)
{
    const struct {
        const char* name;
        std::function<void(RawHeader&)> change;
        double result;
        double differing;
    } kCases[] = {
        {"rows as long as they should be", [](RawHeader&) {}, 0, 6},
        {"shorter rows lie closer, deliberately", [](RawHeader& h) { h.rowBytes = 4; }, 0, 3},
        {"longer rows do not fit", [](RawHeader& h) { h.rowBytes = 9; }, kNotLoaded, 0},
        {"longer rows fit where fewer are stored", [](RawHeader& h) { h.width = 8, h.rowBytes = 31; }, 0, 24},
        {"no width", [](RawHeader& h) { h.width = 0; }, kNotLoaded, 0},
        {"no height", [](RawHeader& h) { h.height = 0; }, kNotLoaded, 0},
        {"no rows", [](RawHeader& h) { h.rowBytes = 0; }, 0, 0},
        {"a width that no frame has", [](RawHeader& h) { h.width = 65536; }, kNotLoaded, 0},
        {"a format that no frame has", [](RawHeader& h) { h.format = 0x66646162; }, kNotLoaded, 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        RawHeader header;
        test.change(header);
        const std::uint64_t bytes = std::uint64_t{header.height} * header.rowBytes;
        WriteRaw("a", header, bytes, 0);
        WriteRaw("b", header, bytes, 1);
        const Read read = Compare("a", "b");
        EXPECT_EQ(read.result, test.result);
        EXPECT_EQ(read.numDiffPixels, test.differing);
    }
}

TEST_F(PixelComparison, RefusesRawFilesThatClaimMoreThanTheirFrameHolds)
{
    RawHeader header;
    header.height = 65535;
    header.rowBytes = 0x00100000; // 64 GiB, which a file with holes has
    for (const char* const name : {"a", "b"}) {
        WriteRaw(name, header, 0);
        std::filesystem::resize_file(mFolder / name, 32 + std::uint64_t{header.height} * header.rowBytes);
    }
    EXPECT_EQ(Compare("a", "b").result, kNotLoaded);
    // The same in 32 bits: 65536 x 65536 is 0 there.
    header.height = header.rowBytes = 65536;
    WriteRaw("a", header, 0);
    EXPECT_EQ(Compare("a", "a").result, kNotLoaded);
}

TEST_F(PixelComparison, StoresTheBottomRowFirst)
{
    RawHeader header;
    WriteRaw("a", header, 24);
    WriteRaw("b", header, 16);
    std::ofstream(mFolder / "b", std::ios::binary | std::ios::app)
        .write("\x10\x11\x12\x13\x14\x15\x16\x77", 8);
    const Read read = Compare("a", "b");
    EXPECT_EQ(read.numDiffPixels, 1);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory = PictureOf(read.diffData);
    ASSERT_TRUE(memory);
    EXPECT_NE(memory->GetPixels()[4], std::byte{0}) << "the last stored pixel is the upper right one";
}

TEST_F(PixelComparison, PassesOnThatAFileCannotBeRead)
{
    WriteRaw("a", {}, 24);
    support::FaultyFileCalls calls;
    calls.FailCalls("Read", EIO);
    EXPECT_THROW(Compare("a", "a"), kiocore::file_exception);
}

TEST_F(PixelComparison, AResultMadeByAScriptHoldsNothing)
{
    const Read read = ReadAll(*Construct("Halcyon.TRFoundation.PixelCompareTestResults"));
    EXPECT_EQ(read.diffData, "");
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.numDiffPixels, 0);
    EXPECT_EQ(read.variance, 0);
}

TEST_F(PixelComparison, ResultsBelongToTheContextOfTheComparison)
{
    const ScriptObjectPtr comparison = Construct("Halcyon.TRFoundation.PixelComparison");
    const Values arguments = {"a.png", "b.png"};
    const Value result = kioscripting::InvokeMethod(*comparison, "pixelCompare", arguments);
    ASSERT_TRUE(result.As<ScriptObjectPtr>());
    EXPECT_EQ((*result.As<ScriptObjectPtr>())->GetContextHdl(), mContext);
    kioscripting::CloseContext(mContext);
    EXPECT_EQ(kioscripting::InvokeMethod(*comparison, "pixelCompare", arguments),
              Value(kioscripting::Null()));
}
