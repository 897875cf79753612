#include "PNGBytes.h"

#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include <support/TemporaryFolder.h>
#include <support/TraceRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <array>
#include <cstring>

namespace {

using namespace kiomediatypes;
using namespace support;
using MF::IVideoFrameRef;

using Pixel = std::array<std::uint32_t, 4>; // red, green, blue, alpha

Pixel PixelAt(const IVideoFrameRef& inFrame, std::uint32_t inX, std::uint32_t inY)
{
    const VF::InterfaceRef<VF::IVideoFrameMemoryAccess> access = inFrame;
    const std::byte* const row = access->GetPixels() + inY * access->GetRowBytes();
    std::uint32_t bgra[4];
    for (std::size_t channel = 0; channel < 4; ++channel) {
        if (inFrame->GetPixelFormat() == kPixelFormat_BGRA_4444_16u) {
            std::uint16_t value;
            std::memcpy(&value, row + std::size_t{inX} * 8 + channel * 2, 2);
            bgra[channel] = value;
        } else {
            bgra[channel] = std::to_integer<std::uint32_t>(row[std::size_t{inX} * 4 + channel]);
        }
    }
    return {bgra[2], bgra[1], bgra[0], bgra[3]};
}

/// Repeatable values that use all of a depth.
std::uint32_t Noise(std::uint32_t inX, std::uint32_t inY, int inChannel, int inDepth)
{
    std::uint32_t hash = (inX * 2654435761u) ^ (inY * 2246822519u) ^ (inChannel * 3266489917u + 374761393u);
    hash = (hash ^ hash >> 15) * 2246822519u;
    return (hash ^ hash >> 13) >> (32 - inDepth);
}

Pixel PaletteColor(std::uint32_t inIndex)
{
    return {inIndex * 7 % 256, 255 - inIndex, inIndex * 31 % 256, inIndex % 3 * 100};
}
constexpr std::uint32_t kTransparentEntries = 3; // of the palette; the rest is opaque

struct Kind {
    const char* name;
    int colorType;
    int depth;
    bool hasTransparency = false; // a "tRNS" chunk
};
constexpr Kind kKinds[] = {
    {"grey 1", 0, 1},
    {"grey 2", 0, 2},
    {"grey 4", 0, 4},
    {"grey 8", 0, 8},
    {"grey 16", 0, 16},
    {"grey 1 with a transparent one", 0, 1, true},
    {"grey 2 with a transparent one", 0, 2, true},
    {"grey 4 with a transparent one", 0, 4, true},
    {"grey 8 with a transparent one", 0, 8, true},
    {"grey 16 with a transparent one", 0, 16, true},
    {"RGB 8", 2, 8},
    {"RGB 16", 2, 16},
    {"RGB 8 with a transparent colour", 2, 8, true},
    {"RGB 16 with a transparent colour", 2, 16, true},
    {"palette 1", 3, 1},
    {"palette 2", 3, 2},
    {"palette 4", 3, 4},
    {"palette 8", 3, 8},
    {"palette 1 with alpha", 3, 1, true},
    {"palette 2 with alpha", 3, 2, true},
    {"palette 4 with alpha", 3, 4, true},
    {"palette 8 with alpha", 3, 8, true},
    {"grey and alpha 8", 4, 8},
    {"grey and alpha 16", 4, 16},
    {"RGB and alpha 8", 6, 8},
    {"RGB and alpha 16", 6, 16},
};

StoredPicture PictureOf(const Kind& inKind, std::uint32_t inWidth, std::uint32_t inHeight, bool inInterlaced)
{
    const int depth = inKind.depth;
    return {inWidth,
            inHeight,
            depth,
            inKind.colorType,
            inInterlaced,
            [depth](std::uint32_t x, std::uint32_t y, int channel) { return Noise(x, y, channel, depth); }};
}

/// The colour of the first pixel is the transparent one.
std::string ColorChunks(const Kind& inKind, const StoredPicture& inPicture)
{
    std::string chunks;
    std::string transparency;
    if (inKind.colorType == 3) {
        std::string palette;
        for (std::uint32_t index = 0; index < 1u << inKind.depth; ++index) {
            const Pixel color = PaletteColor(index);
            palette += BigEndian(color[0], 1) + BigEndian(color[1], 1) + BigEndian(color[2], 1);
            transparency += index < kTransparentEntries ? BigEndian(color[3], 1) : std::string();
        }
        chunks += Chunk("PLTE", palette);
    } else {
        for (int channel = 0; channel < inPicture.Channels(); ++channel) {
            transparency += BigEndian(inPicture.sample(0, 0, channel), 2);
        }
    }
    return inKind.hasTransparency ? chunks + Chunk("tRNS", transparency) : chunks;
}

Pixel ExpectedAt(const Kind& inKind, const StoredPicture& inPicture, std::uint32_t inX, std::uint32_t inY)
{
    const std::uint32_t most = inKind.depth == 16 ? 65535 : 255;
    const auto sample = [&](int channel) {
        return inPicture.sample(inX, inY, channel) * most / ((1u << inKind.depth) - 1);
    };
    bool isTransparent = inKind.hasTransparency;
    for (int channel = 0; channel < inPicture.Channels(); ++channel) {
        isTransparent &= inPicture.sample(inX, inY, channel) == inPicture.sample(0, 0, channel);
    }
    const std::uint32_t alpha = isTransparent ? 0 : most;
    switch (inKind.colorType) {
    case 0:
        return {sample(0), sample(0), sample(0), alpha};
    case 2:
        return {sample(0), sample(1), sample(2), alpha};
    case 3: {
        const std::uint32_t index = inPicture.sample(inX, inY, 0);
        Pixel color = PaletteColor(index);
        color[3] = inKind.hasTransparency && index < kTransparentEntries ? color[3] : 255;
        return color;
    }
    case 4:
        return {sample(0), sample(0), sample(0), sample(1)};
    default:
        return {sample(0), sample(1), sample(2), sample(3)};
    }
}

TEST(PNGReading, GivesThePixelsOfEveryKind)
{
    // Narrow and low ones leave passes of an interlaced picture empty.
    constexpr std::array<std::uint32_t, 2> kSizes[] = {{1, 1}, {2, 1}, {1, 5},  {3, 3},
                                                       {5, 4}, {8, 8}, {33, 19}};
    for (const Kind& kind : kKinds) {
        for (const auto& [width, height] : kSizes) {
            for (const bool isInterlaced : {false, true}) {
                SCOPED_TRACE(std::string(kind.name) + (isInterlaced ? ", interlaced, " : ", ") +
                             std::to_string(width) + " x " + std::to_string(height));
                const StoredPicture picture = PictureOf(kind, width, height, isInterlaced);
                const IVideoFrameRef frame =
                    VF::DecompressPNG(ToMemory(PNGFile(picture, ColorChunks(kind, picture))));
                ASSERT_TRUE(frame);
                ASSERT_EQ(frame->GetPixelFormat(),
                          kind.depth == 16 ? kPixelFormat_BGRA_4444_16u : kPixelFormat_BGRA_4444_8u);
                ASSERT_EQ(frame->GetWidth(), width);
                ASSERT_EQ(frame->GetHeight(), height);
                ASSERT_EQ(frame->GetPixelAspectRatio(), kPixelAspectRatio_Square);
                for (std::uint32_t y = 0; y < height; ++y) {
                    for (std::uint32_t x = 0; x < width; ++x) {
                        ASSERT_EQ(PixelAt(frame, x, y), ExpectedAt(kind, picture, x, y))
                            << "at " << x << ", " << y;
                    }
                }
            }
        }
    }
}

// A small file with a chunk of every sort that matters: palette, transparency, one that is passed over.
std::string SmallFile(bool inInterlaced = false)
{
    const Kind kind{"", 3, 4, true};
    const StoredPicture picture = PictureOf(kind, 4, 3, inInterlaced);
    return PNGFile(picture, ColorChunks(kind, picture) + Chunk("tEXt", std::string("Title\0A", 7)));
}

TEST(PNGReading, RefusesAFileThatBreaksOffAnywhere)
{
    for (const bool isInterlaced : {false, true}) {
        const std::string file = SmallFile(isInterlaced);
        ASSERT_TRUE(VF::DecompressPNG(ToMemory(file)));
        for (std::size_t size = 0; size < file.size(); ++size) {
            EXPECT_FALSE(VF::DecompressPNG(ToMemory(file.substr(0, size)))) << size << " of " << file.size();
        }
    }
}

TEST(PNGReading, NoticesEverySingleFlippedBit)
{
    const std::string file = SmallFile();
    for (std::size_t at = 0; at < file.size() * 8; ++at) {
        std::string damaged = file;
        damaged[at / 8] = static_cast<char>(damaged[at / 8] ^ 1 << at % 8);
        EXPECT_FALSE(VF::DecompressPNG(ToMemory(damaged))) << "bit " << at % 8 << " of byte " << at / 8;
    }
}

/// A file of 2 x 2 grey pixels of 8 bits, its parts replaced where a case wants others.
class Parts {
public:
    Parts& Header(std::string inChunk) { return Set(mHeader, std::move(inChunk)); }
    Parts& BeforeData(std::string inChunks) { return Set(mBeforeData, std::move(inChunks)); }
    Parts& Data(std::string inChunks) { return Set(mData, std::move(inChunks)); }
    Parts& AfterData(std::string inChunks) { return Set(mAfterData, std::move(inChunks)); }
    Parts& End(std::string inChunk) { return Set(mEnd, std::move(inChunk)); }
    std::string File() const
    {
        return std::string(kPNGSignature) + mHeader + mBeforeData + mData + mAfterData + mEnd;
    }

private:
    Parts& Set(std::string& outPart, std::string&& inChunks)
    {
        outPart = std::move(inChunks);
        return *this;
    }
    std::string mHeader = HeaderChunk(2, 2, 8, 0);
    std::string mBeforeData;
    std::string mData = Chunk("IDAT", Compressed(std::string_view("\0\1\2\0\3\4", 6)));
    std::string mAfterData;
    std::string mEnd = Chunk("IEND");
};

std::string DataWithWrongAdler()
{
    std::string bytes = Compressed(std::string_view("\0\1\2\0\3\4", 6));
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    return Chunk("IDAT", bytes);
}

TEST(PNGReading, SaysWhyItRefuses)
{
    const std::string rows = Compressed(std::string_view("\0\1\2\0\3\4", 6));
    const struct {
        const char* name;
        std::string file;
        const char* reason;
    } kCases[] = {
        {"no bytes", "", "there are no bytes"},
        {"something else", "GIF89a and what follows it, long enough for a header", "does not start as a PNG"},
        {"line feeds were converted", "\x89PNG\n\x1A\n and what follows it, long enough",
         "does not start as a PNG"},
        {"no width", Parts().Header(HeaderChunk(0, 2, 8, 0)).File(), "0 x 2 pixels is outside"},
        {"no height", Parts().Header(HeaderChunk(2, 0, 8, 0)).File(), "2 x 0 pixels is outside"},
        {"one pixel too wide", Parts().Header(HeaderChunk(65536, 1, 1, 0)).File(), "outside of 1 to 65535"},
        {"all ones", Parts().Header(HeaderChunk(0xFFFFFFFF, 0xFFFFFFFF, 16, 6)).File(),
         "outside of 1 to 65535"},
        {"depth unknown to palettes", Parts().Header(HeaderChunk(2, 2, 16, 3)).File(), "no colour type 3"},
        {"unknown colour type", Parts().Header(HeaderChunk(2, 2, 8, 5)).File(), "no colour type 5"},
        {"unknown interlacing", Parts().Header(HeaderChunk(2, 2, 8, 0, 2)).File(), "0, 0 and 2"},
        {"header too long", Parts().Header(Chunk("IHDR", std::string(14, '\1'))).File(),
         "\"IHDR\" of 13 bytes"},
        {"header not first",
         Parts().Header(Chunk("tEXt", std::string(13, 'a')) + HeaderChunk(2, 2, 8, 0)).File(),
         "as the first"},
        {"two headers", Parts().BeforeData(HeaderChunk(2, 2, 8, 0)).File(), "expected one \"IHDR\""},
        {"data without a palette", Parts().Header(HeaderChunk(2, 2, 8, 3)).File(), "PLTE"},
        {"unknown critical chunk", Parts().BeforeData(Chunk("CgBI", "1234")).File(), "\"CgBI\""},
        {"type without letters", Parts().BeforeData(Chunk("a\x01zz")).File(), "expected four letters"},
        {"no data", Parts().Data("").File(), "0 compressed bytes cannot hold"},
        {"data apart",
         Parts()
             .Data(Chunk("IDAT", rows.substr(0, 4)) + Chunk("tEXt", "a") + Chunk("IDAT", rows.substr(4)))
             .File(),
         "apart from the others"},
        {"no end", Parts().End("").File(), "without an \"IEND\""},
        {"claims more than there is", Parts().End(BigEndian(9, 4) + "IEND" + "1234").File(),
         "claims 9 bytes, there are 0"},
        {"a row is missing", Parts().Data(Chunk("IDAT", Compressed(std::string_view("\0\1\2", 3)))).File(),
         "Not enough image data"},
        {"half a row too much",
         Parts().Data(Chunk("IDAT", Compressed(std::string_view("\0\1\2\0\3\4\0\5", 8)))).File(),
         "Too much image data"},
        {"bytes behind the compressed data", Parts().Data(Chunk("IDAT", rows + "more")).File(),
         "Extra compressed data"},
        {"unknown filter",
         Parts().Data(Chunk("IDAT", Compressed(std::string_view("\0\1\2\5\3\4", 6)))).File(),
         "bad adaptive filter value"},
        {"wrong sum of the pixels", Parts().Data(DataWithWrongAdler()).File(), "incorrect data check"},
        {"not compressed at all", Parts().Data(Chunk("IDAT", "0123456789")).File(), "IDAT"},
        {"wrong sum of a text", Parts().BeforeData(BigEndian(1, 4) + "tEXta" + "1234").File(), "CRC error"},
        {"wrong sum of a text behind the data", Parts().AfterData(BigEndian(1, 4) + "tEXta" + "1234").File(),
         "CRC error"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const TraceRecorder trace("PNG");
        EXPECT_FALSE(VF::DecompressPNG(ToMemory(test.file)));
        EXPECT_THAT(trace.Lines(), testing::ElementsAre(testing::HasSubstr(test.reason)));
    }
}

TEST(PNGReading, AsksForNoMemoryForWhatCannotBeThere)
{
    // 1032 bytes at most come from a byte: a picture of one row is refused from the first byte that is too
    // many.
    const std::string held = Compressed(std::string(1 + 50000 / 8, '\0'));
    const struct {
        const char* name;
        std::string header;
        std::string data;
        bool isWorthATry;
    } kCases[] = {
        {"60 bytes for the largest", HeaderChunk(65535, 65535, 8, 6), std::string(60, 'x'), false},
        {"60 bytes for the largest there is", HeaderChunk(65535, 65535, 16, 6), std::string(60, 'x'), false},
        {"60 bytes for the largest, interlaced", HeaderChunk(65535, 65535, 1, 0, 1), std::string(60, 'x'),
         false},
        {"a byte too few for its row", HeaderChunk(65535, 1, 8, 0), std::string(63, 'x'), false},
        {"just enough for its row", HeaderChunk(65535, 1, 8, 0), std::string(64, 'x'), true},
        {"well compressed", HeaderChunk(50000, 1, 1, 0), held, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const TraceRecorder trace("Host");
        VF::DecompressPNG(ToMemory(Parts().Header(test.header).Data(Chunk("IDAT", test.data)).File()));
        EXPECT_EQ(trace.CountContaining("VF::DecompressPNG"), 1);
        EXPECT_EQ(trace.CountContaining("VF::CreateVideoFrame"), test.isWorthATry ? 1 : 0);
    }
}

TEST(PNGReading, PutsUpWithWhatDoesNotTouchThePicture)
{
    const std::string rows = Compressed(std::string_view("\0\1\2\0\3\4", 6));
    std::string bytewise;
    for (const char byte : rows) {
        bytewise += Chunk("IDAT") + Chunk("IDAT", std::string_view(&byte, 1));
    }
    std::string texts;
    for (int count = 0; count < 3000; ++count) {
        texts += Chunk("tEXt", std::string_view("a\0b", 3));
    }
    std::string nineMegabytes;
    nineMegabytes.assign(9'000'000, 'v');
    const struct {
        const char* name;
        std::string file;
    } kCases[] = {
        {"nothing odd", Parts().File()},
        {"anything behind the end", Parts().File() + "<html>"},
        {"each byte in a chunk of its own, empty ones between", Parts().Data(bytewise).File()},
        {"a very large unknown chunk", Parts().BeforeData(Chunk("vpAg", nineMegabytes)).File()},
        {"very many texts", Parts().BeforeData(texts).AfterData(texts).File()},
        {"profile and gamma are nonsense",
         Parts()
             .BeforeData(Chunk("iCCP", "nothing") + Chunk("gAMA", BigEndian(0, 4)) + Chunk("cHRM", "1"))
             .File()},
        {"nonsense behind the data",
         Parts().AfterData(Chunk("tIME", "1") + Chunk("vpAg", nineMegabytes)).File()},
        {"a transparent colour of the wrong length", Parts().BeforeData(Chunk("tRNS", "12345")).File()},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const IVideoFrameRef frame = VF::DecompressPNG(ToMemory(test.file));
        ASSERT_TRUE(frame);
        EXPECT_EQ(PixelAt(frame, 0, 0), (Pixel{1, 1, 1, 255}));
        EXPECT_EQ(PixelAt(frame, 1, 1), (Pixel{4, 4, 4, 255}));
    }
}

TEST(PNGReading, ShowsBlackWhereThePaletteHasNoColor)
{
    const StoredPicture picture{2, 1,     8,
                                3, false, [](std::uint32_t x, std::uint32_t, int) { return x * 200; }};
    const IVideoFrameRef frame = VF::DecompressPNG(ToMemory(PNGFile(picture, Chunk("PLTE", "RGB"))));
    ASSERT_TRUE(frame);
    EXPECT_EQ(PixelAt(frame, 0, 0), (Pixel{'R', 'G', 'B', 255}));
    EXPECT_EQ(PixelAt(frame, 1, 0), (Pixel{0, 0, 0, 255}));
}

TEST(PNGReading, ReadsFilesAndSaysWhichCannotBeRead)
{
    const TemporaryFolder folder;
    WriteFile(folder / "Bild \xC3\xA4.png", Parts().File());
    const IVideoFrameRef frame = VF::DecompressPNG(folder.UTF16("Bild \xC3\xA4.png"));
    ASSERT_TRUE(frame);
    EXPECT_EQ(PixelAt(frame, 0, 1), (Pixel{3, 3, 3, 255}));

    WriteFile(folder / "short.png", Parts().File().substr(0, 20));
    WriteFile(folder / "cut.png", Parts().File().substr(0, 50));
    WriteFile(folder / "empty.png", "");
    WriteFile(folder / "text.png", "not a picture, though its name says so: see for yourself");
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    const struct {
        const char* name;
        const char* reason;
    } kCases[] = {
        {"missing.png", "No such file"},
        {"", "no file"},
        {"pipe.png", "no file"},
        {"empty.png", "breaks off after 0 bytes"},
        {"short.png", "breaks off after 20"},
        {"cut.png", "there are 5"},
        {"text.png", "does not start"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const TraceRecorder trace("PNG");
        EXPECT_FALSE(VF::DecompressPNG(folder.UTF16(test.name)));
        EXPECT_THAT(trace.Lines(), testing::ElementsAre(testing::AllOf(testing::HasSubstr(test.name),
                                                                       testing::HasSubstr(test.reason))));
    }
}

} // namespace
