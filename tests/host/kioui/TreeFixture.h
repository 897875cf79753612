#pragma once

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/Window.h>
#include <kioui_testing/UserEvents.h>

#include <support/ui/TestApplication.h>

#include <QTreeView>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// Names as tests write them.
std::string UTF8(const kiocore::UTF16String& inText);

/// A shown window with a button and below it a tree of three columns: 1 holds boxes, 2 and 3 texts. A box
/// toggles when the mouse was pressed and released in its cell.
class TreeFixture {
public:
    struct Record {
        kiocore::UTF16String name{};
        kiocore::UTF16String path{};
        bool isChecked = false;
    };
    using Row = kioui::controls::UI_MultiColumnTreeRowPtr;

    TreeFixture();
    ~TreeFixture();

    Row Append(const Record& inRecord, bool inSelectable = true);
    /// In one deferral, rows there are go first.
    void Fill(const std::vector<Record>& inRecords);
    /// Rows "00000", "00001", ...
    void FillMany(int inCount);

    /// Names from the top, and of the rows that are selected.
    std::vector<std::string> Names() const;
    std::vector<std::string> Selected() const;
    Row Named(const char* inName) const;
    /// Null while there is none.
    kioui::controls::UI_CheckboxPtr BoxOf(const Row& inRow) const;

    QTreeView& View() const;
    /// In the window; scrolls nothing.
    kioui::PointT<float> MiddleOf(const Row& inRow, std::uint32_t inPosition) const;
    /// In the window: on the title's line, so far from the divider right of a column.
    kioui::PointT<float> BesideDivider(std::uint32_t inColumnID, float inDistance) const;
    void Press(const char* inKey) { kioui::testing::PressKey(*window, inKey); }
    void Click(kioui::PointT<float> inPlace) { kioui::testing::Click(*window, inPlace); }

    const support::ScTestApplication application;
    boost::intrusive_ptr<kioui::ui::UI_OSWindow> window;
    boost::intrusive_ptr<kioui::controls::UI_TextButton> button;
    kioui::controls::UI_MultiColumnTreePtr tree;
    kioui::controls::UI_MultiColumnTreeHeaderRowPtr header;
    std::map<const kioui::controls::UI_MultiColumnTreeRow*, Record> records;

    std::vector<std::string> shown;      // names that the visibility function was called with
    std::vector<std::string> selections; // what the selection function was called with, "a b"
    std::vector<std::string> mouse;      // what the cells of boxes saw, "press a"
    int boxesMade = 0;
    int sortTextsAsked = 0;
    int resets = 0;
    bool isPressDealtWith = false;

private:
    void OnShown(kioui::controls::UI_MultiColumnTreeRow* inRow);
    bool OnMouse(kioui::controls::UI_MultiColumnTreeRow* inRow, kioui::controls::UI_CellView* inCell,
                 const kioui::ui::UI_MouseEvent& inEvent);

    kioui::controls::UI_CellView* mPressedCell = nullptr; // for comparison only
};
