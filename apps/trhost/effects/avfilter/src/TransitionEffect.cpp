#include "TransitionEffect.h"

#include "FrameTransfer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace trhost::effects::avfilter {
namespace {

/// As libavutil reads it, whatever the locale; six digits, as finely as it keeps times.
std::string Decimal(double inNumber)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, inNumber, std::chars_format::fixed, 6);
    return {text, end.ptr};
}

} // namespace

bool TransitionEffect::BlendsNormally() const
{
    return std::none_of(UserSettings().begin(), UserSettings().end(), [](const auto& inSetting) {
        const bool isWay = inSetting.first.ends_with("_mode") || inSetting.first.ends_with("_expr");
        return isWay && inSetting.second != "normal";
    });
}

TransitionEffect::Plan TransitionEffect::PlanFor(double inPosition) const
{
    const std::string_view name = Source().filter->name;
    Plan plan{UserSettings(), false, {}};
    if (name == "xfade") {
        plan.settings.emplace_back("duration", "1");
        plan.settings.emplace_back("offset", Decimal(-inPosition));
    } else if (name == "mix") {
        plan.settings.emplace_back("weights", Decimal(1 - inPosition) + " " + Decimal(inPosition));
    } else if (name == "overlay") {
        plan.secondAlpha = inPosition;
    } else if (BlendsNormally()) {
        plan.settings.emplace_back("all_opacity", Decimal(1 - inPosition)); // of the first
    } else {
        plan.isSwapped = inPosition > 0.5;
        plan.settings.emplace_back("all_opacity",
                                   Decimal(2 * (plan.isSwapped ? 1 - inPosition : inPosition)));
    }
    return plan;
}

MF::IVideoFrameRef TransitionEffect::Render(const std::vector<MF::IVideoFrameRef>& inInputs,
                                            kiomediatypes::TickTime, double inPosition)
{
    CheckInputs(inInputs);
    const Plan plan = PlanFor(std::isnan(inPosition) ? 0 : std::clamp(inPosition, 0.0, 1.0));
    std::unique_ptr<FilterGraph> graph = MakeGraph(plan.settings, inInputs);
    const FramePtr first = ToAVFrame(inInputs[plan.isSwapped ? 1 : 0], CarrierInUse(), 0);
    const FramePtr second = ToAVFrame(inInputs[plan.isSwapped ? 0 : 1], CarrierInUse(), 0);
    if (plan.secondAlpha) {
        ScaleAlpha(*second, *plan.secondAlpha);
    }
    const FramePtr output(Allocated(av_frame_alloc()));
    std::string problem;
    const int result = Call(
        [&] {
            // That no more will come lets a filter give what it has without waiting for the next pair.
            int done = graph->Push(0, first.get());
            done = done < 0 ? done : graph->Push(1, second.get());
            done = done < 0 ? done : graph->Push(0, nullptr);
            done = done < 0 ? done : graph->Push(1, nullptr);
            done = done < 0 ? done : graph->Pull(*output);
            graph.reset();
            return done;
        },
        problem);
    if (result < 0) {
        FailPlugin(problem);
    }
    return ToOurs(*output, inInputs.front());
}

} // namespace trhost::effects::avfilter
