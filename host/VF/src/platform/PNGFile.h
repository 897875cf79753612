#pragma once

#include <kiocore/utility/MemoryRecycler.h>
#include <kiocore/utility/UTF16String.h>

#include <string>

namespace VF::platform {

/// Reads a regular file whose first bytes are those of a PNG; of any other only these are read, so that a
/// wrong guess at a large file costs nothing. Never waits for the writer of a pipe.
/// @param outBytes  set when the result is empty.
/// @return empty, or why it could not be read.
std::string ReadPNGFile(kiocore::UTF16View inPath, kiocore::utility::SharedRecycledMemory& outBytes);

} // namespace VF::platform
