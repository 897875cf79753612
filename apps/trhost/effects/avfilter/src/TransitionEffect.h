#pragma once

#include "VideoEffectBase.h"

namespace trhost::effects::avfilter {

/// A filter of two inputs, led by the position. Each picture gets a graph of its own, so that it depends on
/// nothing but its two inputs, the parameters and the position.
///   xfade    lasts one second and begins so long ago that it is now at the position.
///   blend    in its mode "normal" mixes by the position; other modes have no end that is all of the second
///            picture, so the way leads from the first to the result in the middle, and on to the second.
///            Alpha always goes from one to the other.
///   mix      weights 1 - position and position.
///   overlay  lays the second picture over the first, its alpha weakened to the position.
class TransitionEffect final : public VideoEffectBase {
public:
    using VideoEffectBase::VideoEffectBase;

    MF::IVideoFrameRef Render(const std::vector<MF::IVideoFrameRef>& inInputs, kiomediatypes::TickTime inTime,
                              double inPosition) override;

private:
    /// How a position is expressed.
    struct Plan {
        Settings settings;
        bool isSwapped = false;
        std::optional<double> secondAlpha;
    };
    Plan PlanFor(double inPosition) const;
    Plan PlanForBlend(double inPosition) const;
    /// Those of the user, for blend, without what they say of alpha.
    Settings ColorSettings() const;
};

} // namespace trhost::effects::avfilter
