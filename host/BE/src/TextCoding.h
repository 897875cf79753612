#pragma once

#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace BE {

using kiocore::UTF16String;
using kiocore::UTF16View;

/// How texts stand in the attributes of our XML files; docs/record-format.md describes it for people.
/// Two layers: units that XML cannot carry are written as \uXXXX with the backslash doubled, and around
/// that lie XML's own predefined escapes.
///
/// Threading: any thread.

void AppendEncoded(std::string& ioBytes, UTF16View inText);
/// The same for UTF-8, as keys are.
void AppendEncoded(std::string& ioBytes, std::string_view inTextUTF8);

/// @param inStored  an attribute's value as it stands in the file; bytes that CheckBytes has accepted.
/// @return null, or what is wrong; outText is untouched then.
const char* DecodeText(std::string_view inStored, UTF16String& outText);

/// Whether a text stands for itself in both layers.
bool IsPlain(std::string_view inStored);

/// The length of a zero-terminated text, and whether it stands for itself in both layers.
struct Measured {
    std::size_t size;
    bool plain;
};
Measured Measure(const char* inStored);

/// Looks for what no XML file may hold: bytes that are not UTF-8, and control bytes.
/// @return empty when all is well, or what was found where.
std::string CheckBytes(std::string_view inBytes);

} // namespace BE
