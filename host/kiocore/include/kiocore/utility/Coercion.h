#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace kiocore::utility {

/// Converts a text to a value as far as its beginning allows: Coercion<int>("13.5") is 13.
/// @throws kio_exception (kError_BadConversion) naming the text when its beginning is no such value, or
///     is out of range.
template <typename T>
T Coercion(const UTF16String& inText) = delete;

template <>
KIO_EXPORT int Coercion<int>(const UTF16String& inText);
template <>
KIO_EXPORT double Coercion<double>(const UTF16String& inText);

} // namespace kiocore::utility
