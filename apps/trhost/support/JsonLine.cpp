#include "JsonLine.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace trhost {

namespace {

void AppendEscape(std::string& ioText, char16_t inUnit)
{
    char escape[8];
    std::snprintf(escape, sizeof(escape), "\\u%04x", unsigned(inUnit));
    ioText += escape;
}

bool IsHighSurrogate(char16_t inUnit)
{
    return inUnit >= 0xD800 && inUnit < 0xDC00;
}
bool IsLowSurrogate(char16_t inUnit)
{
    return inUnit >= 0xDC00 && inUnit < 0xE000;
}

void AppendUTF8(std::string& ioText, char32_t inCodePoint)
{
    if (inCodePoint < 0x80) {
        ioText += char(inCodePoint);
    } else if (inCodePoint < 0x800) {
        ioText += char(0xC0 | (inCodePoint >> 6));
        ioText += char(0x80 | (inCodePoint & 0x3F));
    } else if (inCodePoint < 0x10000) {
        ioText += char(0xE0 | (inCodePoint >> 12));
        ioText += char(0x80 | ((inCodePoint >> 6) & 0x3F));
        ioText += char(0x80 | (inCodePoint & 0x3F));
    } else {
        ioText += char(0xF0 | (inCodePoint >> 18));
        ioText += char(0x80 | ((inCodePoint >> 12) & 0x3F));
        ioText += char(0x80 | ((inCodePoint >> 6) & 0x3F));
        ioText += char(0x80 | (inCodePoint & 0x3F));
    }
}

} // namespace

std::string JsonQuote(kiocore::UTF16View inText)
{
    std::string quoted = "\"";
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const char16_t unit = inText[i];
        if (unit == u'"' || unit == u'\\') {
            quoted += '\\';
            quoted += char(unit);
        } else if (unit == u'\n') {
            quoted += "\\n";
        } else if (unit == u'\t') {
            quoted += "\\t";
        } else if (unit == u'\r') {
            quoted += "\\r";
        } else if (unit < 0x20 || unit == 0x7F) {
            AppendEscape(quoted, unit);
        } else if (IsHighSurrogate(unit) && i + 1 < inText.size() && IsLowSurrogate(inText[i + 1])) {
            AppendUTF8(quoted,
                       0x10000 + ((char32_t(unit) - 0xD800) << 10) + (char32_t(inText[++i]) - 0xDC00));
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            AppendEscape(quoted, unit);
        } else {
            AppendUTF8(quoted, unit);
        }
    }
    quoted += '"';
    return quoted;
}

JsonLine& JsonLine::AddRaw(std::string_view inName, std::string_view inJson)
{
    if (!mBody.empty()) {
        mBody += ',';
    }
    mBody += JsonQuote(kiocore::utility::ToUTF16(inName));
    mBody += ':';
    mBody += inJson;
    return *this;
}

JsonLine& JsonLine::Add(std::string_view inName, kiocore::UTF16View inValue)
{
    return AddRaw(inName, JsonQuote(inValue));
}

JsonLine& JsonLine::Add(std::string_view inName, std::string_view inUTF8)
{
    return AddRaw(inName, JsonQuote(kiocore::utility::ToUTF16(inUTF8)));
}

JsonLine& JsonLine::Add(std::string_view inName, bool inValue)
{
    return AddRaw(inName, inValue ? "true" : "false");
}

JsonLine& JsonLine::Add(std::string_view inName, double inValue)
{
    if (!std::isfinite(inValue)) {
        return AddRaw(inName, "null");
    }
    std::array<char, 32> digits; // the shortest form that reads back as the same number
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), inValue).ptr;
    return AddRaw(inName, std::string_view(digits.data(), std::size_t(end - digits.data())));
}

JsonLine& JsonLine::Add(std::string_view inName, const std::vector<JsonLine>& inObjects)
{
    std::string list = "[";
    for (const JsonLine& object : inObjects) {
        if (list.size() > 1) {
            list += ',';
        }
        list += object.GetText();
    }
    return AddRaw(inName, list + "]");
}

JsonLine& JsonLine::Add(std::string_view inName, const JsonLine& inObject)
{
    return AddRaw(inName, inObject.GetText());
}

JsonLine& JsonLine::Add(std::string_view inName, const std::vector<kiocore::UTF16String>& inTexts)
{
    std::string list = "[";
    for (const kiocore::UTF16String& text : inTexts) {
        if (list.size() > 1) {
            list += ',';
        }
        list += JsonQuote(text);
    }
    return AddRaw(inName, list + "]");
}

} // namespace trhost
