#pragma once

#include <kiocore/utility/UTF16String.h>

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace trhost {

/// One JSON object, built in the order of the calls and written on one line.
///
/// Texts keep what they hold: a lone surrogate (a byte of a file name that is no UTF-8) is written as its
/// \uXXXX escape, control characters as escapes too.
///
/// Threading: one thread at a time.
class JsonLine {
public:
    JsonLine& Add(std::string_view inName, kiocore::UTF16View inValue);
    JsonLine& Add(std::string_view inName, const kiocore::UTF16String& inValue)
    {
        return Add(inName, kiocore::UTF16View(inValue));
    }
    JsonLine& Add(std::string_view inName, std::string_view inUTF8);
    JsonLine& Add(std::string_view inName, const std::string& inUTF8)
    {
        return Add(inName, std::string_view(inUTF8));
    }
    JsonLine& Add(std::string_view inName, const char* inUTF8)
    {
        return Add(inName, std::string_view(inUTF8));
    }
    JsonLine& Add(std::string_view inName, bool inValue);
    /// Not finite numbers, which JSON has no form for, are written as null.
    JsonLine& Add(std::string_view inName, double inValue);
    template <std::integral T>
    JsonLine& Add(std::string_view inName, T inValue)
    {
        return AddRaw(inName, std::to_string(inValue));
    }
    JsonLine& Add(std::string_view inName, const std::vector<JsonLine>& inObjects);
    JsonLine& Add(std::string_view inName, const JsonLine& inObject);
    JsonLine& Add(std::string_view inName, const std::vector<kiocore::UTF16String>& inTexts);

    /// "{...}", without a line feed.
    std::string GetText() const { return "{" + mBody + "}"; }

private:
    JsonLine& AddRaw(std::string_view inName, std::string_view inJson);

    std::string mBody;
};

/// The text in quotes, as JSON writes it.
std::string JsonQuote(kiocore::UTF16View inText);

} // namespace trhost
