#pragma once

#include "VideoEffectBase.h"

namespace trhost::effects::avfilter {

/// A filter of one picture after the other, or a source of pictures. One graph lasts as long as the instance,
/// as filters remember earlier pictures.
///
/// Filters that give several pictures for one (frame rate converters, deinterlacers by field) give the first;
/// the others are dropped. A source begins with the first Render, whatever its time, and later ones get the
/// picture as many frames on as have passed; all between are made and dropped.
class StreamEffect final : public VideoEffectBase {
public:
    using VideoEffectBase::VideoEffectBase;
    ~StreamEffect() override;

    MF::IVideoFrameRef Render(const std::vector<MF::IVideoFrameRef>& inInputs, kiomediatypes::TickTime inTime,
                              double inPosition) override;

private:
    MF::IVideoFrameRef Filter(const MF::IVideoFrameRef& inInput, kiomediatypes::TickTime inTime);
    MF::IVideoFrameRef Generate(kiomediatypes::TickTime inTime);

    std::unique_ptr<FilterGraph> mGraph;
    std::optional<std::int64_t> mLastTime; // of an input, in units of the graph
    kiomediatypes::TickTime mStart;        // of a source
    std::int64_t mMade = 0;                // pictures of a source
    FramePtr mMadeLast;
};

} // namespace trhost::effects::avfilter
