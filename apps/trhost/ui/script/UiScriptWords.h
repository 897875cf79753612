#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trhost::ui {

/// Ends the reading of a line; the text is for people.
struct BadUiLine {
    std::string text;
};

struct UiWord {
    std::string text;
    bool isQuoted = false; ///< is no word of the language then, whatever it says
};

/// Splits a line at blanks. "..." keeps them together (in it, \" \\ and \n are what they are elsewhere), '#'
/// at the beginning of a word begins a comment unless a digit follows.
/// @throws BadUiLine for a quotation mark that is not closed.
std::vector<UiWord> SplitUiLine(std::string_view inLine);

} // namespace trhost::ui
