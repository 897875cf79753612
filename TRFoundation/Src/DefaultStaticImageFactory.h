#pragma once

#include <TR/StaticImageFactory.h>

namespace TR {

/// The default loader: reads an image from the library's own resources. One at a time.
/// @return empty for an image without a resource, and when it cannot be read or decoded.
///
/// Threading: any thread.
MF::IVideoFrameRef LoadTRStaticImageAtNaturalSize(int inImage);

} // namespace TR
