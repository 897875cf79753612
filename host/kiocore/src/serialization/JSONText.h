#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kiocore::serialization {

enum class Surrogates {
    kRefuse,
    kAcceptLone, ///< in their three-byte form; two that would be one character together stay refused
};

/// Where the first ill-formed byte of UTF-8 stands; npos when there is none.
std::size_t FindBadUTF8(std::string_view inText, Surrogates inSurrogates);

/// The beginning of a text in quotes, for a message.
std::string Quoted(std::string_view inText);

} // namespace kiocore::serialization
