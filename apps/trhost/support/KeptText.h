#pragma once

#include <kiocore/config/Localizer.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Texts for people that are kept in files, or said by another process: such a text names its key, its
/// default and its values, and is put into a language when it is told. Modules that are loaded on demand say
/// all that goes wrong in this form.
namespace trhost {

namespace keptText {

constexpr char kValueBegin = '\x0E';
constexpr char kValueEnd = '\x0F';
constexpr std::string_view kKeyMark = "$$$/";

/// Every value behind the text, between its marks; a value may be a kept text with values of its own.
inline std::vector<std::string_view> ValuesOf(std::string_view inKept)
{
    std::vector<std::string_view> values;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < inKept.size(); ++i) {
        if (inKept[i] == kValueBegin && depth++ == 0) {
            begin = i + 1;
        } else if (inKept[i] == kValueEnd && depth > 0 && --depth == 0) {
            values.push_back(inKept.substr(begin, i - begin));
        }
    }
    return values;
}

} // namespace keptText

/// @param inLocalisedText  "$$$/Key=English default @0".
/// @param inValues  UTF-8; kept texts or words that are the same in every language.
inline std::string KeptText(std::string_view inLocalisedText, const std::vector<std::string>& inValues = {})
{
    std::string kept(inLocalisedText);
    for (const std::string& value : inValues) {
        kept += keptText::kValueBegin;
        if (value.starts_with(keptText::kKeyMark)) {
            kept += value;
        } else {
            for (char letter : value) {
                kept += letter == keptText::kValueBegin || letter == keptText::kValueEnd ? '?' : letter;
            }
        }
        kept += keptText::kValueEnd;
    }
    return kept;
}

/// What a kept text says in the language of the process; any other text says itself.
inline std::string ToldText(std::string_view inKept)
{
    using kiocore::config::Localizer;
    if (!inKept.starts_with(keptText::kKeyMark)) {
        return std::string(inKept);
    }
    std::vector<kiocore::UTF16String> values;
    for (std::string_view value : keptText::ValuesOf(inKept)) {
        values.push_back(kiocore::utility::ToUTF16(ToldText(value)));
    }
    const std::string_view text = inKept.substr(0, inKept.find(keptText::kValueBegin));
    return kiocore::utility::ToUTF8(Localizer::Format(Localizer::GetText(text), values));
}

} // namespace trhost
