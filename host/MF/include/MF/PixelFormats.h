#pragma once

#include <kiocore/Export.h>
#include <kiomediatypes/PixelFormat.h>

#include <cstdint>

namespace MF {

/// The pixel format that files and plug-ins know by a four-character code ("BGRA" is 0x41524742).
/// @return kPixelFormat_Any for a code that stands for none of our formats.
KIO_EXPORT kiomediatypes::PixelFormat SDKToBEPixelFormat(std::uint32_t inCode);

} // namespace MF
