#include "Documents.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace BE::test {
namespace {

/// The page's n-th block between ```xml and ```.
std::vector<std::string> ExamplesOf(const std::string& inPage)
{
    std::vector<std::string> examples;
    static constexpr std::string_view kBegin = "```xml\n";
    for (std::size_t at = inPage.find(kBegin); at != std::string::npos; at = inPage.find(kBegin, at)) {
        at += kBegin.size();
        const std::size_t end = inPage.find("```", at);
        examples.push_back(inPage.substr(at, end - at));
        at = end;
    }
    return examples;
}

TEST(RecordFormatPage, ItsExamplesAreReadAndAreTheTestsFiles)
{
    const std::vector<std::string> examples = ExamplesOf(support::ReadFile(BE_RECORD_FORMAT_PAGE));
    const std::vector<std::string> kFiles = {"document.xml", "record-v1.xml", "record-v2.xml",
                                             "record-v3.xml", "record-v4.xml"};
    ASSERT_EQ(examples.size(), kFiles.size());
    const auto reader = MakeReader();
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
        SCOPED_TRACE(kFiles[i]);
        const std::filesystem::path file = std::filesystem::path(BE_TEST_DATA) / kFiles[i];
        EXPECT_EQ(examples[i], support::ReadFile(file));
        EXPECT_EQ(reader->Open(support::UTF16(file)), 0) << reader->GetOpenError();
    }
}

TEST(RecordFormatPage, RecordsOfEachVersionHoldWhatThePageSays)
{
    const std::vector<std::string> kItem = {"String Item.Path.1", "String Item.Key.1",
                                            "Binary Item.ModDate.1", "Bool Item.CanBeCopied.1"};
    for (unsigned version = 1; version <= 4; ++version) {
        SCOPED_TRACE(version);
        const auto reader = MakeReader();
        const std::string name = "record-v" + std::to_string(version) + ".xml";
        ASSERT_EQ(reader->Open(support::UTF16(std::filesystem::path(BE_TEST_DATA) / name)), 0);
        std::vector<std::string> stored;
        ASSERT_TRUE(
            reader->VisitStored("MediaAcceleratorDatabaseEntry", [&](auto type, auto key, const auto& text) {
                stored.push_back(std::string(type) + " " + std::string(key));
                EXPECT_FALSE(key == "Item.ModDate.1" && text.size() != 16);
            }));
        const auto has = [&](const char* inValue) {
            return std::count(stored.begin(), stored.end(), inValue) == 1;
        };
        EXPECT_TRUE(has("String OriginalPath"));
        EXPECT_TRUE(has("UInt32 Stream.Count"));
        EXPECT_EQ(has("Guid Item.ContentState"), version >= 3);
        EXPECT_EQ(has("String OriginalMacPath"), version >= 4);
        EXPECT_EQ(has("String Item.WinPath.1"), version >= 4);
        EXPECT_THAT(stored, ::testing::IsSupersetOf(kItem));
    }
}

// What the page shows is what the writer writes, byte for byte.
TEST(RecordFormatPage, TheFirstExampleIsWrittenLikeThat)
{
    Scripted::Register();
    Scripted::sWrite = [](DataWriter& out) {
        out.WriteValue("Title", UTF16String(u"R&D \u2014 \"take\" 2\tC:\\media"));
        out.WriteValue("Enabled", SerializeableValue<bool>(true));
        out.WriteValue("Offset", SerializeableValue<std::int32_t>(-3));
        out.WriteValue("Count", SerializeableValue<std::uint32_t>(4294967295u));
        out.WriteValue("Start", SerializeableValue<std::int64_t>(-9000000000));
        out.WriteValue("Size", SerializeableValue<std::uint64_t>(18446744073709551615u));
        out.WriteValue("Gain", SerializeableValue<double>(0.1));
        out.WriteValue("Document", SerializeableValue<Guid>(Guid("102bfb4c-1980-4e77-87df-17b03d5b09db")));
        out.WriteValue("Digest", MF::BinaryData("\x00\x7F\xFF", 3));
        out.BeginValueMap("Names");
        out.WriteMapValue(u"left", u"L");
        out.WriteMapValue(u"right", u"R");
        out.EndValueMap();
    };
    const auto writer = MakeWriter();
    writer->GetDataWriter().WriteObject(
        "Clip", InterfaceRef<ISerializeable>(kiocore::classref::MakeObject<Scripted>()));
    EXPECT_EQ(writer->GetBytes(), support::ReadFile(std::filesystem::path(BE_TEST_DATA) / "document.xml"));
}

} // namespace
} // namespace BE::test
