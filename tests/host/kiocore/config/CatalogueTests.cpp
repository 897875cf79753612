#include "host/kiocore/config/MakeCatalogue.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>

using kiocore::config::Localizer;
using testing::HasSubstr;

namespace {

constexpr const char* kText = "$$$/App/Full=The folder is full.";

class Catalogues : public testing::Test {
protected:
    ~Catalogues() override { Localizer::SetLanguage("en", ""); }

    int Use(const std::string& inBytes)
    {
        support::WriteFile(mFolder / "de.mo", inBytes);
        return Localizer::SetLanguage("de", mFolder.Path().native());
    }
    support::TemporaryFolder mFolder;
};

std::string GermanTexts(bool inBigEndian)
{
    return MakeCatalogue({{"", "Content-Type: text/plain; charset=UTF-8\n"},
                          {"App/Full\x04The folder is full.", "Der Ordner ist voll – schade."},
                          {"App/Items\x04@0 item" + std::string(1, '\0') + "@0 items", "@0 Teil"}},
                         inBigEndian);
}

} // namespace

TEST_F(Catalogues, OfBothByteOrdersAreRead)
{
    for (bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian ? "big endian" : "little endian");
        ASSERT_EQ(Use(GermanTexts(bigEndian)), 0);
        EXPECT_EQ(Localizer::GetText(kText), u"Der Ordner ist voll – schade.");
        EXPECT_EQ(Localizer::GetText("$$$/App/Items=@0 item"), u"@0 Teil");
    }
}

TEST_F(Catalogues, OfTheUsualCompilerAreRead)
{
    const auto po = mFolder / "de.po";
    support::WriteFile(
        po, "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
            "msgctxt \"App/Full\"\nmsgid \"The folder is full.\"\nmsgstr \"Der Ordner ist voll.\"\n\n"
            "msgctxt \"App/Two\"\nmsgid \"One\\ntwo\"\nmsgstr \"Eins\\nzwei\"\n");
    for (const char* order : {"little", "big"}) {
        const std::string command = "msgfmt --endianness=" + std::string(order) + " -o '" +
                                    (mFolder / "de.mo").native() + "' '" + po.native() + "'";
        const int status = std::system(command.c_str());
        if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
            GTEST_SKIP() << "msgfmt is not installed";
        }
        ASSERT_EQ(status, 0);
        ASSERT_EQ(Localizer::SetLanguage("de", mFolder.Path().native()), 0);
        EXPECT_EQ(Localizer::GetText(kText), u"Der Ordner ist voll.");
        EXPECT_EQ(Localizer::GetText("$$$/App/Two=One\\ntwo"), u"Eins\nzwei");
    }
}

TEST_F(Catalogues, ThatAreDamagedAreNamedAndChangeNothing)
{
    ASSERT_EQ(Use(GermanTexts(false)), 0);
    const std::string good = GermanTexts(false);
    const auto with = [&](std::size_t offset, const std::string& bytes) {
        std::string damaged = good;
        damaged.replace(offset, bytes.size(), bytes);
        return damaged;
    };
    const struct {
        const char* name;
        std::string bytes;
        const char* problem;
    } kCases[] = {
        {"empty", "", "has 0 bytes"},
        {"another kind of file", std::string(100, 'x'), "magic number"},
        {"from the future", with(6, "\x02"), "format version 2"},
        {"too many texts", with(8, "\xff\xff\xff\xff"), "4294967295 texts"},
        {"table outside", with(15, "\xff"), "more than fit"},
        {"text outside", with(28 + 8 + 7, "\x7f"), "does not end with a zero byte"},
        {"text longer than the file", with(28 + 8 + 3, "\xff"), "does not end with a zero byte"},
        {"text that ends elsewhere", with(28 + 8, "\x05"), "does not end with a zero byte"},
        {"last byte missing", good.substr(0, good.size() - 1), "does not end with a zero byte"},
        {"twice the same message", MakeCatalogue({{"a\x04z", "1"}, {"a\x04z", "2"}}), "twice"},
        {"another encoding", MakeCatalogue({{"", "Content-Type: text/plain; charset=ISO-8859-1\n"}}),
         "ISO-8859-1"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        try {
            Use(test.bytes);
            ADD_FAILURE() << "was accepted";
        } catch (const kiocore::kio_exception& exception) {
            EXPECT_EQ(exception.Code(), kiocore::kError_DamagedData);
            EXPECT_THAT(exception.what(),
                        AllOf(HasSubstr((mFolder / "de.mo").native()), HasSubstr(test.problem)));
        }
        EXPECT_EQ(Localizer::GetText(kText), u"Der Ordner ist voll – schade.");
    }
}

TEST_F(Catalogues, CutAnywhereOrWithAnyByteChangedNeverHarm)
{
    const std::string good = GermanTexts(true);
    for (std::size_t i = 0; i < good.size(); ++i) {
        EXPECT_THROW(Use(good.substr(0, i)), kiocore::kio_exception) << i;
        for (const int mask : {0x01, 0x80, 0xFF}) {
            std::string damaged = good;
            damaged[i] = static_cast<char>(damaged[i] ^ mask);
            try {
                Use(damaged);
                Localizer::GetText(kText);
            } catch (const kiocore::kio_exception&) {
                // as good an answer: a changed letter cannot be noticed, a changed offset must be
            }
        }
    }
}

TEST_F(Catalogues, WhoseTextsShareBytesAreRefused)
{
    // Every row denotes the same text: a small file that would cost much time.
    std::string bytes = MakeCatalogue({{"a\x04" + std::string(100, 'm'), "1"}, {"b\x04n", "2"}});
    bytes.replace(28 + 8, 8, bytes.substr(28, 8));
    bytes.replace(28 + 16, 8, bytes.substr(28, 8));
    EXPECT_THROW(Use(bytes), kiocore::kio_exception);
}
