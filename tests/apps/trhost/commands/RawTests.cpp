#include "../ProgramRunner.h"
#include "../SmallMedia.h"
#include "../TestPictures.h"
#include "../WrittenFrames.h"

#include <VF/VideoFrames.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trhosttest {

using testing::AllOf;
using testing::HasSubstr;

namespace {

RawFile With(const std::function<void(RawFile&)>& inChange)
{
    RawFile file;
    inChange(file);
    return file;
}

} // namespace

TEST(Raw, InfoTellsHeaderAndFaults)
{
    const Workplace place;
    const std::string path = place.Media("frame.raw");
    const RawFile good;
    const struct {
        const char* name;
        std::string bytes;
        int status;
        const char* said;
    } kCases[] = {
        {"good", good.Bytes(), 0, "valid: magic 0x56465257, version 0x00010002, format BGRA (bgra8), 4 x 2"},
        {"one byte more", good.Bytes() + "x", 1, "the file has 65 bytes, expected 64"},
        {"one byte less", good.Bytes().substr(0, 63), 1, "the file has 63 bytes, expected 64"},
        {"header only", good.Header(), 1, "the file has 32 bytes, expected 64"},
        {"header short", good.Header().substr(0, 31), 1, "the file has 31 bytes, expected a header of 32"},
        {"empty", "", 1, "the file has 0 bytes, expected a header of 32"},
        {"another kind", "\x89PNG and at least thirty-two bytes", 1, "the magic number is 0x474E5089"},
        {"another version", With([](RawFile& f) { f.version = 0x00010003; }).Bytes(), 1,
         "the version is 0x00010003, expected 0x00010002"},
        {"no such format", With([](RawFile& f) { f.format = "bad\x01"; }).Bytes(), 1,
         "the pixel format is \"bad\\x01\", expected one of BGRA, ARGB"},
        {"planes", With([](RawFile& f) { f.format = "I420"; }).Bytes(), 1, "the pixel format is \"I420\""},
        {"no width", With([](RawFile& f) { f.width = 0; }).Bytes(), 1,
         "is 0 x 2 pixels, expected 1 to 65535"},
        {"no height", With([](RawFile& f) { f.height = 0, f.rows.clear(); }).Bytes(), 1, "is 4 x 0 pixels"},
        {"a side too long", With([](RawFile& f) { f.width = 65536, f.rowBytes = 262144; }).Bytes(), 1,
         "is 65536 x 2 pixels"},
        {"rows too short", With([](RawFile& f) { f.rowBytes = 15, f.rows.resize(30); }).Bytes(), 1,
         "a row has 15 bytes, expected at least 16"},
        {"product beyond 32 bits",
         With([](RawFile& f) { f.height = 65535, f.rowBytes = 0x10000 * 0x1000; }).Bytes(), 1,
         "the file has 64 bytes, expected 17591917608992"},
        {"product 0 in 32 bits",
         With([](RawFile& f) { f.height = 4096, f.rowBytes = 0x00100000, f.rows.clear(); }).Bytes(), 1,
         "the file has 32 bytes, expected 4294967328"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        WriteBytes(path, test.bytes);
        const RunResult info = place.Run({"raw", "info", path});
        EXPECT_EQ(info.status, test.status);
        EXPECT_THAT(info.out, HasSubstr(test.said));
        const RunResult compared = place.Run({"compare", path, path});
        EXPECT_EQ(compared.status, test.status == 0 ? 0 : 3) << "the same reader judges";
    }
    EXPECT_EQ(place.Run({"raw", "info", path, place.Media("none.raw")}).status, 3);
    WriteBytes(path, good.Bytes());
    EXPECT_EQ(place.Run({"--json", "raw", "info", path}).out,
              R"({"file":")" + path +
                  R"(","valid":true,"foundBytes":64,"expectedBytes":64,"magic":"0x56465257",)"
                  R"("version":"0x00010002","format":"bgra8","formatCode":"BGRA","width":4,"height":2,)"
                  R"("rowBytes":16,"pixelAspectRatio":"1:1"})"
                  "\n");
}

TEST(Raw, PicturesAreComparedWhateverTheirRowsAndForms)
{
    const Workplace place;
    const RawFile base;
    WriteBytes(place.Media("a.raw"), base.Bytes());
    // The last row comes first in the file; as a PNG has them, the other way round.
    const MF::IVideoFrameRef upright = MakeNoise(4, 2);
    for (std::uint32_t row = 0; row < 2; ++row) {
        for (std::size_t i = 0; i < 16; ++i) {
            const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(upright);
            memory->GetWritablePixels()[row * memory->GetRowBytes() + i] =
                std::byte(base.rows[(1 - row) * 16 + i]);
        }
    }
    WritePNG(place.Media("upright.png"), upright);
    const struct {
        const char* name;
        RawFile b;
        int status;
        const char* said;
    } kCases[] = {
        {"the same", {}, 0, "the same (4 x 2, bgra8)"},
        {"another byte in the last pixel", With([](RawFile& f) { f.rows[14] = 'q'; }), 1,
         "different: 1 of 8 pixels (12.5 %), variance"},
        {"the first stored row is the lowest", With([](RawFile& f) { f.rows[0] = 'b'; }), 1,
         "within 1 x 1 at (0, 1)"},
        {"longer rows", With([](RawFile& f) {
             f.rowBytes = 20;
             f.rows = "abcdefghijklmnop----ABCDEFGHIJKLMNOP++++";
         }),
         0, "the same"},
        {"another pixel aspect ratio", With([](RawFile& f) { f.denominator = 3; }), 0, "the same"},
        {"no pixel aspect ratio", With([](RawFile& f) { f.numerator = f.denominator = 0; }), 0, "the same"},
        {"another format of the same colours", With([](RawFile& f) {
             f.format = "ARGB";
             f.rows = "dcbahgfelkjiponmDCBAHGFELKJIPONM";
         }),
         0, "the same (4 x 2, bgra8/argb8)"},
        {"another size", With([](RawFile& f) { f.width = 2, f.height = 4, f.rowBytes = 8; }), 3,
         "could not compare"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        WriteBytes(place.Media("b.png"), test.b.Bytes()); // its name says nothing
        const RunResult run = place.Run({"compare", place.Media("a.raw"), place.Media("b.png")});
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(run.out + run.err, HasSubstr(test.said));
    }
    EXPECT_EQ(place.Run({"compare", place.Media("a.raw"), place.Media("upright.png")}).status, 0);
}

TEST(Raw, WriteTakesPicturesAndClips)
{
    const Workplace place;
    const std::string output = place.Root() / "frame";
    WriteNoise(place.Media("a.png"), 6, 4);
    WriteMovie(place.Media("clip.mov"));
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        std::string said;
    } kCases[] = {
        {"a picture", {place.Media("a.png")}, 0, "6 x 4, bgra8, of "},
        {"in another form",
         {place.Media("a.png"), "--size", "12x8", "--format", "bgra16"},
         0,
         "12 x 8, bgra16"},
        {"a clip", {place.Media("clip.mov"), "--at", "5f"}, 0, "64 x 64, uyvy, of "},
        {"a frame of a picture", {place.Media("a.png"), "--at", "5f"}, 2, "--at "},
        {"planes", {place.Media("a.png"), "--format", "yuv420"}, 2, "uyvy"},
        {"not there", {place.Media("b.png")}, 3, "No such file"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{"raw", "write", "-o", output};
        arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
        std::filesystem::remove(output);
        const RunResult run = place.Run(arguments);
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.out + run.err, HasSubstr(test.said));
        EXPECT_EQ(place.Run({"raw", "info", output}).status, test.status == 0 ? 0 : 3);
    }
    EXPECT_EQ(place.Run({"raw", "write", place.Media("a.png"), "-o", output}).status, 0);
    EXPECT_EQ(place.Run({"compare", output, place.Media("a.png")}).status, 0) << "nothing is lost";
    EXPECT_EQ(place.Run({"raw", "write", output, "-o", output + "2"}).status, 0)
        << "a raw frame is a picture";
    EXPECT_EQ(support::ReadFile(output), support::ReadFile(output + "2"));
    EXPECT_THAT(place.Run({"raw", "write", output, "-o", output}).err, HasSubstr("expected another file"));

    EXPECT_EQ(place.Run({"raw", "write", place.Media("clip.mov"), "--at", "5f", "-o", output}).status, 0);
    const std::string framed = place.Root() / "framed.raw";
    EXPECT_EQ(place.Run({"frame", place.Media("clip.mov"), "--at", "5f", "-o", framed}).status, 0);
    EXPECT_EQ(support::ReadFile(output), support::ReadFile(framed));
}

} // namespace trhosttest
