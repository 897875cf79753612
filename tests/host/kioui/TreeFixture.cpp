#include "TreeFixture.h"

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <QAbstractItemModel>

#include <cstdio>

using namespace kioui;
using namespace kioui::controls;

std::string UTF8(const kiocore::UTF16String& inText)
{
    return kiocore::utility::ToUTF8(inText);
}

TreeFixture::TreeFixture() : window(new UI_OSWindow(u"Test", nullptr)), button(new UI_TextButton(u"Before"))
{
    window->SetSize({500, 300});
    window->AddChild(button);
    button->SetBounds({0, 0, 100, 30});
    tree = new UI_MultiColumnTree;
    window->AddChild(tree);
    tree->SetBounds({0, 30, 500, 300});
    header = tree->GetHeaderRow();
    header->AppendColumn(1, u"Enabled", 70);
    header->AppendColumn(2, u"Name", 140);
    header->AppendColumn(3, u"Path", 150);
    tree->SetRowVisibilityChangedFunction([this](UI_MultiColumnTreeRow* row) { OnShown(row); });
    tree->SetRowsSelectionChangedFunction([this](const UI_MultiColumnTree::Rows& rows) {
        std::string names;
        for (const Row& row : rows) {
            names += (names.empty() ? "" : " ") + UTF8(records[row.get()].name);
        }
        selections.push_back(names);
    });
    const auto text = [this](UI_MultiColumnTreeRow* row, std::uint32_t position) {
        const Record& record = records[row];
        const std::uint32_t id = header->GetColumnAt(position);
        return id == 1 ? (record.isChecked ? u"2" : u"1") + record.name : id == 2 ? record.name : record.path;
    };
    tree->SetCellTextFunction(text);
    tree->SetCellSortDataFunction([this, text](UI_MultiColumnTreeRow* row, std::uint32_t position) {
        ++sortTextsAsked;
        return text(row, position);
    });
    QObject::connect(View().model(), &QAbstractItemModel::modelReset, [this] { ++resets; });
    window->UI_Show(true);
    ui::ScApplication::RunPending();
}

TreeFixture::~TreeFixture()
{
    tree->SetRowVisibilityChangedFunction({});
    tree->SetRowsSelectionChangedFunction({});
}

TreeFixture::Row TreeFixture::Append(const Record& inRecord, bool inSelectable)
{
    Row row(new UI_MultiColumnTreeRow(inSelectable, nullptr));
    records[row.get()] = inRecord;
    tree->AppendRow(row, nullptr, true);
    return row;
}

void TreeFixture::Fill(const std::vector<Record>& inRecords)
{
    const UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow defer(*tree);
    tree->RemoveAllRows();
    records.clear();
    for (const Record& record : inRecords) {
        Append(record);
    }
}

void TreeFixture::FillMany(int inCount)
{
    std::vector<Record> many;
    for (int number = 0; number < inCount; ++number) {
        char name[16];
        std::snprintf(name, sizeof(name), "%05d", number);
        many.push_back({kiocore::utility::ToUTF16(std::string(name)), u"path"});
    }
    Fill(many);
}

std::vector<std::string> TreeFixture::Names() const
{
    std::vector<std::string> names;
    for (std::uint32_t place = 0; place < tree->CountRows(false); ++place) {
        names.push_back(UTF8(records.at(tree->GetRowAt(place).get()).name));
    }
    return names;
}

std::vector<std::string> TreeFixture::Selected() const
{
    std::vector<std::string> names;
    for (const Row& row : tree->GetSelectedRows()) {
        names.push_back(UTF8(records.at(row.get()).name));
    }
    return names;
}

TreeFixture::Row TreeFixture::Named(const char* inName) const
{
    for (std::uint32_t place = 0; place < tree->CountRows(false); ++place) {
        const Row row = tree->GetRowAt(place);
        if (UTF8(records.at(row.get()).name) == inName) {
            return row;
        }
    }
    return {};
}

UI_CheckboxPtr TreeFixture::BoxOf(const Row& inRow) const
{
    return dynamic_cast<UI_Checkbox*>(inRow->GetCellView(header->GetIndexOfColumn(1))->GetNode().get());
}

QTreeView& TreeFixture::View() const
{
    return *ui::WidgetOf<QTreeView>(*tree);
}

PointT<float> TreeFixture::MiddleOf(const Row& inRow, std::uint32_t inPosition) const
{
    const RectT<float> cell = tree->GetCellBounds(inRow.get(), inPosition);
    return tree->ToWindow({(cell.left + cell.right) / 2, (cell.top + cell.bottom) / 2});
}

PointT<float> TreeFixture::BesideDivider(std::uint32_t inColumnID, float inDistance) const
{
    float right = 0;
    for (std::uint32_t position = 0; position <= header->GetIndexOfColumn(inColumnID); ++position) {
        right += header->GetColumnWidth(header->GetColumnAt(position));
    }
    return header->ToWindow({right + inDistance, header->GetBounds().Height() / 2});
}

void TreeFixture::OnShown(UI_MultiColumnTreeRow* inRow)
{
    shown.push_back(UTF8(records[inRow].name));
    UI_CellView* cell = inRow->GetCellView(header->GetIndexOfColumn(1));
    if (cell->GetNode()) {
        return;
    }
    ++boxesMade;
    const UI_CheckboxPtr box(new UI_Checkbox(u""));
    box->SetNodeID("box " + UTF8(records[inRow].name));
    box->SetChecked(records[inRow].isChecked);
    box->SetChangedFunction([this, inRow](ui::UI_ControlChangedMessage* message) {
        records[inRow].isChecked = ui::NodeCast<UI_Checkbox>(message->GetControl()).IsChecked();
    });
    cell->CentreNode(true);
    cell->SetNode(box);
    cell->SetMouseEventFunction(
        [this, inRow](UI_CellView* view, ui::UI_MouseEvent& event) { return OnMouse(inRow, view, event); });
}

bool TreeFixture::OnMouse(UI_MultiColumnTreeRow* inRow, UI_CellView* inCell, const ui::UI_MouseEvent& inEvent)
{
    static const char* const kTypes[] = {"press ", "release ", "move ", "double press "};
    mouse.push_back(kTypes[int(inEvent.type)] + UTF8(records[inRow].name));
    if (inEvent.type == ui::MouseEventType::kPress) {
        mPressedCell = inCell;
        return isPressDealtWith;
    }
    if (inEvent.type == ui::MouseEventType::kRelease && std::exchange(mPressedCell, nullptr) == inCell) {
        NodeCast<UI_Checkbox>(inCell->GetNode().get()).Click();
        return true;
    }
    return false;
}
