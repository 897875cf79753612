#include "host/kiocore/config/MakeCatalogue.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/config/Locale.h>
#include <kiocore/config/Localizer.h>

#include <gtest/gtest.h>

using kiocore::UTF16String;
using kiocore::config::CompareUnderDefaultLocale;
using kiocore::config::Locale;
using kiocore::config::Localizer;
using kiocore::config::SortKeyUnderDefaultLocale;

TEST(Localizer, ShowsDefaultsWithoutKeysAndNotes)
{
    const struct {
        const char* name;
        const char* text;
        UTF16String expected;
    } kCases[] = {
        {"plain", "$$$/App/Go=Go", u"Go"},
        {"with a note", "$$$/App/Go=Go to @0#{@0: address}", u"Go to @0"},
        {"note that goes on behind its brace", "$$$/App/URL=http://a/#b#{comment}Do not translate",
         u"http://a/#b"},
        {"line feeds", "$$$/App/Two=One\\ntwo \\t", u"One\ntwo \\t"},
        {"equals sign in the text", "$$$/App/Sum=a = b", u"a = b"},
        {"nothing behind the equals sign", "$$$/App/None=", u""},
        {"no key", "Cancel = \\n#{x}", u"Cancel = \\n#{x}"},
        {"no text", "$$$/App/Key", u"$$$/App/Key"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(Localizer::GetText(test.text), test.expected);
    }
}

TEST(Localizer, PutsValuesInPlaceOfParameters)
{
    const struct {
        const char* name;
        UTF16String text;
        UTF16String expected;
    } kCases[] = {
        {"at signs count from 0", u"@0 of @1", u"A@1 of B^1"},
        {"carets count from 1", u"^1 of ^2", u"A@1 of B^1"},
        {"no such value", u"@2 ^3 ^0 @12", u"@2 ^3 ^0 @12"},
        {"no number", u"a@b ^ @", u"a@b ^ @"},
        {"number beyond any integer", u"@99999999999999999999", u"@99999999999999999999"},
        {"repeated and adjacent", u"@0@0", u"A@1A@1"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(Localizer::Format(test.text, {u"A@1", u"B^1"}), test.expected);
    }
}

TEST(Localizer, TakesTheNearestCatalogue)
{
    support::TemporaryFolder folder;
    for (const char* language : {"de", "de_AT", "sr@latin"}) {
        support::WriteFile(folder / (std::string(language) + ".mo"),
                           MakeCatalogue({{"App/Go\x04Go", language},
                                          {"App/Empty\x04"
                                           "Empty",
                                           ""}}));
    }
    const struct {
        const char* language;
        int result;
        const char* catalogue; // null: the defaults
        UTF16String locale;
    } kCases[] = {
        {"de_AT", 0, "de_AT", u"de_AT"},
        {"de-AT", 0, "de_AT", u"de_AT"},
        {"de_AT.UTF-8", 0, "de_AT", u"de_AT"},
        {"de_CH", 0, "de", u"de_CH"},
        {"sr_RS@latin", 0, "sr@latin", u"sr_RS"},
        {"sr_RS", -1, nullptr, u"en_US"},
        {"de", 0, "de", u"de_DE"},
        {"fr_FR", -1, nullptr, u"en_US"},
        {"de", 0, "de", u"de_DE"},
        {"en_GB", 0, nullptr, u"en_GB"},
        {"de", 0, "de", u"de_DE"},
        {"C.UTF-8", 0, nullptr, u"en_US"},
        {"POSIX", 0, nullptr, u"en_US"},
        {"de", 0, "de", u"de_DE"},
        {"", 0, nullptr, u"en_US"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.language);
        EXPECT_EQ(Localizer::SetLanguage(test.language, folder.Path().native()), test.result);
        EXPECT_EQ(Localizer::GetLanguage(), test.catalogue ? test.catalogue : "en");
        EXPECT_EQ(Locale::ApplicationLanguage(), test.locale);
        EXPECT_EQ(Localizer::GetText("$$$/App/Go=Go"),
                  kiocore::utility::ToUTF16(test.catalogue ? test.catalogue : "Go"));
        EXPECT_EQ(Localizer::GetText("$$$/App/Go=Go on"), u"Go on") << "translated for another default";
        EXPECT_EQ(Localizer::GetText("$$$/App/Empty=Empty"), u"Empty") << "not translated yet";
    }
    EXPECT_THROW(Localizer::SetLanguage("../../etc/de", folder.Path().native()), kiocore::kio_exception);
    std::filesystem::create_directory(folder / "it.mo");
    EXPECT_THROW(Localizer::SetLanguage("it", folder.Path().native()), kiocore::file_exception);
    EXPECT_EQ(Localizer::GetLanguage(), "en");
}

TEST(Localizer, AddsTheTextsOfLibraries)
{
    support::TemporaryFolder folder;
    const auto write = [&](const char* inName, const char* inGo, const char* inKey) {
        const auto path = folder / inName;
        std::filesystem::create_directories(path.parent_path());
        support::WriteFile(path, MakeCatalogue({{"App/Go\x04Go", inGo}, {inKey, inGo}}));
    };
    write("app/de.mo", "Los", "App/Only\x04Only");
    write("library/de.mo", "Weiter", "Library/Only\x04Only");
    write("library/de_AT.mo", "Gemma", "Library/Only\x04Only");
    write("library/fr.mo", "Allez", "Library/Only\x04Only");
    const std::string app = (folder / "app").native();
    const std::string library = (folder / "library").native();
    const auto go = [] { return Localizer::GetText("$$$/App/Go=Go"); };
    const auto only = [] { return Localizer::GetText("$$$/Library/Only=Only"); };

    ASSERT_EQ(Localizer::SetLanguage("de_AT", app), 0);
    EXPECT_EQ(Localizer::AddTexts(app + "/none"), -1);
    EXPECT_EQ(Localizer::AddTexts(library), 0);
    EXPECT_EQ(go(), u"Los") << "the application's own comes first";
    EXPECT_EQ(only(), u"Gemma") << "each folder gives the nearest that it has";
    EXPECT_EQ(Localizer::GetLanguage(), "de");

    ASSERT_EQ(Localizer::SetLanguage("de", app), 0);
    EXPECT_EQ(only(), u"Only") << "setting the language begins anew";

    ASSERT_EQ(Localizer::SetLanguage("fr", app), -1);
    EXPECT_EQ(Localizer::AddTexts(library), 0);
    EXPECT_EQ(only(), u"Only") << "an application without French stays in one language";

    ASSERT_EQ(Localizer::SetLanguage("de", app), 0);
    support::WriteFile(folder / "library" / "de.mo", "no catalogue");
    EXPECT_THROW(Localizer::AddTexts(library), kiocore::kio_exception);
    EXPECT_EQ(go(), u"Los");
    Localizer::SetLanguage("en", "");
}

TEST(CompareUnderDefaultLocale, OrdersAsADictionaryAndTellsAllTextsApart)
{
    const UTF16String lone{0xD800};
    const struct {
        const char* name;
        UTF16String less;
        UTF16String more;
    } kCases[] = {
        {"words", u"apple", u"banana"},
        {"nothing first", u"", u"a"},
        {"accents between their neighbours", u"\u00e9clair", u"zebra"},
        {"composed and decomposed", u"e\u0301", u"\u00e9"},
        {"lone surrogates", lone, lone + lone},
        {"zero units", u"a", UTF16String{u'a', u'\0'}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(CompareUnderDefaultLocale(test.less, test.more), -1);
        EXPECT_EQ(CompareUnderDefaultLocale(test.more, test.less), 1);
        EXPECT_EQ(CompareUnderDefaultLocale(test.less, test.less), 0);
    }
}

TEST(SortKeyUnderDefaultLocale, OrdersAsComparingDoes)
{
    const std::vector<UTF16String> texts = {u"",
                                            u"a",
                                            u"A",
                                            u"b",
                                            u"ab",
                                            u"a b",
                                            u"a-b",
                                            u"e",
                                            u"\u00e9",
                                            u"e\u0301",
                                            u"\u00c9",
                                            u"f",
                                            u"K",
                                            u"\u212a",
                                            u"k",
                                            u"z",
                                            u"\u5f71",
                                            u"\U0001F600",
                                            UTF16String{0xD800},
                                            UTF16String{u'a', u'\0'},
                                            UTF16String{u'a', u'\0', u'b'},
                                            UTF16String{u'\0'},
                                            UTF16String(300, u'x'),
                                            UTF16String(300, u'x') + u"y"};
    for (const UTF16String& a : texts) {
        for (const UTF16String& b : texts) {
            const int byKey = SortKeyUnderDefaultLocale(a).compare(SortKeyUnderDefaultLocale(b));
            EXPECT_EQ((byKey > 0) - (byKey < 0), CompareUnderDefaultLocale(a, b))
                << testing::PrintToString(a) << " against " << testing::PrintToString(b);
        }
    }
}
