#include "TextCoding.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace BE {
namespace {

/// Loops of a fixed count are turned into vector instructions.
constexpr std::size_t kBlock = 16;

constexpr std::uint64_t Repeat(unsigned char inByte)
{
    return 0x0101010101010101ull * inByte;
}

// The usual carry tricks: not 0 exactly when one of the eight bytes is zero, or below a limit of at most 128.
constexpr std::uint64_t AnyZero(std::uint64_t inWord)
{
    return (inWord - Repeat(1)) & ~inWord & Repeat(0x80);
}
constexpr std::uint64_t AnyBelow(std::uint64_t inWord, unsigned char inLimit)
{
    return (inWord - Repeat(inLimit)) & ~inWord & Repeat(0x80);
}

/// Whether one of eight bytes needs more than widening.
constexpr std::uint64_t AnySpecial(std::uint64_t inWord)
{
    return (inWord & Repeat(0x80)) | AnyBelow(inWord, 0x20) | AnyZero(inWord ^ Repeat('&')) |
           AnyZero(inWord ^ Repeat('<')) | AnyZero(inWord ^ Repeat('\\'));
}

std::uint64_t LoadWord(const char* inBytes)
{
    std::uint64_t word;
    std::memcpy(&word, inBytes, sizeof(word));
    return word;
}

constexpr bool IsSpecialByte(unsigned char inByte)
{
    return inByte < 0x20 || inByte >= 0x80 || inByte == '&' || inByte == '<' || inByte == '\\';
}

constexpr auto kSpecialBytes = [] {
    std::array<bool, 256> special{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        special[byte] = IsSpecialByte(static_cast<unsigned char>(byte));
    }
    return special;
}();

/// Widens plain bytes.
void Widen(const char* inBytes, std::size_t inSize, char16_t* outUnits)
{
    const auto widen = [&](std::size_t inAt) {
        for (std::size_t i = 0; i < kBlock; ++i) {
            outUnits[inAt + i] = static_cast<unsigned char>(inBytes[inAt + i]);
        }
    };
    if (inSize < kBlock) {
        for (std::size_t i = 0; i < inSize; ++i) {
            outUnits[i] = static_cast<unsigned char>(inBytes[i]);
        }
        return;
    }
    for (std::size_t i = 0; i + kBlock < inSize; i += kBlock) {
        widen(i);
    }
    widen(inSize - kBlock); // overlaps what is there already
}

void AppendPoint(UTF16String& ioText, std::uint32_t inPoint)
{
    if (inPoint > 0xFFFF) {
        ioText += static_cast<char16_t>(0xD7C0 + (inPoint >> 10));
        ioText += static_cast<char16_t>(0xDC00 + (inPoint & 0x3FF));
    } else {
        ioText += static_cast<char16_t>(inPoint);
    }
}

/// Appends what a reference such as &amp; or &#x41; stands for.
/// @param ioAt  at the '&'; afterwards behind the ';'.
bool AppendReference(std::string_view inStored, std::size_t& ioAt, UTF16String& ioText)
{
    static constexpr std::size_t kLongest = 12; // "&#x0010FFFF;"
    static constexpr struct {
        std::string_view name;
        char16_t unit;
    } kPredefined[] = {{"amp", u'&'}, {"lt", u'<'}, {"gt", u'>'}, {"quot", u'"'}, {"apos", u'\''}};

    const std::size_t end = inStored.substr(0, ioAt + kLongest).find(';', ioAt);
    if (end == std::string_view::npos) {
        return false;
    }
    std::string_view name = inStored.substr(ioAt + 1, end - ioAt - 1);
    ioAt = end + 1;
    for (const auto& predefined : kPredefined) {
        if (name == predefined.name) {
            ioText += predefined.unit;
            return true;
        }
    }
    if (!name.starts_with('#')) {
        return false;
    }
    name.remove_prefix(1);
    const int base = name.starts_with('x') ? 16 : 10;
    name.remove_prefix(base == 16 ? 1 : 0);
    std::uint32_t point = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), point, base);
    const bool isCharacter = point == 0x9 || point == 0xA || point == 0xD ||
                             (point >= 0x20 && point < 0xD800) || (point >= 0xE000 && point < 0xFFFE) ||
                             (point >= 0x10000 && point <= 0x10FFFF);
    if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size() || !isCharacter) {
        return false;
    }
    AppendPoint(ioText, point);
    return true;
}

/// The outer layer: XML's rules for an attribute's value.
const char* DecodeXML(std::string_view inStored, UTF16String& ioText)
{
    for (std::size_t i = 0; i < inStored.size();) {
        const auto byte = static_cast<unsigned char>(inStored[i]);
        if (byte == '&') {
            if (!AppendReference(inStored, i, ioText)) {
                return "has a '&' that begins none of the five predefined entities and no character "
                       "reference";
            }
        } else if (byte == '<') {
            return "has a '<' that is not escaped";
        } else if (byte < 0x20) {
            // A line end or tab that was not escaped is a space to every XML parser; CR LF is one line end.
            i += byte == '\r' && i + 1 < inStored.size() && inStored[i + 1] == '\n' ? 2 : 1;
            ioText += u' ';
        } else if (byte < 0x80) {
            ioText += byte;
            ++i;
        } else {
            const int more = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
            std::uint32_t point = byte & (0x3F >> more);
            for (int j = 1; j <= more; ++j) {
                point = point << 6 |
                        (static_cast<unsigned char>(inStored[i + static_cast<std::size_t>(j)]) & 0x3F);
            }
            AppendPoint(ioText, point);
            i += 1 + static_cast<std::size_t>(more);
        }
    }
    return nullptr;
}

int HexValue(char16_t inDigit)
{
    if (inDigit >= u'0' && inDigit <= u'9') {
        return inDigit - u'0';
    }
    const char16_t lower = inDigit | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

/// The inner layer, in place: \\ and \uXXXX.
const char* DecodeBackslashes(UTF16String& ioText)
{
    std::size_t out = ioText.find(u'\\');
    if (out == UTF16String::npos) {
        return nullptr;
    }
    for (std::size_t i = out; i < ioText.size();) {
        if (ioText[i] != u'\\') {
            ioText[out++] = ioText[i++];
        } else if (i + 1 < ioText.size() && ioText[i + 1] == u'\\') {
            ioText[out++] = u'\\';
            i += 2;
        } else if (i + 5 < ioText.size() && ioText[i + 1] == u'u') {
            int unit = 0;
            for (std::size_t j = i + 2; j < i + 6; ++j) {
                const int digit = HexValue(ioText[j]);
                if (digit < 0) {
                    return "has a \\u that four hexadecimal digits do not follow";
                }
                unit = unit * 16 + digit;
            }
            ioText[out++] = static_cast<char16_t>(unit);
            i += 6;
        } else {
            return "has a backslash that begins neither \\\\ nor \\uXXXX";
        }
    }
    ioText.resize(out);
    return nullptr;
}

/// What one unit below 0x80 is written as; null for itself.
const char* EscapeOf(char16_t inUnit)
{
    switch (inUnit) {
    case u'&':
        return "&amp;";
    case u'<':
        return "&lt;";
    case u'>':
        return "&gt;";
    case u'"':
        return "&quot;";
    case u'\'':
        return "&apos;";
    case u'\\':
        return "\\\\";
    default:
        return nullptr;
    }
}

constexpr auto kWrittenAsIs = [] {
    std::array<bool, 128> asIs{};
    for (unsigned unit = 0x20; unit < 0x80; ++unit) {
        asIs[unit] = unit != '&' && unit != '<' && unit != '>' && unit != '"' && unit != '\'' && unit != '\\';
    }
    return asIs;
}();

void AppendUnitInHex(std::string& ioBytes, char16_t inUnit)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const char text[] = {'\\',
                         'u',
                         kDigits[inUnit >> 12],
                         kDigits[inUnit >> 8 & 15],
                         kDigits[inUnit >> 4 & 15],
                         kDigits[inUnit & 15]};
    ioBytes.append(text, sizeof(text));
}

void AppendUTF8(std::string& ioBytes, std::uint32_t inPoint)
{
    const auto tail = [&](int inShift) { ioBytes += static_cast<char>(0x80 | (inPoint >> inShift & 0x3F)); };
    if (inPoint < 0x800) {
        ioBytes += static_cast<char>(0xC0 | inPoint >> 6);
    } else {
        if (inPoint < 0x10000) {
            ioBytes += static_cast<char>(0xE0 | inPoint >> 12);
        } else {
            ioBytes += static_cast<char>(0xF0 | inPoint >> 18);
            tail(12);
        }
        tail(6);
    }
    tail(0);
}

void AppendEncodedSlowly(std::string& ioBytes, UTF16View inText)
{
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const char16_t unit = inText[i];
        if (unit < 0x80) {
            if (kWrittenAsIs[unit]) {
                ioBytes += static_cast<char>(unit);
            } else if (const char* escape = EscapeOf(unit)) {
                ioBytes += escape;
            } else {
                AppendUnitInHex(ioBytes, unit);
            }
        } else if (unit < 0xD800 || (unit > 0xDFFF && unit < 0xFFFE)) {
            AppendUTF8(ioBytes, unit);
        } else if (unit < 0xDC00 && i + 1 < inText.size() && inText[i + 1] >= 0xDC00 &&
                   inText[i + 1] <= 0xDFFF) {
            AppendUTF8(ioBytes, 0x10000 + ((unit - 0xD800u) << 10) + (inText[i + 1] - 0xDC00u));
            ++i;
        } else {
            AppendUnitInHex(ioBytes, unit);
        }
    }
}

/// Bytes of the well-formed sequence at the beginning, 0 when there is none.
std::size_t SequenceLength(std::string_view inBytes)
{
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(inBytes[i]); };
    const auto tails = [&](std::size_t inLength) {
        if (inBytes.size() < inLength) {
            return false;
        }
        for (std::size_t i = 1; i < inLength; ++i) {
            if ((byteAt(i) & 0xC0) != 0x80) {
                return false;
            }
        }
        return true;
    };
    const unsigned first = byteAt(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        return tails(2) ? 2 : 0;
    }
    if (first >= 0xE0 && first < 0xF0 && tails(3)) {
        const unsigned second = byteAt(1);
        const bool overlong = first == 0xE0 && second < 0xA0;
        const bool surrogate = first == 0xED && second >= 0xA0;
        return overlong || surrogate ? 0 : 3;
    }
    if (first >= 0xF0 && first < 0xF5 && tails(4)) {
        const unsigned second = byteAt(1);
        const bool overlong = first == 0xF0 && second < 0x90;
        const bool tooLarge = first == 0xF4 && second >= 0x90;
        return overlong || tooLarge ? 0 : 4;
    }
    return 0;
}

constexpr std::size_t kCheckedBlock = 64;

/// Whether a block is ASCII without controls but line feeds, which every line has.
bool IsPlainBlock(const char* inBytes)
{
    signed char wrong = 0;
    for (std::size_t i = 0; i < kCheckedBlock; ++i) {
        const auto byte = static_cast<signed char>(inBytes[i]); // below zero what is no ASCII
        wrong |= static_cast<signed char>((byte < 0x20) & (byte != '\n'));
    }
    return wrong == 0;
}

std::string ByteAt(std::string_view inBytes, std::size_t inAt)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(inBytes[inAt]);
    return std::string("byte 0x") + kDigits[byte >> 4] + kDigits[byte & 15] + " at offset " +
           std::to_string(inAt);
}

} // namespace

void AppendEncoded(std::string& ioBytes, UTF16View inText)
{
    const std::size_t start = ioBytes.size();
    ioBytes.resize(start + inText.size());
    char* const out = ioBytes.data() + start;
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const char16_t unit = inText[i];
        if (unit >= 0x80 || !kWrittenAsIs[unit]) {
            ioBytes.resize(start + i);
            AppendEncodedSlowly(ioBytes, inText.substr(i));
            return;
        }
        out[i] = static_cast<char>(unit);
    }
}

void AppendEncoded(std::string& ioBytes, std::string_view inTextUTF8)
{
    for (char unit : inTextUTF8) {
        const auto byte = static_cast<unsigned char>(unit);
        if (byte >= 0x80 || !kWrittenAsIs[byte]) {
            AppendEncodedSlowly(ioBytes, kiocore::utility::ToUTF16(inTextUTF8));
            return;
        }
    }
    ioBytes += inTextUTF8;
}

bool IsPlain(std::string_view inStored)
{
    const char* const bytes = inStored.data();
    const std::size_t size = inStored.size();
    if (size < 8) {
        for (const char byte : inStored) {
            if (kSpecialBytes[static_cast<unsigned char>(byte)]) {
                return false;
            }
        }
        return true;
    }
    // The last block overlaps the one before rather than being gone through byte by byte.
    if (size < kBlock) {
        return !(AnySpecial(LoadWord(bytes)) | AnySpecial(LoadWord(bytes + size - 8)));
    }
    std::array<signed char, kBlock> special{};
    const auto note = [&](const char* inBlock) {
        for (std::size_t i = 0; i < kBlock; ++i) {
            const auto byte = static_cast<signed char>(inBlock[i]); // below zero what is no ASCII
            special[i] |=
                static_cast<signed char>((byte < 0x20) | (byte == '&') | (byte == '<') | (byte == '\\'));
        }
    };
    for (std::size_t i = 0; i + kBlock < size; i += kBlock) {
        note(bytes + i);
    }
    note(bytes + size - kBlock);
    return special == std::array<signed char, kBlock>{};
}

const char* DecodeText(std::string_view inStored, UTF16String& outText)
{
    if (IsPlain(inStored)) {
        outText.resize(inStored.size());
        Widen(inStored.data(), inStored.size(), outText.data());
        return nullptr;
    }
    UTF16String text;
    text.reserve(inStored.size());
    const char* problem = DecodeXML(inStored, text);
    if (!problem) {
        problem = DecodeBackslashes(text);
    }
    if (!problem) {
        outText.assign(text); // not moved: the caller's memory is used again
    }
    return problem;
}

Measured Measure(const char* inStored)
{
    const char* at = inStored;
    while (!kSpecialBytes[static_cast<unsigned char>(*at)]) {
        ++at;
    }
    if (!*at) {
        return {static_cast<std::size_t>(at - inStored), true};
    }
    return {std::strlen(inStored), false};
}

std::string CheckBytes(std::string_view inBytes)
{
    std::size_t nextBlock = 0; // a block that is not plain is gone through byte by byte, once
    for (std::size_t i = 0; i < inBytes.size();) {
        if (i >= nextBlock && i + kCheckedBlock <= inBytes.size()) {
            nextBlock = i + kCheckedBlock;
            if (IsPlainBlock(inBytes.data() + i)) {
                i = nextBlock;
                continue;
            }
        }
        const auto byte = static_cast<unsigned char>(inBytes[i]);
        if (byte >= 0x20 && byte < 0x80) {
            ++i;
            continue;
        }
        if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
            return "has the control " + ByteAt(inBytes, i);
        }
        const std::size_t length = SequenceLength(inBytes.substr(i));
        if (length == 0) {
            return "is not UTF-8: " + ByteAt(inBytes, i);
        }
        i += length;
    }
    return {};
}

} // namespace BE
