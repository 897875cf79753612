#pragma once

#include "PNGSource.h"

#include <kiocore/utility/MemoryRecycler.h>

namespace VF {

/// Encodes an opaque picture fast, fastest where nearly all of it is black.
/// @return false when some pixel is not opaque: it takes the encoder for any picture. @throws std::bad_alloc.
bool EncodeDifferencePNG(const PNGSource& inSource, kiocore::utility::SharedRecycledMemory& outBytes);

} // namespace VF
