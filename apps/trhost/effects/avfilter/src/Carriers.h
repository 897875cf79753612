#pragma once

#include "AvfilterSupport.h"

#include <kiomediatypes/PixelFormat.h>

#include <span>

namespace trhost::effects::avfilter {

/// A format of libavfilter that holds the very numbers of one of ours, perhaps arranged otherwise (planes
/// instead of pixels, red before blue), so that nothing is computed on the way there and back. A filter that
/// takes a carrier takes our format as it is. libavutil has no packed pixels of four floats and no 'v210':
/// without carriers no filter would ever work in them.
struct Carrier {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    /// Alpha goes through the filter. Where not (and ours has it), it goes round it, see FrameTransfer.
    bool hasAlpha = false;
};

/// The carriers of one of our formats, those that cost least and keep most first.
std::span<const Carrier> CarriersOf(kiomediatypes::PixelFormat inFormat);

/// Our formats in the order in which descriptions list them: 8 bits of RGB first, being what most pictures
/// are and what filters are fastest in; of YUV the deepest first.
std::span<const kiomediatypes::PixelFormat> FormatsByPreference();

} // namespace trhost::effects::avfilter
