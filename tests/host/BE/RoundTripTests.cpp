#include "Documents.h"

#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

namespace BE::test {
namespace {

/// Writes each text both as a value and as a map's key and value, reads all back.
void ExpectTextsRoundTrip(const std::vector<UTF16String>& inTexts)
{
    const auto writer = MakeWriter();
    for (std::size_t i = 0; i < inTexts.size(); ++i) {
        writer->GetDataWriter().WriteValue(CreateKeyWithIndex("Text", static_cast<unsigned>(i)), inTexts[i]);
    }
    writer->GetDataWriter().BeginValueMap("Map");
    for (const UTF16String& text : inTexts) {
        writer->GetDataWriter().WriteMapValue(text, text);
    }
    writer->GetDataWriter().EndValueMap();

    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(writer->GetBytes()), 0) << reader->GetOpenError();
    DataReader& data = reader->GetDataReader();
    EXPECT_EQ(data.GetValueCount(), inTexts.size() + 1);
    for (std::size_t i = 0; i < inTexts.size(); ++i) {
        UTF16String text = u"unset";
        ASSERT_TRUE(data.ReadValue(CreateKeyWithIndex("Text", static_cast<unsigned>(i)), text));
        ASSERT_EQ(text, inTexts[i]) << "text " << i;
    }
    std::size_t next = 0;
    ASSERT_TRUE(data.ReadValueMap("Map", [&](const UTF16String& key, const UTF16String& value) {
        EXPECT_EQ(key, inTexts.at(next));
        EXPECT_EQ(value, inTexts.at(next));
        ++next;
        return true;
    }));
    EXPECT_EQ(next, inTexts.size());
}

TEST(XMLRoundTrip, EverySingleUnitAlone)
{
    std::vector<UTF16String> texts;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        texts.push_back(UTF16String(1, static_cast<char16_t>(unit)));
    }
    ExpectTextsRoundTrip(texts);
}

TEST(XMLRoundTrip, TextsThatLookLikeTheFormAroundThem)
{
    using namespace std::string_literals;
    ExpectTextsRoundTrip({
        u""s,
        u" "s,
        u"  both ends  "s,
        u"\t\r\n \r"s,
        u"\\"s,
        u"\\\\"s,
        u"\\u0041"s,
        u"\\\\u0041"s,
        u"C:\\users\\u0000"s,
        u"&amp;"s,
        u"&#65;"s,
        u"\"/><String Key=\"x\" Value=\"'"s,
        u"]]>"s,
        u"<!-- -->"s,
        u"\0inside\0"s,
        u"emoji \U0001F600, last plane \U0010FFFF"s,
        UTF16String{0xDC00, 0xD800},
        UTF16String{0xD800, 0xD800, 0xDC00, 0xDC00},
        UTF16String(32768, u'\x4E2D'),
        UTF16String(32768, 0xD800),
    });
}

TEST(XMLRoundTrip, RandomUnits)
{
    for (unsigned seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<UTF16String> texts(2000);
        for (UTF16String& text : texts) {
            text.resize(random() % 40);
            // From all units, around the surrogates, or from ASCII.
            const unsigned kind = random() % 3;
            for (char16_t& unit : text) {
                unit = static_cast<char16_t>(kind == 0   ? random()
                                             : kind == 1 ? 0xD7F0 + random() % 0x820
                                                         : random() % 0x80);
            }
        }
        ExpectTextsRoundTrip(texts);
    }
}

template <typename T>
void ExpectScalarRoundTrips(const T& inValue)
{
    const auto writer = MakeWriter();
    writer->GetDataWriter().WriteValue("Value", SerializeableValue<T>(inValue));
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(writer->GetBytes()), 0) << reader->GetOpenError();
    SerializeableValue<T> value;
    ASSERT_TRUE(reader->GetDataReader().ReadValue("Value", value));
    EXPECT_EQ(std::memcmp(&value.Get(), &inValue, sizeof(T)), 0) << writer->GetBytes();
}

TEST(XMLRoundTrip, ScalarsToTheBit)
{
    ExpectScalarRoundTrips(true);
    ExpectScalarRoundTrips(false);
    ExpectScalarRoundTrips(std::numeric_limits<std::int32_t>::min());
    ExpectScalarRoundTrips(std::numeric_limits<std::uint32_t>::max());
    ExpectScalarRoundTrips(std::numeric_limits<std::int64_t>::min());
    ExpectScalarRoundTrips(std::numeric_limits<std::uint64_t>::max());
    ExpectScalarRoundTrips(Guid("102BFB4C-1980-4e77-87DF-17B03D5B09DB"));
    for (double value :
         {0.0, -0.0, 0.1, 1e300, std::numeric_limits<double>::denorm_min(),
          std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::bit_cast<double>(0x7FF8000000000001ull), std::bit_cast<double>(0xFFF4000000000000ull)}) {
        ExpectScalarRoundTrips(value);
    }
}

TEST(XMLRoundTrip, BinaryData)
{
    std::array<std::uint8_t, 256> all;
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint8_t>(i);
    }
    const auto writer = MakeWriter();
    writer->GetDataWriter().WriteValue("All", MF::BinaryData(all.data(), all.size()));
    writer->GetDataWriter().WriteValue("None", MF::BinaryData());
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(writer->GetBytes()), 0) << reader->GetOpenError();
    MF::BinaryData read("old", 3);
    ASSERT_TRUE(reader->GetDataReader().ReadValue("All", read));
    EXPECT_EQ(read, MF::BinaryData(all.data(), all.size()));
    ASSERT_TRUE(reader->GetDataReader().ReadValue("None", read));
    EXPECT_EQ(read.GetSize(), 0u);
}

TEST(XMLRoundTrip, KeysOfAnyUTF8)
{
    const ImmutableString kKeys[] = {"a&b",
                                     "a\\b",
                                     "<\"'>",
                                     "tab\there",
                                     "Gr\xC3\xB6\xC3\x9F"
                                     "e",
                                     "\xF0\x9F\x98\x80",
                                     ""};
    const auto writer = MakeWriter();
    for (const ImmutableString& key : kKeys) {
        writer->GetDataWriter().WriteValue(key, kiocore::utility::ToUTF16(key));
    }
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(writer->GetBytes()), 0) << reader->GetOpenError();
    for (const ImmutableString& key : kKeys) {
        UTF16String value = u"unset";
        EXPECT_TRUE(reader->GetDataReader().ReadValue(key, value)) << key;
        EXPECT_EQ(value, kiocore::utility::ToUTF16(key));
    }
}

TEST(XMLRoundTrip, ObjectsThroughTheClassFactoryAndAFile)
{
    Scripted::Register();
    support::TemporaryFolder folder;
    support::TraceRecorder trace("Host");
    const UTF16String path = folder.UTF16("record.xml");
    const InterfaceRef<ISerializeable> object(kiocore::classref::MakeObject<Scripted>());
    const auto writer = MakeWriter();
    int depth = 0;
    Scripted::sWrite = [&](DataWriter& out) {
        out.WriteValue("Depth", SerializeableValue<std::int32_t>(depth));
        if (++depth < kMaxXMLNesting - 2) {
            out.WriteObject("Inner", object);
        }
    };
    writer->GetDataWriter().WriteObject("Outer", object);
    ASSERT_EQ(writer->Save(path), 0) << writer->GetSaveResult().failedStep;

    const auto reader = MakeReader();
    ASSERT_EQ(reader->Open(path), 0) << reader->GetOpenError();
    EXPECT_EQ(reader->GetModificationTime(), writer->GetSaveResult().modificationTime);
    std::vector<int> depths;
    Scripted::sRead = [&](unsigned version, DataReader& in) {
        EXPECT_EQ(version, 7u);
        SerializeableValue<std::int32_t> value;
        EXPECT_TRUE(in.ReadValue("Depth", value));
        depths.push_back(value.Get());
        InterfaceRef<ISerializeable> inner;
        in.ReadObject("Inner", inner);
        EXPECT_EQ(in.GetValueCount(), inner ? 2u : 1u);
    };
    InterfaceRef<ISerializeable> read;
    EXPECT_TRUE(reader->GetDataReader().ReadObject("Outer", read));
    EXPECT_TRUE(read);
    EXPECT_EQ(depths.size(), static_cast<std::size_t>(kMaxXMLNesting - 2));
    EXPECT_EQ(trace.CountContaining("BE::IXMLFileWriter::Save(\""), 1);
    EXPECT_EQ(trace.CountContaining("BE::IXMLFileReader::Open(\""), 1);

    // One level more could not be read again, so it is not written; what failed leaves nothing behind.
    depth = -1;
    const std::string before = writer->GetBytes();
    EXPECT_THROW(writer->GetDataWriter().WriteObject("Deeper", object), kiocore::kio_exception);
    EXPECT_EQ(writer->GetBytes(), before);
}

/// The values of all attributes "Value", as python's expat sees them, one a line.
bool ReadWithExpat(const std::filesystem::path& inFile, std::string& outValues)
{
    const std::string command = "python3 -c 'import sys, xml.parsers.expat as e\n"
                                "p = e.ParserCreate()\n"
                                "p.StartElementHandler = lambda n, a: \"Value\" in a and "
                                "sys.stdout.buffer.write((a[\"Value\"]+\"\\n\").encode())\n"
                                "p.ParseFile(open(sys.argv[1], \"rb\"))' " +
                                inFile.string() + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    char block[65536];
    for (std::size_t got; pipe && (got = fread(block, 1, sizeof(block), pipe)) > 0;) {
        outValues.append(block, got);
    }
    return pipe && pclose(pipe) == 0;
}

TEST(XMLRoundTrip, AnotherParserReadsTheSame)
{
    if (std::system("python3 -c 'import xml.parsers.expat' 2>/dev/null") != 0) {
        GTEST_SKIP() << "needs python3";
    }
    support::TemporaryFolder folder;
    const auto write = [&](const std::vector<UTF16String>& inTexts) {
        const auto writer = MakeWriter();
        for (const UTF16String& text : inTexts) {
            writer->GetDataWriter().WriteValue("Text", text);
        }
        EXPECT_EQ(writer->Save(folder.UTF16("file.xml")), 0);
    };
    std::string values;
    write({u"  both ends  ", u"<&>\"'", u"caf\u00E9 \u4E2D \U0001F600", u"\u0085 \u2028 \u007F", u"a\tb\\"});
    ASSERT_TRUE(ReadWithExpat(folder / "file.xml", values)) << values;
    EXPECT_EQ(values,
              "  both ends  \n<&>\"'\ncaf\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80\n\xC2\x85 \xE2\x80\xA8 \x7F\n"
              "a\\u0009b\\\\\n");

    std::vector<UTF16String> all;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        all.push_back(UTF16String(1, static_cast<char16_t>(unit)));
    }
    write(all);
    values.clear();
    ASSERT_TRUE(ReadWithExpat(folder / "file.xml", values)) << values.substr(0, 1000);
    EXPECT_EQ(std::count(values.begin(), values.end(), '\n'), 0x10000);
}

} // namespace
} // namespace BE::test
