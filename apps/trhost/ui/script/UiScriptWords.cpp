#include "UiScriptWords.h"

#include "../../support/LocalText.h"

namespace trhost::ui {
namespace {

bool IsBlank(char inLetter)
{
    return inLetter == ' ' || inLetter == '\t' || inLetter == '\r';
}

bool IsDigit(char inLetter)
{
    return inLetter >= '0' && inLetter <= '9';
}

/// Takes a text up to its closing mark.
std::string TakeQuoted(std::string_view inLine, std::size_t& ioAt)
{
    std::string text;
    while (ioAt < inLine.size()) {
        char letter = inLine[ioAt++];
        if (letter == '"') {
            return text;
        }
        if (letter == '\\' && ioAt < inLine.size()) {
            letter = inLine[ioAt++];
            if (letter != 'n' && letter != '"' && letter != '\\') {
                throw BadUiLine{
                    LocalText("$$$/Halcyon/TrHost/UiScript/BadEscape=found \\@0 in a quoted text; expected "
                              "@1#{@0: a character, @1: what may stand there}",
                              {std::string(1, letter), R"(\", \\, \n)"})};
            }
            letter = letter == 'n' ? '\n' : letter;
        }
        text += letter;
    }
    throw BadUiLine{LocalText("$$$/Halcyon/TrHost/UiScript/OpenQuote=a quotation mark is not closed")};
}

} // namespace

std::vector<UiWord> SplitUiLine(std::string_view inLine)
{
    std::vector<UiWord> words;
    std::size_t at = 0;
    while (at < inLine.size()) {
        const char letter = inLine[at];
        if (IsBlank(letter)) {
            ++at;
        } else if (letter == '#' && !(at + 1 < inLine.size() && IsDigit(inLine[at + 1]))) {
            break;
        } else if (letter == '"') {
            words.push_back({TakeQuoted(inLine, ++at), true});
        } else {
            const std::size_t begin = at;
            while (at < inLine.size() && !IsBlank(inLine[at]) && inLine[at] != '"') {
                ++at;
            }
            words.push_back({std::string(inLine.substr(begin, at - begin)), false});
        }
    }
    return words;
}

} // namespace trhost::ui
