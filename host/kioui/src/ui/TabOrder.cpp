#include "TabOrder.h"

#include "NodeImpl.h"

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kioui::ui {
namespace {

using Places = std::unordered_map<const QWidget*, std::size_t>;

void AddPlaces(UI_Node& inNode, Places& ioPlaces)
{
    const UI_Node::Impl& impl = inNode.GetImpl();
    ioPlaces.emplace(impl.widget, ioPlaces.size());
    if (impl.chainsItsChildren) {
        return;
    }
    for (const UI_NodePtr& child : impl.children) {
        AddPlaces(*child, ioPlaces);
    }
}

std::size_t PlaceOf(const QWidget* inWidget, const Places& inPlaces)
{
    for (; inWidget != nullptr; inWidget = inWidget->parentWidget()) {
        const auto found = inPlaces.find(inWidget);
        if (found != inPlaces.end()) {
            return found->second;
        }
    }
    return 0;
}

} // namespace

void OrderTabs(UI_Node& inWindow)
{
    QWidget* const window = inWindow.GetImpl().widget;
    if (window == nullptr) {
        return;
    }
    Places places;
    AddPlaces(inWindow, places);
    std::vector<std::pair<std::size_t, QWidget*>> chain;
    for (QWidget* at = window->nextInFocusChain(); at != window; at = at->nextInFocusChain()) {
        if (at->focusPolicy() != Qt::NoFocus) {
            chain.emplace_back(PlaceOf(at, places), at);
        }
    }
    const auto isBefore = [](const auto& inLeft, const auto& inRight) {
        return inLeft.first < inRight.first;
    };
    if (std::is_sorted(chain.begin(), chain.end(), isBefore)) {
        return;
    }
    std::stable_sort(chain.begin(), chain.end(), isBefore);
    for (std::size_t at = 1; at < chain.size(); ++at) {
        QWidget::setTabOrder(chain[at - 1].second, chain[at].second);
    }
}

} // namespace kioui::ui
