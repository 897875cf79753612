#pragma once

#include <kiocore/Export.h>

#include <string>
#include <string_view>

namespace kiocore::utility {

/// The host's text: 16-bit code units, not necessarily valid UTF-16. Used for every path and every
/// user-visible text. Ordered by plain comparison of code units.
using UTF16String = std::u16string;
using UTF16View = std::u16string_view;

/// UTF-8 of a text. A lone surrogate has no UTF-8 form and becomes U+FFFD.
KIO_EXPORT std::string ToUTF8(UTF16View inText);
/// The same, replacing the contents of ioText; no allocation once ioText is large enough.
KIO_EXPORT void ToUTF8(UTF16View inText, std::string& ioText);

/// UTF-16 of UTF-8 bytes. Each ill-formed sequence becomes one U+FFFD.
KIO_EXPORT UTF16String ToUTF16(std::string_view inText);
/// The same, replacing the contents of ioText; no allocation once ioText is large enough.
KIO_EXPORT void ToUTF16(std::string_view inText, UTF16String& ioText);

/// True when every unit is below 0x80, so that the 8-bit form is a plain narrowing.
KIO_EXPORT bool IsASCII(UTF16View inText);

/// Appends a number in decimal digits, without sign for zero and above, without padding.
KIO_EXPORT void AppendDecimal(UTF16String& ioText, unsigned long long inNumber);
/// "0", "17", ...
KIO_EXPORT UTF16String DecimalText(unsigned long long inNumber);

} // namespace kiocore::utility

namespace kiocore {
using utility::UTF16String;
using utility::UTF16View;
} // namespace kiocore
