#include "Documents.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

namespace BE::test {
namespace {

using ::testing::HasSubstr;

std::string Repeat(std::string_view inText, int inTimes)
{
    std::string all;
    for (int i = 0; i < inTimes; ++i) {
        all += inText;
    }
    return all;
}

const std::string kObject = "<Object Key='o' ClassID='e727e14d-731c-47f8-9d24-2cb69e8c5323' Version='1'>";

std::string Nested(int inObjects)
{
    return Document(Repeat(kObject, inObjects) + Repeat("</Object>", inObjects));
}

/// Reads everything in every way; nothing but our own exceptions may come out.
void ReadAll(IXMLFileReader& inReader)
{
    DataReader& data = inReader.GetDataReader();
    const auto attempt = [](const auto& inCall) {
        try {
            inCall();
        } catch (const kiocore::kio_exception& failure) {
            EXPECT_STRNE(failure.what(), "");
        }
    };
    for (const char* key : {"text", "count", "bytes", "map", "object", "absent"}) {
        UTF16String text;
        SerializeableValue<std::uint32_t> number;
        MF::BinaryData bytes;
        InterfaceRef<ISerializeable> object;
        attempt([&] { data.ReadValue(key, text); });
        attempt([&] { data.ReadValue(key, number); });
        attempt([&] { data.ReadValue(key, bytes); });
        attempt([&] { data.ReadObject(key, object); });
        attempt([&] { data.ReadValueMap(key, [](const auto&, const auto&) { return true; }); });
        inReader.VisitStored(key, [](auto, auto, const auto&) {});
    }
    EXPECT_LE(data.GetValueCount(), 1000u);
}

std::string SmallDocument()
{
    Scripted::Register();
    Scripted::sRead = [](unsigned, DataReader& in) {
        SerializeableValue<std::uint32_t> number;
        in.ReadValue("count", number);
    };
    Scripted::sWrite = [](DataWriter& out) {
        out.WriteValue("count", SerializeableValue<std::uint32_t>(12));
    };
    const auto writer = MakeWriter();
    DataWriter& data = writer->GetDataWriter();
    data.WriteValue("text", UTF16String(u"a\\b & \u4E2D\t"));
    data.WriteValue("bytes", MF::BinaryData("\x01\xFF", 2));
    data.BeginValueMap("map");
    data.WriteMapValue(u"key", u"value");
    data.EndValueMap();
    data.WriteObject("object", InterfaceRef<ISerializeable>(kiocore::classref::MakeObject<Scripted>()));
    return writer->GetBytes();
}

TEST(HostileXML, IsNotOpenedAndTellsWhy)
{
    const struct {
        const char* name;
        std::string bytes;
        const char* expectedError;
    } kCases[] = {
        {"nothing", "", "no well-formed XML"},
        {"only white space", " \n ", "no well-formed XML"},
        {"no XML", "BackEndDocument", "does not end with a tag"},
        {"text before the root", "x" + Document(""), "text before its first element"},
        {"another root", "<Document Version='1'/>", "\"Document\"; expected \"BackEndDocument\""},
        {"no dialect version", "<BackEndDocument/>", "expected Version=\"1\""},
        {"dialect version 0", "<BackEndDocument Version='0'/>", "expected Version=\"1\""},
        {"a newer dialect", "<BackEndDocument Version='2'/>",
         "has version 2 of the dialect; this build reads up to 1"},
        {"two roots", Document("") + Document(""), "goes on after its first element"},
        {"text behind the root", Document("") + "x", "does not end with a tag"},
        {"text and a comment behind the root", Document("") + "x<!-- -->", "goes on after its first element"},
        {"a zero byte behind the root", Document("") + std::string(1, '\0'), "byte 0x00 at offset"},
        {"another encoding", "<?xml version='1.0' encoding='ISO-8859-1'?>" + Document(""), "\"ISO-8859-1\""},
        {"XML 1.1", "<?xml version='1.1'?>" + Document(""), "expected \"1.0\""},
        {"UTF-16", std::string("\xFF\xFE<\0", 4), "not UTF-8: byte 0xff at offset 0"},
        {"a Latin-1 byte", Document("<String Key='k' Value='\xE9'/>"), "not UTF-8: byte 0xe9"},
        {"an encoded surrogate", Document("<String Key='k' Value='\xED\xA0\x80'/>"), "not UTF-8"},
        {"an overlong zero", Document("<String Key='k' Value='\xC0\x80'/>"), "not UTF-8"},
        {"a raw control", Document("<String Key='k' Value='\x01'/>"), "control byte 0x01"},
        {"an empty doctype", "<!DOCTYPE BackEndDocument>" + Document(""), "document type declaration"},
        {"a billion laughs",
         "<!DOCTYPE lolz [<!ENTITY a 'lol'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>]>" +
             Document("<String Key='k' Value='&b;'/>"),
         "document type declaration"},
        {"a doctype behind the root", Document("") + "<!DOCTYPE x>", "goes on after its first element"},
        {"one level too deep", Nested(kMaxXMLNesting), "deeper than 32"},
        {"very many levels", Nested(200000), "deeper than 32"},
        {"more elements than any record has", Document(Repeat("<a/>", 2200000)), "more than 2097152 tags"},
        {"an unknown element", Document("<Text Key='k' Value='v'/>"), "unknown element \"Text\""},
        {"text between elements", Document("<String Key='k' Value='v'/>x"), "text between its elements"},
        {"a CDATA section", Document("<![CDATA[x]]>"), "text between its elements"},
        {"a value with contents", Document("<String Key='k' Value='v'><String/></String>"),
         "only has attributes"},
        {"no key", Document("<String Value='v'/>"), "without a key"},
        {"no value", Document("<String Key='k'/>"), "\"k\" without a value"},
        {"an attribute twice", Document("<String Key='k' Value='v' Value='w'/>"), "two attributes \"Value\""},
        {"a key that is no text", Document("<String Key='\\k' Value='v'/>"), "backslash"},
        {"no class", Document("<Object Key='k' Version='1'/>"), "class identifier"},
        {"no object version", Document("<Object Key='k' ClassID='e727e14d-731c-47f8-9d24-2cb69e8c5323'/>"),
         "readable version"},
        {"an entry outside of a map", Document("<Entry Key='k' Value='v'/>"), "outside of a map"},
        {"a value in a map", Document("<Map Key='k'><String Key='k' Value='v'/></Map>"), "in a map"},
    };
    const auto reader = MakeReader();
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_LT(reader->OpenBytes(test.bytes), 0);
        EXPECT_THAT(reader->GetOpenError(), HasSubstr(test.expectedError));
        EXPECT_EQ(reader->GetDataReader().GetValueCount(), 0u);
    }
    EXPECT_EQ(reader->OpenBytes(Nested(kMaxXMLNesting - 1)), 0) << reader->GetOpenError();
    EXPECT_EQ(reader->GetOpenError(), "");
    EXPECT_EQ(reader->GetDataReader().GetValueCount(), 1u);
}

TEST(HostileXML, OnlyRegularFilesOfModerateSizeAreOpened)
{
    support::TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    support::WriteFile(folder / "large", "");
    std::filesystem::resize_file(folder / "large", kMaxXMLFileBytes + 1);
    support::WriteFile(folder / "empty", "");
    const auto reader = MakeReader();
    for (const auto& [name, error] :
         {std::pair("missing", "No such file"), std::pair("", "Is a directory"),
          std::pair("pipe", "Invalid argument"), std::pair("large", "67108865 bytes"),
          std::pair("empty", "no well-formed XML")}) {
        EXPECT_LT(reader->Open(folder.UTF16(name)), 0) << name;
        EXPECT_THAT(reader->GetOpenError(), HasSubstr(error));
        EXPECT_THAT(reader->GetOpenError(), HasSubstr(name));
        EXPECT_EQ(reader->GetModificationTime(), kiocore::filesupport::kNoFileTime);
    }
}

TEST(HostileXML, NoBeginningOfADocumentOpens)
{
    const std::string whole = SmallDocument();
    const std::size_t end = whole.rfind('>') + 1;
    const auto reader = MakeReader();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        // On the heap in exactly its size, so that a sanitizer sees reading beyond.
        EXPECT_EQ(reader->OpenBytes(whole.substr(0, size)) == 0, size >= end) << size;
        ReadAll(*reader.Get());
    }
}

TEST(HostileXML, FlippedBitsGiveAnAnswerOrAnException)
{
    std::string bytes = SmallDocument();
    const auto reader = MakeReader();
    int opened = 0;
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
        opened += reader->OpenBytes(bytes) == 0;
        ReadAll(*reader.Get());
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
    }
    EXPECT_GT(opened, 0); // within values nothing shows
    EXPECT_EQ(reader->OpenBytes(bytes), 0);
}

// Would take minutes if any of it cost quadratic time.
TEST(HostileXML, ManyValuesAndAttributesCostTheirSize)
{
    constexpr unsigned kMany = 200000;
    std::string elements;
    for (unsigned i = 0; i < kMany; ++i) {
        elements += "<UInt32 Key='some.long.common.beginning." + std::to_string(i) + "' Value='1'/>";
    }
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(Document(elements)), 0);
    SerializeableValue<std::uint32_t> value;
    for (unsigned i = kMany; i-- > 0;) {
        ASSERT_TRUE(
            reader->GetDataReader().ReadValue(CreateKeyWithIndex("some.long.common.beginning", i), value));
        ASSERT_FALSE(
            reader->GetDataReader().ReadValue(CreateKeyWithIndex("some.long.common.absent", i), value));
    }

    std::string attributes;
    for (unsigned i = 0; i < kMany; ++i) {
        attributes += " a" + std::to_string(i) + "='1'";
    }
    ASSERT_EQ(reader->OpenBytes(Document("<UInt32" + attributes + " Key='k' Value='3'/>")), 0);
    ASSERT_TRUE(reader->GetDataReader().ReadValue("k", value));
    EXPECT_EQ(value.Get(), 3u);
}

} // namespace
} // namespace BE::test
