#pragma once

#include <cstdint>

namespace kiomediatypes {

/// How much work a picture is worth. Scaling filters: draft = box down, triangle (bilinear) up; medium =
/// bicubic (Catmull-Rom, b = 0, c = 0.5); high = Lanczos with three lobes.
enum RenderQuality : std::int32_t {
    kRenderQuality_Any = -1,
    kRenderQuality_Draft = 0,
    kRenderQuality_Medium = 1,
    kRenderQuality_High = 2,
};

} // namespace kiomediatypes
