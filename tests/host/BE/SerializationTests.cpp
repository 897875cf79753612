#include "Documents.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace BE::test {
namespace {

using ::testing::HasSubstr;

std::string MessageOf(const std::function<void()>& inCall)
{
    try {
        inCall();
    } catch (const kiocore::kio_exception& failure) {
        return failure.what();
    }
    return "no exception";
}

TEST(Serialization, KeysWithIndex)
{
    EXPECT_EQ(CreateKeyWithIndex("Stream.ID", 3), ImmutableString("Stream.ID.3"));
    EXPECT_EQ(CreateKeyWithIndex("Item.Count", 4294967295u), ImmutableString("Item.Count.4294967295"));
    const std::string longBase(100, 'k');
    EXPECT_EQ(CreateKeyWithIndex(longBase, 10), ImmutableString(longBase + ".10"));
}

TEST(Serialization, AnAbsentKeyLeavesTheDefault)
{
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(Document("<String Key='There' Value='x'/>")), 0);
    DataReader& data = reader->GetDataReader();
    UTF16String text = u"default";
    SerializeableValue<std::uint32_t> number(17);
    MF::BinaryData binary("old", 3);
    InterfaceRef<ISerializeable> object;
    EXPECT_FALSE(data.ReadValue("Absent", text));
    EXPECT_FALSE(data.ReadValue("Absent", number));
    EXPECT_FALSE(data.ReadValue("Absent", binary));
    EXPECT_FALSE(data.ReadObject("Absent", object));
    EXPECT_FALSE(data.ReadValueMap("Absent", [](const auto&, const auto&) { return true; }));
    EXPECT_EQ(text, u"default");
    EXPECT_EQ(number.Get(), 17u);
    EXPECT_EQ(binary, MF::BinaryData("old", 3));
}

TEST(Serialization, AValueOfAnotherTypeNamesKeyAndBothTypes)
{
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(Document("<UInt32 Key='Stream.Count' Value='1'/>")), 0);
    DataReader& data = reader->GetDataReader();
    UTF16String text = u"default";
    SerializeableValue<std::int32_t> number;
    EXPECT_THROW(data.ReadValue("Stream.Count", number), exSerializeableTypeMismatch);
    EXPECT_EQ(MessageOf([&] { data.ReadValue("Stream.Count", text); }),
              "The value \"Stream.Count\" is stored as UInt32; expected String");
    EXPECT_EQ(text, u"default");
}

TEST(Serialization, DamagedValuesThrowAndLeaveTheVariable)
{
    const auto expectDamaged = [](std::string_view inElement, auto inValue) {
        SCOPED_TRACE(inElement);
        const auto reader = MakeReader();
        ASSERT_EQ(reader->OpenBytes(Document(inElement)), 0) << reader->GetOpenError();
        auto value = inValue;
        EXPECT_THROW(reader->GetDataReader().ReadValue("k", value), exDamagedData);
        if constexpr (std::is_base_of_v<ISerializeableValue, decltype(inValue)>) {
            EXPECT_EQ(value.Get(), inValue.Get());
        } else {
            EXPECT_EQ(value, inValue);
        }
    };
    for (const char* text : {"\\", "\\x", "\\u12", "\\u12G4", "ends\\", "&nbsp;", "&", "&#0;", "&#xD800;",
                             "&#x110000;", "&#;", "&#xFFFFFFFFFF;", "a<b"}) {
        expectDamaged("<String Key='k' Value='" + std::string(text) + "'/>", UTF16String(u"default"));
    }
    for (const char* number : {"", "-1", "+1", " 1", "1 ", "4294967296", "0x10", "1.0"}) {
        expectDamaged("<UInt32 Key='k' Value='" + std::string(number) + "'/>",
                      SerializeableValue<std::uint32_t>(5));
    }
    expectDamaged("<Bool Key='k' Value='1'/>", SerializeableValue<bool>(true));
    expectDamaged("<Double Key='k' Value='nan'/>", SerializeableValue<double>(0.5));
    expectDamaged("<Double Key='k' Value='nan:7ff0000000000000'/>", SerializeableValue<double>(0.5));
    expectDamaged("<Guid Key='k' Value='102bfb4c'/>", SerializeableValue<Guid>());
    expectDamaged("<Binary Key='k' Value='abc'/>", MF::BinaryData("old", 3));
    expectDamaged("<Binary Key='k' Value='0g'/>", MF::BinaryData("old", 3));
}

TEST(Serialization, WhatOtherProgramsWriteIsReadByXMLsRules)
{
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(
                  "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\r\n<!-- by hand -->"
                  "<BackEndDocument Extra='' Version='1'>"
                  "<String Value='a&#x1F600;&#66;\r\n&#9;&#92;u0043' Comment='' Key='a&#46;b'></String>"
                  "<!-- inside --></BackEndDocument>\n<!-- after -->\n"),
              0)
        << reader->GetOpenError();
    UTF16String text;
    ASSERT_TRUE(reader->GetDataReader().ReadValue("a.b", text));
    EXPECT_EQ(text, u"a\U0001F600B \tC");
}

TEST(Serialization, KeysInAnyOrder)
{
    constexpr unsigned kCount = 3000;
    const auto writer = MakeWriter();
    for (unsigned i = 0; i < kCount; ++i) {
        writer->GetDataWriter().WriteValue(CreateKeyWithIndex("Key", i),
                                           SerializeableValue<std::uint32_t>(i));
    }
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(writer->GetBytes()), 0);
    std::vector<unsigned> order(kCount + 500); // some are absent
    std::iota(order.begin(), order.end(), 0u);
    const auto readAll = [&] {
        for (unsigned i : order) {
            SerializeableValue<std::uint32_t> value;
            ASSERT_EQ(reader->GetDataReader().ReadValue(CreateKeyWithIndex("Key", i), value), i < kCount)
                << i;
            ASSERT_EQ(value.Get(), i < kCount ? i : 0);
        }
    };
    readAll();
    std::reverse(order.begin(), order.end());
    readAll();
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    readAll();
}

TEST(Serialization, ValuesUnderOneKeyAreReadInStoredOrder)
{
    std::string elements;
    for (int i = 0; i < 50; ++i) {
        elements += "<UInt32 Key='n' Value='" + std::to_string(i) + "'/><Bool Key='b' Value='true'/>";
    }
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(Document(elements)), 0);
    // The second time round after keys that are nowhere: searched for one by one, then in an index.
    for (int absentReads : {0, 20}) {
        for (int i = 0; i < absentReads; ++i) {
            UTF16String text;
            EXPECT_FALSE(reader->GetDataReader().ReadValue("absent", text));
        }
        for (std::uint32_t i = 0; i < 50; ++i) {
            SerializeableValue<std::uint32_t> value;
            ASSERT_TRUE(reader->GetDataReader().ReadValue("n", value));
            EXPECT_EQ(value.Get(), i);
        }
    }
}

TEST(Serialization, AMapThatRefusesAKeyThrows)
{
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(
                  Document("<Map Key='m'><Entry Key='a' Value='1'/><Entry Key='a' Value='2'/></Map>")),
              0);
    int inserted = 0;
    EXPECT_THROW(
        reader->GetDataReader().ReadValueMap("m", [&](const auto&, const auto&) { return ++inserted < 2; }),
        exMapInsertionFailure);
    EXPECT_EQ(inserted, 2);
}

TEST(Serialization, AMapThatCannotBeReadLeavesTheOldOne)
{
    const auto reader = MakeReader();
    ASSERT_EQ(reader->OpenBytes(Document(
                  "<Map Key='twice'><Entry Key='a' Value='1'/><Entry Key='a' Value='2'/></Map>"
                  "<Map Key='named' ItemKey='Pair'><Entry Key='b' Value='2'/></Map><Map Key='empty'/>")),
              0);
    const ValueMap kOld{{u"old", u"0"}};
    ValueMap map = kOld;
    EXPECT_THROW(ReadValueMap(reader->GetDataReader(), "twice", map), exMapInsertionFailure);
    EXPECT_EQ(map, kOld);
    EXPECT_FALSE(ReadValueMap(reader->GetDataReader(), "absent", map));
    EXPECT_EQ(map, kOld);
    EXPECT_TRUE(ReadValueMap(reader->GetDataReader(), "named", map));
    EXPECT_EQ(map, (ValueMap{{u"b", u"2"}}));
    EXPECT_TRUE(ReadValueMap(reader->GetDataReader(), "empty", map));
    EXPECT_EQ(map, ValueMap());
}

TEST(Serialization, ObjectsOfUnknownClassesThrow)
{
    const auto reader = MakeReader();
    const auto read = [&](const char* inClassID) {
        EXPECT_EQ(reader->OpenBytes(Document(std::string("<Object Key='o' ClassID='") + inClassID +
                                             "' ClassName='Thing' Version='1'/>")),
                  0);
        return MessageOf([&] {
            InterfaceRef<ISerializeable> object;
            reader->GetDataReader().ReadObject("o", object);
        });
    };
    EXPECT_THAT(read("00000000-0000-0000-0000-000000000001"),
                HasSubstr("00000000-0000-0000-0000-000000000001"));
    // Registered, but nothing that a record may hold.
    EXPECT_THAT(read(kXMLFileReaderClassID.AsUTF8().c_str()), HasSubstr("cannot be stored"));
}

TEST(Serialization, AFailedSaveTellsWhyAndKeepsTheOldFile)
{
    support::TemporaryFolder folder;
    const auto writer = MakeWriter();
    EXPECT_LT(writer->Save(folder.UTF16("missing/record.xml")), 0);
    EXPECT_NE(writer->GetSaveResult().errorNumber, 0);

    const UTF16String path = support::WriteFile(folder / "record.xml", "old");
    writer->GetDataWriter().BeginValueMap("open");
    EXPECT_LT(writer->Save(path), 0);
    EXPECT_EQ(support::ReadFile(folder / "record.xml"), "old");
    EXPECT_THROW(writer->GetDataWriter().WriteValue("in a map", UTF16String()), kiocore::kio_exception);
    writer->GetDataWriter().EndValueMap();
    EXPECT_THROW(writer->GetDataWriter().WriteMapValue(u"outside", u""), kiocore::kio_exception);
    EXPECT_EQ(writer->Save(path), 0) << writer->GetSaveResult().failedStep;
    EXPECT_EQ(support::ReadFile(folder / "record.xml"), writer->GetBytes());
}

} // namespace
} // namespace BE::test
