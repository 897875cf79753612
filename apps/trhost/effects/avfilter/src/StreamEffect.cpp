#include "StreamEffect.h"

#include "FrameTransfer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace trhost::effects::avfilter {
namespace {

/// A filter that repeats what it has forever would never be done giving.
constexpr int kMostDropped = 16;

std::int64_t InGraphUnits(kiomediatypes::TickTime inTime)
{
    constexpr std::int64_t kTicksPerUnit = kiomediatypes::TickTime::kTicksPerSecond / kGraphTimeBase.den;
    static_assert(kiomediatypes::TickTime::kTicksPerSecond % kGraphTimeBase.den == 0);
    const std::int64_t ticks = inTime.Ticks();
    const std::int64_t units = ticks / kTicksPerUnit;
    const std::int64_t rest = ticks % kTicksPerUnit;
    return units + (rest >= kTicksPerUnit / 2 ? 1 : rest < -kTicksPerUnit / 2 ? -1 : 0);
}

} // namespace

StreamEffect::~StreamEffect()
{
    if (!mGraph) {
        return;
    }
    try {
        std::string problem;
        Call(
            [this] {
                mGraph.reset();
                return 0;
            },
            problem);
    } catch (...) {
        // Nobody to tell: whoever stands around calls has noted what it was.
    }
}

MF::IVideoFrameRef StreamEffect::Render(const std::vector<MF::IVideoFrameRef>& inInputs,
                                        kiomediatypes::TickTime inTime, double)
{
    CheckInputs(inInputs);
    if (!mGraph) {
        mGraph = MakeGraph(UserSettings(), inInputs);
        mStart = inTime;
    }
    return inInputs.empty() ? Generate(inTime) : Filter(inInputs.front(), inTime);
}

MF::IVideoFrameRef StreamEffect::Filter(const MF::IVideoFrameRef& inInput, kiomediatypes::TickTime inTime)
{
    std::int64_t time = InGraphUnits(inTime);
    if (mLastTime) {
        time = std::max(time, *mLastTime + 1); // filters count on times that rise
    }
    mLastTime = time;
    const FramePtr input = ToAVFrame(inInput, CarrierInUse(), time);
    const FramePtr output(Allocated(av_frame_alloc()));
    const FramePtr dropped(Allocated(av_frame_alloc()));
    std::string problem;
    const int result = Call(
        [&] {
            const int pushed = mGraph->Push(0, input.get());
            const int pulled = pushed < 0 ? pushed : mGraph->Pull(*output);
            for (int i = 0; pulled >= 0 && i < kMostDropped && mGraph->Pull(*dropped) >= 0; ++i) {
                av_frame_unref(dropped.get());
            }
            return pulled;
        },
        problem);
    if (result == AVERROR(EAGAIN)) {
        return {};
    }
    if (result < 0) {
        FailPlugin(problem);
    }
    return ToOurs(*output, inInput);
}

MF::IVideoFrameRef StreamEffect::Generate(kiomediatypes::TickTime inTime)
{
    const double passed = (inTime - mStart).Seconds() * Form().framesPerSecond;
    const std::int64_t wanted = std::max<std::int64_t>(std::llround(passed), 0) + 1;
    while (mMade < wanted || !mMadeLast) {
        FramePtr picture(Allocated(av_frame_alloc()));
        std::string problem;
        if (Call([&] { return mGraph->Pull(*picture); }, problem) < 0) {
            FailPlugin(problem);
        }
        mMadeLast = std::move(picture);
        ++mMade;
    }
    return ToOurs(*mMadeLast, {});
}

} // namespace trhost::effects::avfilter
