#include <kiocore/utility/UTF16String.h>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <charconv>
#include <cstdint>

namespace kiocore::utility {

bool IsASCII(UTF16View inText)
{
    char16_t seen = 0;
    for (char16_t unit : inText) {
        seen |= unit;
    }
    return seen < 0x80;
}

void ToUTF8(UTF16View inText, std::string& ioText)
{
    if (IsASCII(inText)) {
        ioText.resize(inText.size());
        for (std::size_t i = 0; i < inText.size(); ++i) {
            ioText[i] = static_cast<char>(inText[i]);
        }
        return;
    }
    // Three bytes a unit is the most there can be; a surrogate pair takes four for its two.
    ioText.resize(inText.size() * 3);
    auto* out = reinterpret_cast<std::uint8_t*>(ioText.data());
    std::size_t written = 0;
    for (std::size_t i = 0; i < inText.size();) {
        UChar32 point;
        U16_NEXT(inText, i, inText.size(), point);
        if (U_IS_SURROGATE(point)) {
            point = 0xFFFD;
        }
        U8_APPEND_UNSAFE(out, written, point);
    }
    ioText.resize(written);
}

std::string ToUTF8(UTF16View inText)
{
    std::string text;
    ToUTF8(inText, text);
    return text;
}

void ToUTF16(std::string_view inText, UTF16String& ioText)
{
    ioText.resize(inText.size());
    unsigned char seen = 0;
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const auto byte = static_cast<unsigned char>(inText[i]);
        seen |= byte;
        ioText[i] = byte;
    }
    if (seen < 0x80) {
        return;
    }
    const auto* in = reinterpret_cast<const std::uint8_t*>(inText.data());
    const auto length = static_cast<std::int64_t>(inText.size());
    std::size_t written = 0;
    for (std::int64_t i = 0; i < length;) {
        UChar32 point;
        U8_NEXT_OR_FFFD(in, i, length, point);
        // Never more units than bytes, so what has been read is all that is overwritten.
        if (point > 0xFFFF) {
            ioText[written++] = U16_LEAD(point);
            ioText[written++] = U16_TRAIL(point);
        } else {
            ioText[written++] = static_cast<char16_t>(point);
        }
    }
    ioText.resize(written);
}

UTF16String ToUTF16(std::string_view inText)
{
    UTF16String text;
    ToUTF16(inText, text);
    return text;
}

void AppendDecimal(UTF16String& ioText, unsigned long long inNumber)
{
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof(digits), inNumber).ptr;
    ioText.append(digits, end);
}

UTF16String DecimalText(unsigned long long inNumber)
{
    UTF16String text;
    AppendDecimal(text, inNumber);
    return text;
}

} // namespace kiocore::utility
