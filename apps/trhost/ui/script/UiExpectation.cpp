#include "UiExpectation.h"

#include "UiPlace.h"

#include "../../support/LocalText.h"

#include <kioui_testing/NodeTree.h>

#include <algorithm>

namespace trhost::ui {
namespace {

using Aspect = UiStatement::Aspect;
using Kind = UiTarget::Kind;
using kiocore::utility::ToUTF8;
using kioui::UI_Node;

void RequireSame(const std::string& inWhat, const std::string& inFound, const std::string& inExpected)
{
    if (inFound != inExpected) {
        throw UiMismatch(LocalText("$$$/Halcyon/TrHost/UiScript/Differs=@0: found @1, expected @2",
                                   {inWhat, inFound, inExpected}));
    }
}

std::string Quoted(const std::string& inText)
{
    return '"' + inText + '"';
}

std::string Listed(const std::vector<std::string>& inTexts)
{
    std::string list;
    for (const std::string& text : inTexts) {
        list += (list.empty() ? "" : " ") + Quoted(text);
    }
    return list;
}

UI_Node& RequireNode(const UiPlace& inPlace, const UiTarget& inTarget)
{
    UI_Node* const node = inPlace.Node();
    if (node == nullptr) {
        throw UiMismatch(
            LocalText("$$$/Halcyon/TrHost/UiScript/NothingThere=@0: found nothing there, expected "
                      "a node#{@0: a place as a script names it}",
                      {inTarget.AsText()}));
    }
    return *node;
}

/// What a cell says, a title, or a node.
std::string TextOf(const UiPlace& inPlace, const UiTarget& inTarget)
{
    switch (inTarget.kind) {
    case Kind::kNode:
        return ToUTF8(RequireNode(inPlace, inTarget).GetText());
    case Kind::kTitle:
        return ToUTF8(inPlace.Tree().GetHeaderRow()->GetColumnTitle(inPlace.ColumnID()));
    case Kind::kRow:
    case Kind::kCell:
        return ToUTF8(inPlace.Tree().GetCellText(inPlace.Row(), inPlace.ColumnPosition()));
    }
    return {};
}

std::vector<std::string> TitlesOf(const kioui::controls::UI_MultiColumnTree& inTree)
{
    std::vector<std::string> titles;
    const auto header = inTree.GetHeaderRow();
    for (std::uint32_t position = 0; position < header->GetCountOfColumns(); ++position) {
        titles.push_back(ToUTF8(header->GetColumnTitle(header->GetColumnAt(position))));
    }
    return titles;
}

std::vector<std::string> StatesOf(const UiPlace& inPlace, const UiTarget& inTarget)
{
    std::vector<std::string> states;
    if (inTarget.kind == Kind::kRow) {
        if (inPlace.Row()->IsSelected()) {
            states.emplace_back("selected");
        }
        if (inPlace.Tree().IsRowVisible(inPlace.Row())) {
            states.emplace_back("visible");
        }
        return states;
    }
    for (const char* state : kioui::testing::StatesOf(RequireNode(inPlace, inTarget))) {
        states.emplace_back(state);
    }
    return states;
}

void CheckStates(const UiPlace& inPlace, const UiStatement& inStatement)
{
    const std::vector<std::string> states = StatesOf(inPlace, inStatement.target);
    for (const std::string& word : inStatement.words) {
        const auto wanted = FindStateWord(word);
        const bool holds = std::find(states.begin(), states.end(), wanted->state) != states.end();
        if (holds != wanted->holds) {
            std::string found;
            for (const std::string& state : states) {
                found += (found.empty() ? "" : " ") + state;
            }
            throw UiMismatch(
                LocalText("$$$/Halcyon/TrHost/UiScript/State=@0: found the state \"@1\", expected "
                          "@2#{@0: a place as a script names it @1: words of states @2: one of them}",
                          {inStatement.target.AsText(), found, word}));
        }
    }
}

/// The focused node's ID; of what has none, the one around it that has one.
std::string FocusedID(const kioui::UI_OSWindow& inWindow)
{
    const UI_Node* node = inWindow.GetFocusedNode();
    while (node != nullptr && node->GetNodeID().empty()) {
        node = node->GetParent();
    }
    return node != nullptr ? node->GetNodeID() : std::string();
}

} // namespace

void CheckExpectation(kioui::UI_OSWindow& inWindow, const UiStatement& inStatement)
{
    if (inStatement.aspect == Aspect::kFocus) {
        RequireSame("focus", Quoted(FocusedID(inWindow)), Quoted(inStatement.text));
        return;
    }
    if (inStatement.aspect == Aspect::kWindow) {
        RequireSame("window", Quoted(inWindow.GetNodeID()), Quoted(inStatement.text));
        return;
    }
    const UiTarget& target = inStatement.target;
    const UiPlace place(inWindow, target);
    const std::string name = target.AsText();
    switch (inStatement.aspect) {
    case Aspect::kText:
        RequireSame(name + " text", Quoted(TextOf(place, target)), Quoted(inStatement.text));
        return;
    case Aspect::kName:
        RequireSame(name + " name", Quoted(ToUTF8(RequireNode(place, target).GetAccessibleName())),
                    Quoted(inStatement.text));
        return;
    case Aspect::kRows:
        RequireSame(name + " rows", std::to_string(place.Tree().CountRows(false)),
                    std::to_string(inStatement.number));
        return;
    case Aspect::kColumns:
        RequireSame(name + " columns", Listed(TitlesOf(place.Tree())), Listed(inStatement.words));
        return;
    case Aspect::kWidth: {
        const float width = target.kind == Kind::kTitle
                                ? place.Tree().GetHeaderRow()->GetColumnWidth(place.ColumnID())
                                : RequireNode(place, target).GetBounds().Width();
        RequireSame(name + " width", std::to_string(std::int64_t(width)), std::to_string(inStatement.number));
        return;
    }
    case Aspect::kState:
        CheckStates(place, inStatement);
        return;
    case Aspect::kFocus:
    case Aspect::kWindow:
        return; // dealt with above
    }
}

} // namespace trhost::ui
