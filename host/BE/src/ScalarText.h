#pragma once

#include <BE/Serialization.h>

#include <string>
#include <string_view>

namespace BE {

/// The texts of scalar values and of binary data in our files. All are plain ASCII.

/// Appends the value's text.
void AppendScalar(std::string& ioBytes, const ISerializeableValue& inValue);
/// Sets ioValue; untouched when inText is no such value.
bool ParseScalar(std::string_view inText, ISerializeableValue& ioValue);
/// What ParseScalar accepts, for messages.
const char* FormOf(ValueType inType);

void AppendHex(std::string& ioBytes, const MF::BinaryData& inValue);
/// ioValue is untouched when inText is not pairs of hexadecimal digits.
bool ParseHex(std::string_view inText, MF::BinaryData& ioValue);

} // namespace BE
