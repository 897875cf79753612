#include <MF/BinaryData.h>
#include <MF/PixelFormats.h>

#include <gtest/gtest.h>

TEST(BinaryData, IsWrittenAsBase64)
{
    const struct {
        std::string bytes;
        const char* text;
    } kCases[] = {
        // The examples of RFC 4648.
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        // Every bit, and both digits that are no letters.
        {std::string("\x00\x10\x83\x10\x51\x87\x20\x92\x8B", 9), "ABCDEFGHIJKL"},
        {"\xFB\xEF\xBE\xFF\xFF\xFF", "++++////"},
        {std::string("\xFF\x00", 2), "/wA="},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.text);
        EXPECT_EQ(MF::EncodeBinaryDataToUTF8String(MF::BinaryData(test.bytes.data(), test.bytes.size())),
                  test.text);
    }
}

TEST(PixelFormats, AreKnownByTheirFourCharacters)
{
    using namespace kiomediatypes;
    EXPECT_EQ(MF::SDKToBEPixelFormat(0x41524742), kPixelFormat_BGRA_4444_8u);
    EXPECT_EQ(MF::SDKToBEPixelFormat(0x30313276), kPixelFormat_V210_422_10u);
    EXPECT_EQ(MF::SDKToBEPixelFormat(0x66646162), kPixelFormat_Any) << "badf";
    EXPECT_EQ(MF::SDKToBEPixelFormat(0), kPixelFormat_Any);
}
