#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace kiocore::filesupport {

/// Between the host's 16-bit paths and the bytes that the system wants. File names on Linux are bytes of
/// any kind: a byte that is no UTF-8 becomes the lone surrogate U+DC80 to U+DCFF and comes back as that
/// byte, so every file that a folder search finds can be opened. Other lone surrogates, which no file
/// name can have come from, become U+FFFD.
///
/// Threading: any thread.
KIO_EXPORT std::string ToNative(utility::UTF16View inPath);
KIO_EXPORT void ToNative(utility::UTF16View inPath, std::string& ioNative);
KIO_EXPORT utility::UTF16String FromNative(std::string_view inNative);
KIO_EXPORT void FromNative(std::string_view inNative, utility::UTF16String& ioPath);
/// Adds the converted bytes at the end of ioPath. Pieces that meet at a separator may be converted one by
/// one.
KIO_EXPORT void AppendFromNative(std::string_view inNative, utility::UTF16String& ioPath);

/// The native form for one system call: on the stack for paths of usual length, and no allocation then.
/// A path with a zero unit in it names no file: CString() is then a name that cannot exist ("").
class KIO_EXPORT NativePath {
public:
    explicit NativePath(utility::UTF16View inPath);
    NativePath(const NativePath&) = delete;
    NativePath& operator=(const NativePath&) = delete;
    const char* CString() const noexcept { return mText; }
    std::string_view View() const noexcept { return {mText, mSize}; }

private:
    static constexpr std::size_t kStackBytes = 512;
    char mStack[kStackBytes];
    std::string mLong;
    const char* mText;
    std::size_t mSize;
};

} // namespace kiocore::filesupport
