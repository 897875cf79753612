#include <kioui_testing/NodeTree.h>

#include "NodeWriter.h"
#include "ui/NodeImpl.h"

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/ProgressBar.h>

#include <QPushButton>

namespace kioui::testing {
namespace {

using controls::UI_Checkbox;
using controls::UI_ProgressBar;
using ui::UI_Node;

bool IsDefaultButton(const UI_Node& inNode)
{
    const auto* button = qobject_cast<const QPushButton*>(inNode.GetImpl().widget.data());
    return button != nullptr && button->isDefault();
}

bool IsUnknown(const UI_Node& inNode)
{
    const auto* bar = dynamic_cast<const UI_ProgressBar*>(&inNode);
    return bar != nullptr && bar->IsUnknownProgress();
}

std::vector<const char*> StateOf(const UI_Node& inNode)
{
    const auto* box = dynamic_cast<const UI_Checkbox*>(&inNode);
    const std::pair<bool, const char*> kStates[] = {
        {inNode.IsVisible(), "visible"},
        {inNode.IsEnabled(), "enabled"},
        {inNode.HasKeyboardFocus(), "focused"},
        {inNode.IsKeyboardTarget(), "keyboardTarget"},
        {box != nullptr && box->IsChecked(), "checked"},
        {IsDefaultButton(inNode), "default"},
        {IsUnknown(inNode), "unknown"},
    };
    std::vector<const char*> state;
    for (const auto& [holds, word] : kStates) {
        if (holds) {
            state.push_back(word);
        }
    }
    return state;
}

void Describe(UI_Node& inNode, NodeWriter& ioWriter)
{
    const RectT<float> bounds = inNode.GetBounds();
    const PointT<float> corner = inNode.ToWindow({0, 0});
    ioWriter.BeginObject();
    ioWriter.Member("id", std::string_view(inNode.GetNodeID()));
    ioWriter.Member("class", std::string_view(inNode.GetClassName()));
    ioWriter.Member("text", kiocore::UTF16View(inNode.GetText()));
    ioWriter.Member("name", kiocore::UTF16View(inNode.GetAccessibleName()));
    ioWriter.Member("bounds", std::vector<double>{corner.x, corner.y, bounds.Width(), bounds.Height()});
    ioWriter.Member("state", StateOf(inNode));
    ioWriter.BeginArray("children");
    for (const ui::UI_NodePtr& child : inNode.GetChildren()) {
        Describe(*child, ioWriter);
    }
    ioWriter.EndArray();
    if (const auto* bar = dynamic_cast<const UI_ProgressBar*>(&inNode)) {
        ioWriter.Member("done", bar->GetDone());
        ioWriter.Member("total", bar->GetTotal());
    }
    ioWriter.EndObject();
}

} // namespace

std::string DescribeNodes(UI_Node& inNode)
{
    NodeWriter writer;
    Describe(inNode, writer);
    return writer.Text();
}

} // namespace kioui::testing
