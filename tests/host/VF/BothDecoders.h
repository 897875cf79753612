#pragma once

#include <png/ByteSource.h>

#include <string>
#include <string_view>
#include <vector>

namespace support {

/// What a decoder makes of a file.
struct Decoded {
    bool isTaken = false;
    std::string reason;            // what libpng says
    std::vector<std::byte> pixels; // of all rows, without what pads them
};
/// A header that nobody can take is taken by neither.
Decoded DecodeWithLibpng(std::string_view inFile);
Decoded DecodeFast(std::string_view inFile);
Decoded DecodeFast(VF::IByteSource& inSource);

} // namespace support
