#pragma once

#include "PNGSource.h"

#include <kiocore/utility/MemoryRecycler.h>

#include <string>

namespace VF {

/// Whether all pixels of the rows in use are.
bool IsOpaque(const PNGSource& inSource);

/// Encodes any picture.
/// @param inLevel    0 to 9.
/// @param outBytes   set when the result is empty.
/// @return empty, or why it failed. @throws std::bad_alloc.
std::string EncodePNG(const PNGSource& inSource, int inLevel,
                      kiocore::utility::SharedRecycledMemory& outBytes);

} // namespace VF
