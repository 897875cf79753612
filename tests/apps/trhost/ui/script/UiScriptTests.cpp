#include <ui/script/UiScript.h>

#include <gmock/gmock.h>

using namespace trhost::ui;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Aspect = UiStatement::Aspect;
using Kind = UiTarget::Kind;
using Verb = UiStatement::Verb;

TEST(UiScript, ReadsWhatItsLinesSay)
{
    const UiScript script =
        ParseUiScript("# a comment\r\n"
                      "\n"
                      "click EnableAllButton # all of them\n"
                      "  press PluginTree row \"Gaussian blur\" column Enabled at -1,5\r\n"
                      "drag title \"File Path\" to PluginTree title #10 at 0,3\n"
                      "doubleclick PluginTree row 12\n"
                      "wheel PluginTree -3\n"
                      "key Shift+Tab\n"
                      "type \"say \\\"blur\\\" \\\\ #1\\n\"\n"
                      "expect PluginTree row \"row\" state selected visible\n"
                      "expect PluginTree columns \"Enabled\" \"Name\"\n"
                      "await focus SearchText\n"
                      "expect title Name width 120\n"
                      "click \"title\"\n"
                      "dump\n"
                      "screenshot \"my shot.png\"\n"
                      "end");
    ASSERT_TRUE(script.errors.empty()) << script.errors.front().line << ": " << script.errors.front().text;
    const auto& lines = script.statements;
    ASSERT_EQ(lines.size(), 15u);
    EXPECT_EQ(lines[0].line, 3);
    EXPECT_EQ(lines[0].target.node, "EnableAllButton");
    EXPECT_EQ(lines[1].verb, Verb::kPress);
    EXPECT_EQ(lines[1].target.kind, Kind::kCell);
    EXPECT_EQ(lines[1].target.rowText, "Gaussian blur");
    EXPECT_EQ(lines[1].target.column.title, "Enabled");
    EXPECT_EQ(lines[1].target.at->x, -1);
    EXPECT_EQ(lines[2].target.AsText(), "title \"File Path\"");
    EXPECT_EQ(lines[2].to.AsText(), "PluginTree title #10");
    EXPECT_EQ(lines[2].to.column.id, 10u);
    EXPECT_EQ(lines[2].to.at->y, 3);
    EXPECT_EQ(lines[3].target.kind, Kind::kRow);
    EXPECT_EQ(lines[3].target.rowNumber, 12u);
    EXPECT_EQ(lines[4].number, -3);
    EXPECT_EQ(lines[5].text, "Shift+Tab");
    EXPECT_EQ(lines[6].text, "say \"blur\" \\ #1\n");
    EXPECT_EQ(lines[7].target.rowText, "row");
    EXPECT_THAT(lines[7].words, ElementsAre("selected", "visible"));
    EXPECT_EQ(lines[8].aspect, Aspect::kColumns);
    EXPECT_THAT(lines[8].words, ElementsAre("Enabled", "Name"));
    EXPECT_EQ(lines[9].verb, Verb::kAwait);
    EXPECT_EQ(lines[9].aspect, Aspect::kFocus);
    EXPECT_EQ(lines[10].number, 120);
    EXPECT_EQ(lines[11].target.kind, Kind::kNode) << "what is quoted is no word of the language";
    EXPECT_EQ(lines[12].text, "");
    EXPECT_EQ(lines[13].text, "my shot.png");
    EXPECT_EQ(lines[14].line, 17);
}

TEST(UiScript, NamesTheLineAndWhatIsWrongWithIt)
{
    const struct {
        const char* line; // the second one of three
        const char* error;
    } kCases[] = {
        {"push OK", "found push, expected click, doubleclick, press"},
        {"\"click\" OK", "found \"click\", expected click, doubleclick"},
        {"click", "found the end of the line, expected the ID of a node"},
        {"click OK now", "found now, expected nothing more"},
        {"click T row", "found the end of the line, expected a whole number, at least 1"},
        {"click T row 0", "found 0, expected a whole number, at least 1"},
        {"click T row blur", "found blur, expected a whole number"},
        {"click T row 1 column", "expected the title of a column, or # and its number"},
        {"click T title #1x", "found #1x, expected the title of a column"},
        {"click T at 5", "found 5, expected X,Y"},
        {"click T at 5,y", "found 5,y, expected X,Y"},
        {"drag A B", "found B, expected to"},
        {"drag A to", "found the end of the line, expected the ID of a node"},
        {"wheel T", "found the end of the line, expected a whole number"},
        {"key Frobnicate", "found Frobnicate, expected a key, as in Tab"},
        {"type blur", "found blur, expected a text in quotation marks"},
        {"type \"blur", "a quotation mark is not closed"},
        {"type \"\\t\"", "found \\t in a quoted text; expected"},
        {"expect OK", "found the end of the line, expected text, name, rows"},
        {"expect OK colour red", "found colour, expected text, name, rows"},
        {"expect OK text yes", "found yes, expected a text in quotation marks"},
        {"expect T rows many", "found many, expected a whole number, at least 0"},
        {"expect OK state", "found the end of the line, expected visible, hidden, enabled"},
        {"expect OK state enabled pressed", "found pressed, expected visible, hidden, enabled"},
        {"screenshot", "found the end of the line, expected the name of a file"},
        {"end now", "found now, expected nothing more"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.line);
        const UiScript script = ParseUiScript("click OK\n" + std::string(test.line) + "\nend");
        ASSERT_EQ(script.errors.size(), 1u);
        EXPECT_EQ(script.errors[0].line, 2);
        EXPECT_THAT(script.errors[0].text, HasSubstr(test.error));
        EXPECT_EQ(script.statements.size(), 2u);
    }
    EXPECT_EQ(ParseUiScript("a\nb\n").errors.size(), 2u) << "all errors at once";
    EXPECT_TRUE(ParseUiScript("").errors.empty());
}
