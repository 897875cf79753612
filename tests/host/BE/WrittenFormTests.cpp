#include "Documents.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

// Documents in the very form in which they are written are read by a short way of their own, all others by
// the XML parser. Whatever the short way takes, the parser must take as the same.

namespace BE::test {
namespace {

std::string Narrow(const UTF16String& inText)
{
    return kiocore::utility::ToUTF8(inText);
}

/// Gives its values away as texts; what cannot be read, as the reason.
class Shown final : public kiocore::classref::UnknownBase, public ISerializeable {
public:
    static inline std::string sText;

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == ISerializeable::InterfaceID() ? static_cast<ISerializeable*>(this) : nullptr;
    }
    void SerializeIn(unsigned int inVersion, DataReader& inReader) override
    {
        sText += "version " + std::to_string(inVersion) + ", " + std::to_string(inReader.GetValueCount()) +
                 " values\n";
    }
    void SerializeOut(DataWriter&) const override {}
    void SerializeToSink(IDictionarySink&) const override {}
    unsigned int GetVersion() const override { return 1; }
    Guid GetClassID() const override { return Guid(); }
    ImmutableString GetClassName() const override { return "Shown"; }
};

/// All that a reader says about a document, and where it is refused, that.
std::string Show(IXMLFileReader& inReader, const std::string& inDocument, const char* inTopKey)
{
    if (inReader.OpenBytes(inDocument) != 0) {
        return "refused";
    }
    Shown::sText = std::to_string(inReader.GetDataReader().GetValueCount()) + " on top\n";
    inReader.VisitStored(inTopKey, [](std::string_view type, std::string_view key, const UTF16String& value) {
        Shown::sText.append(type).append(" ").append(key).append(" ").append(Narrow(value)).append("\n");
    });
    try {
        InterfaceRef<ISerializeable> object;
        inReader.GetDataReader().ReadObject(inTopKey, object);
    } catch (const kiocore::kio_exception& failure) {
        Shown::sText += failure.what();
    }
    return Shown::sText;
}

/// A comment in front is nothing that a writer of ours writes, so this one goes to the parser.
std::string ForTheParser(const std::string& inDocument)
{
    return "<!---->" + inDocument;
}

TEST(WrittenForm, IsReadLikeTheSameDocumentByTheParserWhateverByteIsWrong)
{
    const auto reader = MakeReader();
    for (const char* classID :
         {"0f0b9c52-6a3e-4d55-9c34-5b3a8f1d7e60", "e727e14d-731c-47f8-9d24-2cb69e8c5323"}) {
        kiocore::classref::ClassFactory::RegisterClass(
            Guid(classID), "kShownClassID", "Shown",
            [](InterfaceRef<kiocore::classref::UnknownBase>& outObject) {
                outObject = kiocore::classref::MakeObject<Shown>();
            });
    }
    const struct {
        const char* name;
        const char* topKey;
    } kFiles[] = {{"document.xml", "Clip"}, {"record-v4.xml", "MediaAcceleratorDatabaseEntry"}};
    for (const auto& file : kFiles) {
        const std::string document = support::ReadFile(std::filesystem::path(BE_TEST_DATA) / file.name);
        const std::string shown = Show(*reader, document, file.topKey);
        ASSERT_NE(shown, "refused") << file.name;
        ASSERT_EQ(shown, Show(*reader, ForTheParser(document), file.topKey)) << file.name;
        for (std::size_t i = 0; i < document.size(); ++i) {
            for (const char* wrong : {"", "\"", "<", ">", "/", " ", "\n", "&", "\\", "x", "0", "<a/>"}) {
                std::string changed = document;
                changed.replace(i, 1, wrong);
                ASSERT_EQ(Show(*reader, changed, file.topKey),
                          Show(*reader, ForTheParser(changed), file.topKey))
                    << file.name << " with \"" << wrong << "\" at offset " << i;
            }
            const std::string cut = document.substr(0, i);
            ASSERT_EQ(Show(*reader, cut, file.topKey), Show(*reader, ForTheParser(cut), file.topKey))
                << file.name << " cut at offset " << i;
        }
    }
}

TEST(WrittenForm, HoldsNoMoreThanTheParserAllows)
{
    const std::string object =
        "<Object Key=\"o\" ClassID=\"e727e14d-731c-47f8-9d24-2cb69e8c5323\" ClassName=\"\" Version=\"1\">";
    const std::string root = "<BackEndDocument Version=\"1\">";
    const auto nested = [&](int inObjects) {
        std::string document = root;
        for (int i = 0; i < inObjects; ++i) {
            document += object;
        }
        for (int i = 0; i < inObjects; ++i) {
            document += "</Object>";
        }
        return document + "</BackEndDocument>";
    };
    const struct {
        const char* name;
        std::string document;
        int expected;
    } kCases[] = {
        {"nothing", "", -1},
        {"an empty root", root + "</BackEndDocument>", 0},
        {"as deep as can be", nested(kMaxXMLNesting - 1), 0},
        {"one deeper", nested(kMaxXMLNesting), -1},
        {"the root alone is closed", root + object + "</BackEndDocument>", -1},
        {"an object is closed as a map", root + object + "</Map></BackEndDocument>", -1},
        {"a map in a map", root + "<Map Key=\"a\"><Map Key=\"b\"></Map></Map></BackEndDocument>", -1},
        {"a map's value outside of one", root + "<Entry Key=\"a\" Value=\"b\"/></BackEndDocument>", -1},
        {"a value of a map in an object",
         root + object + "<Entry Key=\"a\" Value=\"b\"/></Object></BackEndDocument>", -1},
        {"it goes on behind its end", root + "</BackEndDocument>\n" + root + "</BackEndDocument>", -1},
    };
    const auto reader = MakeReader();
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(reader->OpenBytes(test.document), test.expected) << reader->GetOpenError();
        EXPECT_EQ(reader->OpenBytes(ForTheParser(test.document)), test.expected) << reader->GetOpenError();
    }
}

} // namespace
} // namespace BE::test
