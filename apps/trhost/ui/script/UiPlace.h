#pragma once

#include "UiScript.h"

#include <kioui/controls/MultiColumnTree.h>
#include <kioui/ui/Window.h>

#include <exception>

namespace trhost::ui {

/// What a script asks for is not there, or not as it says; the text is for people, UTF-8.
class UiMismatch : public std::exception {
public:
    explicit UiMismatch(std::string inTextUTF8) : mText(std::move(inTextUTF8)) {}
    const char* what() const noexcept override { return mText.c_str(); }

private:
    std::string mText;
};

/// What a target means in a window that is shown.
///
/// Threading: UI thread only. Borrows the window.
class UiPlace {
public:
    /// @throws UiMismatch naming what there is no such of, and what there is instead.
    UiPlace(kioui::UI_OSWindow& inWindow, const UiTarget& inTarget);

    /// The node: of a cell, what lies in it. Null when nothing does, and for rows and titles.
    kioui::UI_Node* Node() const;
    /// The tree: also of a row, a cell or a title. @throws UiMismatch when the node is none.
    kioui::controls::UI_MultiColumnTree& Tree() const;
    /// Null unless the target has a row.
    const kioui::controls::UI_MultiColumnTreeRow* Row() const { return mRow.get(); }
    std::uint32_t ColumnID() const { return mColumnID; }
    std::uint32_t ColumnPosition() const { return mPosition; }

    /// Where the mouse is to go, in the window; scrolls a row into view.
    kioui::PointT<float> Point() const;

private:
    void FindNode(kioui::UI_OSWindow& inWindow);
    void FindColumn();
    void FindRow();
    kioui::RectT<float> Bounds() const;

    const UiTarget mTarget;
    kioui::UI_NodePtr mNode;
    kioui::controls::UI_MultiColumnTreeRowPtr mRow;
    std::uint32_t mColumnID = 0;
    std::uint32_t mPosition = 0;
};

} // namespace trhost::ui
