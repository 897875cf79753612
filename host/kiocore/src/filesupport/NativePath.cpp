#include <kiocore/filesupport/NativePath.h>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>

namespace kiocore::filesupport {
namespace {

using utility::UTF16String;
using utility::UTF16View;

// Three bytes a unit is the most there can be; a surrogate pair takes four for its two.
constexpr std::size_t kMostBytesPerUnit = 3;
// Byte b of a name that is no UTF-8 is the unit kEscape + b.
constexpr char16_t kEscape = 0xDC00;
// A fixed count lets the compiler use vector registers without having to know the length.
constexpr std::size_t kBlock = 16;

/// @return false when a unit is not ASCII; the output is worthless then.
bool NarrowASCII(UTF16View inText, char* outBytes)
{
    const char16_t* in = inText.data();
    const std::size_t size = inText.size();
    char16_t seen = 0;
    std::size_t i = 0;
    for (; i + kBlock <= size; i += kBlock) {
        for (std::size_t k = 0; k < kBlock; ++k) {
            seen |= in[i + k];
            outBytes[i + k] = static_cast<char>(in[i + k]);
        }
    }
    for (; i < size; ++i) {
        seen |= in[i];
        outBytes[i] = static_cast<char>(in[i]);
    }
    return seen < 0x80;
}

bool WidenASCII(std::string_view inBytes, char16_t* outUnits)
{
    const char* in = inBytes.data();
    const std::size_t size = inBytes.size();
    unsigned char seen = 0;
    std::size_t i = 0;
    for (; i + kBlock <= size; i += kBlock) {
        for (std::size_t k = 0; k < kBlock; ++k) {
            const auto byte = static_cast<unsigned char>(in[i + k]);
            seen |= byte;
            outUnits[i + k] = byte;
        }
    }
    for (; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(in[i]);
        seen |= byte;
        outUnits[i] = byte;
    }
    return seen < 0x80;
}

/// @return the number of bytes written, kMostBytesPerUnit a unit at the most.
std::size_t Encode(UTF16View inText, char* outBytes)
{
    auto* out = reinterpret_cast<std::uint8_t*>(outBytes);
    std::size_t written = 0;
    for (std::size_t i = 0; i < inText.size();) {
        UChar32 point;
        U16_NEXT(inText, i, inText.size(), point);
        if (point >= kEscape + 0x80 && point <= kEscape + 0xFF) {
            out[written++] = static_cast<std::uint8_t>(point - kEscape);
            continue;
        }
        if (U_IS_SURROGATE(point)) {
            point = 0xFFFD;
        }
        U8_APPEND_UNSAFE(out, written, point);
    }
    return written;
}

/// @return the number of units written, one a byte at the most.
std::size_t Decode(std::string_view inBytes, char16_t* outUnits)
{
    const auto* in = reinterpret_cast<const std::uint8_t*>(inBytes.data());
    const auto size = static_cast<std::int64_t>(inBytes.size());
    std::size_t written = 0;
    for (std::int64_t i = 0; i < size;) {
        std::int64_t start = i;
        UChar32 point;
        U8_NEXT(in, i, size, point);
        if (point < 0) {
            for (; start < i; ++start) {
                outUnits[written++] = static_cast<char16_t>(kEscape + in[start]);
            }
        } else if (point > 0xFFFF) {
            outUnits[written++] = U16_LEAD(point);
            outUnits[written++] = U16_TRAIL(point);
        } else {
            outUnits[written++] = static_cast<char16_t>(point);
        }
    }
    return written;
}

} // namespace

void ToNative(UTF16View inPath, std::string& ioNative)
{
    ioNative.resize(inPath.size());
    if (!NarrowASCII(inPath, ioNative.data())) {
        ioNative.resize(inPath.size() * kMostBytesPerUnit);
        ioNative.resize(Encode(inPath, ioNative.data()));
    }
}

std::string ToNative(UTF16View inPath)
{
    std::string native;
    ToNative(inPath, native);
    return native;
}

void AppendFromNative(std::string_view inNative, UTF16String& ioPath)
{
    const std::size_t before = ioPath.size();
    ioPath.resize(before + inNative.size());
    if (!WidenASCII(inNative, ioPath.data() + before)) {
        ioPath.resize(before + Decode(inNative, ioPath.data() + before));
    }
}

void FromNative(std::string_view inNative, UTF16String& ioPath)
{
    ioPath.clear();
    AppendFromNative(inNative, ioPath);
}

UTF16String FromNative(std::string_view inNative)
{
    UTF16String path;
    AppendFromNative(inNative, path);
    return path;
}

NativePath::NativePath(UTF16View inPath) : mText(mStack), mSize(inPath.size())
{
    const bool fits = inPath.size() < kStackBytes;
    if (!fits || !NarrowASCII(inPath, mStack)) {
        if (inPath.size() * kMostBytesPerUnit < kStackBytes) {
            mSize = Encode(inPath, mStack);
        } else {
            ToNative(inPath, mLong);
            mText = mLong.c_str();
            mSize = mLong.size();
        }
    }
    if (mText == mStack) {
        mStack[mSize] = 0;
    }
    if (std::memchr(mText, 0, mSize)) {
        mText = "";
        mSize = 0;
    }
}

} // namespace kiocore::filesupport
