#include <support/KeptText.h>

#include "host/kiocore/config/MakeCatalogue.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using kiocore::config::Localizer;
using trhost::KeptText;
using trhost::ToldText;

TEST(KeptText, IsToldWithItsValues)
{
    const struct {
        const char* name;
        std::string kept;
        const char* told;
    } kCases[] = {
        {"nothing", "", ""},
        {"no localised text", "12 @0", "12 @0"},
        {"no values", "$$$/A/Go=Go", "Go"},
        {"a note", KeptText("$$$/A/Go=Go to @0#{@0: place}", {"sea"}), "Go to sea"},
        {"an empty value between others", KeptText("$$$/A/Three=@0-@1-@2", {"a", "", "c"}), "a--c"},
        {"too few values", KeptText("$$$/A/Two=@0 @1", {"a"}), "a @1"},
        {"values within values",
         KeptText("$$$/A/Not=@0: @1",
                  {"f", KeptText("$$$/A/For=for @0 and @1", {"x", KeptText("$$$/A/Y=y")})}),
         "f: for x and y"},
        {"a value with our marks",
         KeptText("$$$/A/Go=Go to @0", {"a\x0E"
                                        "b\x0F"
                                        "c"}),
         "Go to a?b?c"},
        {"a value like a parameter", KeptText("$$$/A/Two=@0 @1", {"@1", "b"}), "@1 b"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(ToldText(test.kept), test.told);
    }
}

TEST(KeptText, IsToldInTheLanguageOfTheMoment)
{
    support::TemporaryFolder folder;
    support::WriteFile(folder / "de.mo",
                       MakeCatalogue({{"A/Not\x04@0: @1", "@1 (@0)"}, {"A/Gone\x04gone", "weg"}}));
    const std::string kept = KeptText("$$$/A/Not=@0: @1", {"file", KeptText("$$$/A/Gone=gone")});
    EXPECT_EQ(ToldText(kept), "file: gone");
    ASSERT_EQ(Localizer::SetLanguage("de", folder.Path().native()), 0);
    EXPECT_EQ(ToldText(kept), "weg (file)");
    Localizer::SetLanguage("en", "");
    EXPECT_EQ(ToldText(kept), "file: gone");
}
