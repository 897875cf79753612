#include "host/kiocore/config/MakeCatalogue.h"
#include "support/TemporaryFolder.h"

#include <TR/EffectType.h>

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Localizer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;
using kiocore::classref::MakeObject;
using kiomediatypes::PixelFormat;
using testing::ElementsAre;
using testing::HasSubstr;
using TR::EffectType;

const Guid kGuid("0d3a0f0e-5b7a-4b0e-9f1c-2a6f3c1d8e90");

struct EffectTypes : testing::Test {
    EffectTypes() { BE::Initialize(); }
    ~EffectTypes() override
    {
        kiocore::config::Localizer::SetLanguage("en", "");
        BE::Shutdown();
    }

    /// Makes it the application's language, with these translations.
    void Speak(const std::string& inLanguage,
               const std::vector<std::pair<std::string, std::string>>& inTexts = {})
    {
        support::WriteFile(folder / (inLanguage + ".mo"), MakeCatalogue(inTexts));
        ASSERT_EQ(kiocore::config::Localizer::SetLanguage(inLanguage, folder.Path().native()), 0);
    }

    static InterfaceRef<BE::IXMLFileReader> Open(const std::string& inValues)
    {
        const InterfaceRef<BE::IXMLFileReader> reader =
            kiocore::classref::ClassFactory::CreateInstanceRef(BE::kXMLFileReaderClassID);
        EXPECT_EQ(reader->OpenBytes("<BackEndDocument Version='1'>" + inValues + "</BackEndDocument>"), 0);
        return reader;
    }

    static InterfaceRef<BE::IXMLFileWriter> Written(const EffectType& inType)
    {
        const InterfaceRef<BE::IXMLFileWriter> writer =
            kiocore::classref::ClassFactory::CreateInstanceRef(BE::kXMLFileWriterClassID);
        inType.SerializeOut(writer->GetDataWriter());
        return writer;
    }

    static unsigned VersionOf(const InterfaceRef<TR::IEffectType>& inType)
    {
        return InterfaceRef<BE::ISerializeable>(inType)->GetVersion();
    }

    support::TemporaryFolder folder;
};

TEST_F(EffectTypes, DescribeThemselvesInTheNearestLanguage)
{
    const struct {
        const char* name;
        const char* language;
        std::vector<const char*> described;
        UTF16String expected;
    } kCases[] = {
        {"its own language", "it_IT", {"de_DE", "en_US", "it_IT"}, u"in it_IT"},
        {"English before the first one", "it_IT", {"de_DE", "en_US", "fr_FR"}, u"in en_US"},
        {"the smallest code without English", "it_IT", {"fr_FR", "de_DE"}, u"in de_DE"},
        {"British English is another one", "it_IT", {"fr_FR", "en_GB"}, u"in en_GB"},
        {"a language without a country", "de", {"en_US", "de_DE"}, u"in de_DE"},
        {"none", "it_IT", {}, u""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::string map = "<Map Key='Descriptions'>";
        for (const std::string locale : test.described) {
            map += "<Entry Key='" + locale + "' Value='in " + locale + "'/>";
        }
        EffectType type;
        type.SerializeIn(3, Open(map + "</Map>")->GetDataReader());
        Speak(test.language);
        EXPECT_EQ(type.GetDescription(), test.expected);
    }
}

TEST_F(EffectTypes, ANewDescriptionReplacesTheOneInItsLanguageOnly)
{
    EffectType type;
    type.SetDescription(u"Glow");
    Speak("it_IT");
    type.SetDescription(u"Bagliore");
    type.SetDescription(u"Alone");
    EXPECT_EQ(type.GetDescription(), u"Alone");
    kiocore::config::Localizer::SetLanguage("en", "");
    EXPECT_EQ(type.GetDescription(), u"Glow");
}

TEST_F(EffectTypes, BuiltInOnesAreNamedForProgramsAndTranslatedForPeople)
{
    const struct {
        InterfaceRef<TR::IEffectType> (*make)();
        const char* guid;
        UTF16String name;
        const char* english;
        const char* key;
    } kCases[] = {
        {&TR::GetAcceleratedTimeEffectType, "94caf14f-e00b-4c06-8182-167cd7df3ad5", u"Accelerated",
         "Accelerated Effects", "VRE/Halcyon/Tracery/Foundation/EffectType/AcceleratedDescription"},
        {&TR::GetYUVEffectType, "fb4674ed-b1af-43c0-b567-84cd4826b09c", u"YUV", "YUV Effects",
         "Halcyon/Tracery/Foundation/EffectType/YUVDescription"},
        {&TR::Get32BitEffectType, "6e313327-cb78-4286-8b13-9a2d2e739d3e", u"32BitColor", "32-bit Color",
         "Halcyon/Tracery/Foundation/EffectType/32bitDescription"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.english);
        kiocore::config::Localizer::SetLanguage("en", "");
        const auto type = test.make();
        const auto again = test.make();
        EXPECT_FALSE(type == again);
        EXPECT_EQ(type->GetGuid(), Guid(test.guid));
        EXPECT_EQ(again->GetGuid(), type->GetGuid());
        EXPECT_EQ(type->GetName(), test.name);
        EXPECT_EQ(type->GetDescription(), kiocore::utility::ToUTF16(test.english));
        EXPECT_EQ(type->GetMatchNames(), std::vector<UTF16String>());
        EXPECT_EQ(VersionOf(type), 3u);

        Speak("it_IT", {{std::string(test.key) + '\x04' + test.english, "tradotto"}});
        EXPECT_EQ(test.make()->GetDescription(), u"tradotto");
        EXPECT_EQ(test.make()->GetName(), test.name);
        EXPECT_EQ(type->GetDescription(), kiocore::utility::ToUTF16(test.english)) << "made in English";
    }
}

TEST_F(EffectTypes, ComeBackFromAFileWithEachMatchNameOnceInOrder)
{
    EffectType type(kGuid, u"Glow & <\u00e9>", {u"b", u"a", u"b", u"\ufffd", u"\U0001F600"});
    type.SetDescription(u"Makes\nlight");
    const UTF16String path = folder.UTF16("glow.xml");
    ASSERT_EQ(Written(type)->Save(path), 0);

    const auto read = TR::LoadEffectType(path);
    EXPECT_EQ(read->GetGuid(), kGuid);
    EXPECT_EQ(read->GetName(), u"Glow & <\u00e9>");
    EXPECT_EQ(read->GetDescription(), u"Makes\nlight");
    EXPECT_EQ(VersionOf(read), 3u);
    // By units, in which surrogates come before the last characters of the first plane.
    EXPECT_THAT(read->GetMatchNames(),
                ElementsAre(u"a", u"b", UTF16String(u"\U0001F600"), UTF16String(u"\ufffd")));
}

struct RecordingSink final : BE::IDictionarySink {
    void Put(const BE::ImmutableString& inKey, const UTF16String& inValue) override
    {
        lines.push_back(inKey.AsString() + " = " + kiocore::utility::ToUTF8(inValue));
    }
    void Put(const BE::ImmutableString& inKey, const MF::BinaryData&) override
    {
        lines.push_back(inKey.AsString() + " = bytes");
    }
    void Put(const BE::ImmutableString& inKey, const BE::ISerializeableValue& inValue) override
    {
        lines.push_back(inKey.AsString() + " = " + BE::NameOf(inValue.GetType()) + " " +
                        static_cast<const Guid*>(inValue.GetStorage())->AsUTF8());
    }
    void PutMap(const BE::ImmutableString& inKey, const BE::ImmutableString& inItemKey,
                const BE::ValueMap& inMap) override
    {
        lines.push_back(inKey.AsString() + " of " + inItemKey.AsString());
        for (const auto& [key, value] : inMap) {
            lines.push_back(kiocore::utility::ToUTF8(key) + ": " + kiocore::utility::ToUTF8(value));
        }
    }
    std::vector<std::string> lines;
};

TEST_F(EffectTypes, ShowASinkWhatTheyWrite)
{
    EffectType type(kGuid, u"Glow", {u"b", u"a", u"b"});
    type.SetDescription(u"Light");
    RecordingSink sink;
    type.SerializeToSink(sink);
    EXPECT_THAT(sink.lines,
                ElementsAre("Guid = Guid " + kGuid.AsUTF8(), "Name = Glow", "Descriptions of DescriptionItem",
                            "en_US: Light", "MatchNames of MatchNameItem", "a: ", "b: "));
    EXPECT_EQ(Written(type)->GetBytes(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                         "<BackEndDocument Version=\"1\">\n"
                                         "  <Guid Key=\"Guid\" Value=\"" +
                                             kGuid.AsUTF8() +
                                             "\"/>\n"
                                             "  <String Key=\"Name\" Value=\"Glow\"/>\n"
                                             "  <Map Key=\"Descriptions\" ItemKey=\"DescriptionItem\">\n"
                                             "    <Entry Key=\"en_US\" Value=\"Light\"/>\n"
                                             "  </Map>\n"
                                             "  <Map Key=\"MatchNames\" ItemKey=\"MatchNameItem\">\n"
                                             "    <Entry Key=\"a\" Value=\"\"/>\n"
                                             "    <Entry Key=\"b\" Value=\"\"/>\n"
                                             "  </Map>\n"
                                             "</BackEndDocument>\n");
}

TEST_F(EffectTypes, TakeEveryVersionButZero)
{
    const auto reader = Open("<String Key='Name' Value='Glow'/>");
    EffectType type;
    EXPECT_EQ(type.GetVersion(), 0u);
    try {
        type.SerializeIn(0, reader->GetDataReader());
        FAIL() << "no exception";
    } catch (const BE::exIncomingObjectVersionTooOld& error) {
        EXPECT_EQ(error.ClassName(), "EffectType");
        EXPECT_EQ(error.Version(), 0u);
        EXPECT_EQ(error.Text(), u"Data Read Failed");
        EXPECT_EQ(error.Code(), 0xF865001Eu);
        EXPECT_THAT(error.what(), HasSubstr("class EffectType has version 0"));
    }
    EXPECT_EQ(type.GetName(), u"");
    EXPECT_EQ(type.GetVersion(), 0u);
    for (const unsigned version : {1u, 3u, 7u}) {
        EffectType other(kGuid, u"Old", {u"old"});
        other.SerializeIn(version, reader->GetDataReader());
        EXPECT_EQ(other.GetName(), u"Glow");
        EXPECT_EQ(other.GetMatchNames(), std::vector<UTF16String>()) << "those of the file alone";
        EXPECT_EQ(other.GetGuid(), kGuid) << "absent, so as it was";
        EXPECT_EQ(other.GetVersion(), 3u);
    }
}

TEST_F(EffectTypes, ADamagedMapLeavesWhatWasReadBeforeIt)
{
    const std::string kBefore =
        "<Guid Key='Guid' Value='" + kGuid.AsUTF8() + "'/><String Key='Name' Value='New'/>";
    const std::string kDescriptions = "<Map Key='Descriptions'><Entry Key='en_US' Value='new'/></Map>";
    const struct {
        const char* name;
        std::string values;
        const char* message;
        UTF16String description;
    } kCases[] = {
        {"a locale twice",
         "<Map Key='Descriptions'><Entry Key='en_US' Value='a'/><Entry Key='en_US' Value='b'/></Map>",
         "Descriptions/en_US", u"old"},
        {"a match name twice",
         kDescriptions + "<Map Key='MatchNames'><Entry Key='x' Value=''/><Entry Key='x' Value=''/></Map>",
         "MatchNames/x", u"new"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EffectType type(Guid(), u"Old", {u"old"});
        type.SetDescription(u"old");
        try {
            type.SerializeIn(3, Open(kBefore + test.values)->GetDataReader());
            ADD_FAILURE() << "no exception";
        } catch (const BE::exMapInsertionFailure& error) {
            EXPECT_EQ(error.Text(), u"Data Read Failed");
            EXPECT_EQ(error.Code(), 0xF865001Eu);
            EXPECT_THAT(error.what(), HasSubstr(test.message));
        }
        EXPECT_EQ(type.GetGuid(), kGuid);
        EXPECT_EQ(type.GetName(), u"New");
        EXPECT_EQ(type.GetDescription(), test.description);
        EXPECT_THAT(type.GetMatchNames(), ElementsAre(u"old"));
    }
    const UTF16String path = support::WriteFile(
        folder / "twice.xml", "<BackEndDocument Version='1'>" + kCases[1].values + "</BackEndDocument>");
    EXPECT_THROW(TR::LoadEffectType(path), BE::exMapInsertionFailure);
}

TEST_F(EffectTypes, AFileThatCannotBeOpenedIsAnEmptyType)
{
    const struct {
        const char* name;
        UTF16String path;
    } kCases[] = {
        {"missing", folder.UTF16("missing.xml")},
        {"no XML", support::WriteFile(folder / "text.xml", "Glow")},
        {"a folder", folder.UTF16("")},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto type = TR::LoadEffectType(test.path);
        EXPECT_TRUE(type->GetGuid().IsZero());
        EXPECT_EQ(type->GetName(), u"");
        EXPECT_EQ(type->GetDescription(), u"");
        EXPECT_EQ(type->GetMatchNames(), std::vector<UTF16String>());
        EXPECT_EQ(VersionOf(type), 0u);
    }
}

TEST_F(EffectTypes, FollowFromPixelFormats)
{
    const auto format = [](std::uint64_t flags) { return static_cast<PixelFormat>(flags << 32); };
    const struct {
        const char* name;
        std::vector<PixelFormat> formats;
        std::vector<UTF16String> expected;
    } kCases[] = {
        {"none", {}, {}},
        {"8-bit RGB", {kiomediatypes::kPixelFormat_BGRA_4444_8u}, {}},
        {"float RGB", {kiomediatypes::kPixelFormat_BGRA_4444_32f}, {u"32BitColor"}},
        {"10-bit YUV", {kiomediatypes::kPixelFormat_V210_422_10u}, {u"YUV"}},
        {"float YUV", {format(0xB)}, {u"YUV", u"32BitColor"}},
        {"each once, in their own order",
         {kiomediatypes::kPixelFormat_BGRA_4444_32f, kiomediatypes::kPixelFormat_BGRA_4444_32f,
          kiomediatypes::kPixelFormat_UYVY_422_8u, format(0xB)},
         {u"YUV", u"32BitColor"}},
        {"some bits of the float depth, and more of them", {format(0x2), format(0x8), format(0xE)}, {}},
        {"other flags and all of the code", {static_cast<PixelFormat>(0xFFFFFFF0FFFFFFFFu)}, {}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<InterfaceRef<TR::IEffectType>> types{TR::GetYUVEffectType()};
        for (int call = 0; call < 2; ++call) {
            std::vector<UTF16String> names;
            const std::size_t before = types.size();
            TR::AddPixelFormatEffects(test.formats, types);
            for (std::size_t i = before; i < types.size(); ++i) {
                names.push_back(types[i]->GetName());
            }
            EXPECT_EQ(names, test.expected) << "call " << call << ": what is there already does not count";
        }
    }
}

TEST_F(EffectTypes, AnswerForBothOfTheirInterfaces)
{
    const InterfaceRef<BE::ISerializeable> stored = InterfaceRef<TR::IEffectType>(MakeObject<EffectType>());
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->GetClassID(), Guid("D85F9F4B-FDB5-482f-BD4F-16AACBBE0C94"));
    EXPECT_EQ(stored->GetClassName(), "EffectType");
    const InterfaceRef<TR::IEffectType> type(
        InterfaceRef<kiocore::classref::UnknownBase>(stored.Identity().get(), stored.Identity()));
    EXPECT_TRUE(type && type == stored);
}

} // namespace
