#include "PendingFocus.h"

#include <algorithm>
#include <vector>

namespace kioui::ui {
namespace {

struct Noted {
    UI_Node::Impl* node;
    Qt::FocusReason reason;
};

std::vector<Noted>& AllNoted()
{
    static std::vector<Noted> noted;
    return noted;
}

// A hidden window is no obstacle: Qt gives the focus when it becomes active.
bool CanHaveFocus(const QWidget& inWidget)
{
    return inWidget.isEnabled() && inWidget.isVisibleTo(inWidget.window());
}

} // namespace

void GiveFocus(UI_Node::Impl& inNode, Qt::FocusReason inReason)
{
    ForgetNotedFocusAround(inNode);
    if (CanHaveFocus(*inNode.widget)) {
        inNode.widget->setFocus(inReason);
    } else {
        AllNoted().push_back({&inNode, inReason});
    }
}

void GiveNotedFocus(UI_Node::Impl& inNode)
{
    std::vector<Noted>& all = AllNoted();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&inNode](const Noted& inNoted) { return inNoted.node == &inNode; });
    if (found != all.end() && CanHaveFocus(*inNode.widget)) {
        const Qt::FocusReason reason = found->reason;
        all.erase(found);
        inNode.widget->setFocus(reason);
    }
}

void ForgetNotedFocusAround(const UI_Node::Impl& inNode)
{
    const QWidget* const window = inNode.widget->window();
    std::erase_if(AllNoted(), [window](const Noted& inNoted) {
        return inNoted.node->widget.isNull() || inNoted.node->widget->window() == window;
    });
}

void ForgetNotedFocus(const UI_Node::Impl& inNode)
{
    std::erase_if(AllNoted(), [&inNode](const Noted& inNoted) { return inNoted.node == &inNode; });
}

} // namespace kioui::ui
