#include <kioui/controls/MultiColumnTreeRow.h>

#include "CellView.h"
#include "RowMemory.h"
#include "TreeState.h"

namespace kioui::controls {
namespace {

// Leaked on purpose: a row may be the last thing that anybody holds.
RowMemory& Memory()
{
    static auto& memory = *new RowMemory(sizeof(UI_MultiColumnTreeRow));
    return memory;
}

/// Not for derived classes, nor where a sanitizer is to see each row come and go.
bool IsInBlocks(std::size_t inBytes)
{
#if defined(__SANITIZE_ADDRESS__)
    constexpr bool isWatched = true;
#elif defined(__has_feature)
    constexpr bool isWatched = __has_feature(address_sanitizer);
#else
    constexpr bool isWatched = false;
#endif
    return !isWatched && inBytes == Memory().BytesEach();
}

} // namespace

UI_CellView::~UI_CellView() = default;

UI_MultiColumnTreeRow::Kept::Kept(bool inSelectable) : isSelectable(inSelectable) {}
UI_MultiColumnTreeRow::Kept::~Kept() = default;

UI_MultiColumnTreeRow::UI_MultiColumnTreeRow(bool inSelectable, UI_MultiColumnTree* inTree)
    : mKept(inSelectable)
{
    if (inTree != nullptr) {
        inTree->AppendRow(this, nullptr, true);
    }
}

UI_MultiColumnTreeRow::~UI_MultiColumnTreeRow() = default;

void* UI_MultiColumnTreeRow::operator new(std::size_t inBytes)
{
    return IsInBlocks(inBytes) ? Memory().Take() : ::operator new(inBytes);
}

void UI_MultiColumnTreeRow::operator delete(void* inRow, std::size_t inBytes)
{
    if (IsInBlocks(inBytes)) {
        Memory().Give(inRow);
    } else {
        ::operator delete(inRow, inBytes);
    }
}

UI_CellView* UI_MultiColumnTreeRow::GetCellView(std::uint32_t inPosition)
{
    const int column = mKept.tree != nullptr ? mKept.tree->GetState().ColumnAt(inPosition) : -1;
    if (column < 0) {
        return nullptr;
    }
    if (!mKept.cells) {
        mKept.cells = std::make_unique<Cells>();
    }
    auto& cells = mKept.cells->byColumn;
    if (cells.size() <= std::size_t(column)) {
        cells.resize(std::size_t(column) + 1);
    }
    CellViewPtr& cell = cells[std::size_t(column)];
    if (!cell) {
        cell = std::make_shared<CellView>(*this, column);
    }
    return cell.get();
}

} // namespace kioui::controls
