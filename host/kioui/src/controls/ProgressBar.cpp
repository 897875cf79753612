#include <kioui/controls/ProgressBar.h>

#include "ui/NodeImpl.h"

#include <kiocore/debug/Trace.h>

#include <QProgressBar>

#include <algorithm>

namespace kioui::controls {
namespace {

using ui::WidgetOf;

// Qt counts in int; what is shown is finer than a bar has pixels whatever the caller counts in.
constexpr int kSteps = 1 << 20;

int StepsOf(std::uint32_t inDone, std::uint32_t inTotal)
{
    return inTotal == 0 ? 0 : int(std::uint64_t(std::min(inDone, inTotal)) * kSteps / inTotal);
}

} // namespace

UI_ProgressBar::UI_ProgressBar() : UI_Node(ui::NewImpl<QProgressBar>("UI_ProgressBar"))
{
    auto* bar = WidgetOf<QProgressBar>(*this);
    bar->setRange(0, kSteps);
    bar->setValue(0);
    bar->setTextVisible(false);
}

UI_ProgressBar::~UI_ProgressBar() = default;

void UI_ProgressBar::SetProgress(std::uint32_t inDone, std::uint32_t inTotal)
{
    KIO_HOST_CALL("kioui::controls::UI_ProgressBar::SetProgress", inDone, inTotal);
    mDone = inDone;
    mTotal = inTotal;
    if (auto* bar = WidgetOf<QProgressBar>(*this)) {
        bar->setRange(0, kSteps);
        bar->setValue(StepsOf(inDone, inTotal));
    }
}

void UI_ProgressBar::SetUnknownProgress(bool inUnknown)
{
    KIO_HOST_CALL("kioui::controls::UI_ProgressBar::SetUnknownProgress", inUnknown);
    if (auto* bar = WidgetOf<QProgressBar>(*this)) {
        bar->setRange(0, inUnknown ? 0 : kSteps);
        bar->setValue(inUnknown ? 0 : StepsOf(mDone, mTotal));
    }
}

bool UI_ProgressBar::IsUnknownProgress() const
{
    const auto* bar = WidgetOf<QProgressBar>(*this);
    return bar != nullptr && bar->maximum() == 0;
}

void UI_ProgressBar::SetShowsPercentage(bool inShows)
{
    KIO_HOST_CALL("kioui::controls::UI_ProgressBar::SetShowsPercentage", inShows);
    if (auto* bar = WidgetOf<QProgressBar>(*this)) {
        bar->setTextVisible(inShows);
    }
}

} // namespace kioui::controls
