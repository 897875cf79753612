#include "UIBench.h"

#include "support/Interleaved.h"

#include <TR/EffectPluginManagerDialog.h>
#include <kioui/ui/Application.h>
#include <kioui_testing/UserEvents.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace bench {
namespace {

using kiocore::UTF16String;
namespace user = kioui::testing;

constexpr double kFrame = 16e6; // nanoseconds between two pictures of a display at 60 Hz

TR::AllEffectSettings MakeEffects(std::size_t inCount)
{
    static const char16_t* const kWords[] = {u"Gaussian", u"Blur", u"Colour", u"Film", u"Grain",  u"Levels",
                                             u"Light",    u"Wave", u"Alpha",  u"Glow", u"Sharpen"};
    TR::AllEffectSettings all;
    all.attributeNames = {u"Kind", u"32-bit"};
    for (std::size_t i = 0; i < inCount; ++i) {
        const auto settings = std::make_shared<TR::EffectSettings>();
        settings->enabled = i % 7 != 0;
        settings->name = UTF16String(kWords[i % std::size(kWords)]) + u" " +
                         kWords[(i / 11) % std::size(kWords)] + u" " + kiocore::utility::DecimalText(i);
        settings->filePath = u"/usr/lib/effects/" + settings->name + u".so";
        settings->attributeValues = {UTF16String(u"video filter"), i % 2 == 0};
        all.settings.insert(settings);
    }
    return all;
}

/// Each keystroke from the key going down to the last pixel, in order.
void SearchAmong(std::size_t inEffects, double inGoal)
{
    const boost::intrusive_ptr<TR::EffectPluginManagerDialog> dialog(
        new TR::EffectPluginManagerDialog(nullptr, u"Plug-ins", nullptr, MakeEffects(inEffects)));
    dialog->SetSize({900, 600});
    dialog->UI_Show(true);
    kioui::ui::ScApplication::RunPending();
    user::Click(*dialog, user::MiddleOf(*dialog->FindNode("SearchText")));

    std::vector<double> times;
    for (int round = 0; round < 8; ++round) {
        for (const char* key : {"l", "e", "v", "e", "l", "s", "Backspace", "Backspace", "Backspace",
                                "Backspace", "Backspace", "Backspace"}) {
            times.push_back(Timed(CLOCK_MONOTONIC, [&] { user::PressKey(*dialog, key); }));
        }
    }
    dialog->UI_Show(false);
    std::sort(times.begin(), times.end());
    const double slow = times[times.size() * 95 / 100];
    char what[100];
    std::snprintf(what, sizeof what, "a keystroke of a search, %zu effects, p95 (median %.1f ms)", inEffects,
                  Median(times) / 1e6);
    PrintNumbers(what, kFrame / 1e6, slow / 1e6, "ms", inGoal);
}

} // namespace

void BenchSearch()
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const kioui::ui::ScApplication application({});
    PrintHeader("search while typing: one picture of the display | a keystroke and all that follows");
    SearchAmong(500, 0.5);
    SearchAmong(10'000, 1);
}

} // namespace bench
