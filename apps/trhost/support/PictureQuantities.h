#pragma once

#include <kiomediatypes/PixelAspectRatio.h>
#include <kiomediatypes/RenderQuality.h>
#include <kiomediatypes/TickTime.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace trhost {

struct PictureSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};
/// "1920x1080". Empty when it is no size that a frame can have.
std::optional<PictureSize> ParsePictureSize(std::string_view inText);

/// "16:15". Empty when it is none, or a side is 0.
std::optional<kiomediatypes::PixelAspectRatio> ParsePixelAspectRatio(std::string_view inText);

/// "draft", "medium", "high".
std::optional<kiomediatypes::RenderQuality> ParseRenderQuality(std::string_view inText);

/// How much channels may differ, of full scale: "0.01", "1%", "2/255". Empty when it is no part from 0 to 1.
/// Never less than what was said, so that a difference of just as much is within it.
std::optional<float> ParseTolerance(std::string_view inText);

/// A place in media: a time from its start, or a frame of the rate that it has.
struct MediaTime {
    kiomediatypes::TickTime time = kiomediatypes::TickTime::Zero();
    std::optional<std::int64_t> frame; ///< counted from 0; the time says nothing then

    friend bool operator==(const MediaTime&, const MediaTime&) = default;
};
/// "1.5s", "1500ms", "2m", "00:00:01.5", "1:30", "36f"; numbers without a unit are seconds. Decimal fractions
/// are taken exactly. Empty when it is no time, or lies before the start.
std::optional<MediaTime> ParseMediaTime(std::string_view inText);

} // namespace trhost
