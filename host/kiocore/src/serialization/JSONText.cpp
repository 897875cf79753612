#include "JSONText.h"

#include <kiocore/serialization/JSON.h>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace kiocore::serialization {
namespace {

constexpr std::size_t kQuotedBytes = 40;

/// A surrogate in its three-byte form at a place, or 0.
char16_t SurrogateAt(std::string_view inText, std::size_t inAt)
{
    if (inText.size() - inAt < 3 || inText[inAt] != '\xED') {
        return 0;
    }
    const auto second = static_cast<unsigned char>(inText[inAt + 1]);
    const auto third = static_cast<unsigned char>(inText[inAt + 2]);
    if (second < 0xA0 || second > 0xBF || third < 0x80 || third > 0xBF) {
        return 0;
    }
    return static_cast<char16_t>(0xD000 | ((second & 0x3F) << 6) | (third & 0x3F));
}

} // namespace

std::size_t FindBadUTF8(std::string_view inText, Surrogates inSurrogates)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(inText.data());
    const std::size_t size = inText.size();
    char16_t before = 0; // the surrogate just passed
    for (std::size_t i = 0; i < size;) {
        if (bytes[i] < 0x80) {
            ++i;
            before = 0;
            continue;
        }
        const std::size_t start = i;
        UChar32 point;
        U8_NEXT(bytes, i, size, point);
        if (point >= 0) {
            before = 0;
            continue;
        }
        const char16_t surrogate =
            inSurrogates == Surrogates::kAcceptLone ? SurrogateAt(inText, start) : u'\0';
        if (!surrogate || (U16_IS_LEAD(before) && U16_IS_TRAIL(surrogate))) {
            return start;
        }
        before = surrogate;
        i = start + 3;
    }
    return std::string_view::npos;
}

std::string Quoted(std::string_view inText)
{
    std::size_t size = std::min(inText.size(), kQuotedBytes);
    while (size < inText.size() && size > 0 && (static_cast<unsigned char>(inText[size]) & 0xC0) == 0x80) {
        --size; // not through the middle of a character
    }
    std::string quoted = "\"";
    for (char letter : inText.substr(0, size)) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte < 0x20 || byte == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\x%02x", unsigned(byte));
            quoted += escape;
        } else {
            quoted += letter;
        }
    }
    return quoted + (size < inText.size() ? "...\"" : "\"");
}

std::string TextFromUTF16(utility::UTF16View inText)
{
    if (utility::IsASCII(inText)) {
        return {inText.begin(), inText.end()};
    }
    std::string text(inText.size() * 3, '\0');
    auto* out = reinterpret_cast<std::uint8_t*>(text.data());
    std::size_t written = 0;
    for (std::size_t i = 0; i < inText.size();) {
        UChar32 point; // a lone surrogate comes as itself, and is written in three bytes
        U16_NEXT(inText, i, inText.size(), point);
        U8_APPEND_UNSAFE(out, written, point);
    }
    text.resize(written);
    return text;
}

utility::UTF16String TextToUTF16(std::string_view inText)
{
    utility::UTF16String text;
    std::size_t done = 0;
    for (std::size_t at = inText.find('\xED'); at != std::string_view::npos;
         at = inText.find('\xED', at + 1)) {
        if (const char16_t surrogate = SurrogateAt(inText, at)) {
            text += utility::ToUTF16(inText.substr(done, at - done));
            text += surrogate;
            done = at + 3;
        }
    }
    return text.empty() ? utility::ToUTF16(inText) : text + utility::ToUTF16(inText.substr(done));
}

} // namespace kiocore::serialization
