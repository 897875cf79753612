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

Settings TransitionEffect::ColorSettings() const
{
    Settings settings;
    for (const auto& [name, value] : UserSettings()) {
        if (!name.starts_with("all_")) {
            settings.emplace_back(name, value);
            continue;
        }
        // What is said of all components would hold for alpha too: the difference of two opaque pictures
        // would be invisible.
        for (const char* color : {"c0", "c1", "c2"}) {
            settings.emplace_back(color + name.substr(3), value);
        }
    }
    return settings;
}

TransitionEffect::Plan TransitionEffect::PlanForBlend(double inPosition) const
{
    const bool isNormal =
        std::all_of(UserSettings().begin(), UserSettings().end(), [](const auto& inSetting) {
            const bool isWay = inSetting.first.ends_with("_mode") || inSetting.first.ends_with("_expr");
            return !isWay || inSetting.second == "normal";
        });
    Plan plan{ColorSettings(), !isNormal && inPosition > 0.5, {}};
    const double ofFirst = plan.isSwapped ? inPosition : 1 - inPosition; // of what is handed in first
    const double ofResult = isNormal ? ofFirst : 2 * std::min(inPosition, 1 - inPosition);
    for (const char* color : {"c0_opacity", "c1_opacity", "c2_opacity"}) {
        plan.settings.emplace_back(color, Decimal(ofResult));
    }
    plan.settings.emplace_back("c3_opacity", Decimal(ofFirst));
    return plan;
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
    } else {
        return PlanForBlend(inPosition);
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
