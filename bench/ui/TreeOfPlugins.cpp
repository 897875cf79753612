#include "TreeOfPlugins.h"

#include <kioui/controls/Checkbox.h>
#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Application.h>
#include <kioui/ui/NodeManager.h>
#include <kioui_testing/UserEvents.h>

#include <algorithm>

namespace bench {

using namespace kioui;
using namespace kioui::controls;
using kiocore::UTF16String;

namespace {

const char16_t* const kTitles[] = {u"Enabled", u"Name", u"Kind", u"Vendor", u"Path"};

QString Text(const UTF16String& inText)
{
    return QString(reinterpret_cast<const QChar*>(inText.data()), qsizetype(inText.size()));
}

/// Qt puts off layouts to one round of its event loop and paints in another.
void RunUntilPainted()
{
    for (int round = 0; round < 4; ++round) {
        ui::ScApplication::RunPending();
    }
}

} // namespace

std::vector<Plugin> MakePlugins(std::size_t inCount)
{
    static const char16_t* const kWords[] = {u"Gaussian", u"Blur",  u"Colour", u"Film",  u"Grain",
                                             u"Levels",   u"Light", u"Wave",   u"Alpha", u"Glow"};
    std::vector<Plugin> plugins(inCount);
    for (std::size_t number = 0; number < inCount; ++number) {
        const std::size_t mixed = number * 7919 % inCount;
        const UTF16String name = UTF16String(kWords[mixed % 10]) + u" " + kWords[mixed / 10 % 10] + u" " +
                                 kiocore::utility::DecimalText(mixed);
        plugins[number] = {mixed % 3 != 0,
                           {name, mixed % 2 == 0 ? u"Video filter" : u"Transition", u"Example Effects",
                            u"/usr/lib/effects/" + UTF16String(kWords[mixed % 7]) + u"/" + name + u".so"}};
    }
    return plugins;
}

OurTree::OurTree(const std::vector<Plugin>& inPlugins)
    : mPlugins(inPlugins), mWindow(new UI_OSWindow(u"Plug-ins", nullptr)), mTree(new UI_MultiColumnTree),
      mFont(UI_NodeManager::GetDefaultDrawSupplier()->NewFont(ui::GetFontName(0), ui::GetFontSize(0)))
{
    mWindow->SetSize({kTreeWidth, kTreeHeight});
    mWindow->AddChild(mTree);
    mTree->SetBounds({0, 0, kTreeWidth, kTreeHeight});
    for (std::uint32_t column = 0; column < 5; ++column) {
        mTree->GetHeaderRow()->AppendColumn(column, kTitles[column], 70);
    }
    mTree->SetRowVisibilityChangedFunction([this](UI_MultiColumnTreeRow* row) { MakeBox(row); });
    mTree->SetDrawCellFunction([this](Drawbot* drawbot, UI_MultiColumnTreeRow* row, std::uint32_t position,
                                      const RectT<float>& cell) { Draw(drawbot, row, position, cell); });
    mTree->SetCellSortDataFunction(
        [this](UI_MultiColumnTreeRow* row, std::uint32_t position) { return TextOf(row, position); });
}

OurTree::~OurTree()
{
    mTree->SetRowVisibilityChangedFunction({});
    mTree->SetDrawCellFunction({});
}

UTF16String OurTree::TextOf(const UI_MultiColumnTreeRow* inRow, std::uint32_t inPosition) const
{
    const auto found = mPluginOf.find(inRow);
    const std::uint32_t id = mTree->GetHeaderRow()->GetColumnAt(inPosition);
    return found != mPluginOf.end() && id >= 1 && id <= 4 ? found->second->texts[id - 1] : UTF16String();
}

void OurTree::MakeBox(UI_MultiColumnTreeRow* inRow)
{
    UI_CellView* const cell = inRow->GetCellView(mTree->GetHeaderRow()->GetIndexOfColumn(0));
    if (cell == nullptr || cell->GetNode()) {
        return;
    }
    const UI_CheckboxPtr box(new UI_Checkbox(u""));
    box->SetChecked(mPluginOf.at(inRow)->isEnabled);
    box->SetChangedFunction([](UI_ControlChangedMessage*) {});
    cell->CentreNode(true);
    cell->SetNode(box);
    cell->SetMouseEventFunction([](UI_CellView*, ui::UI_MouseEvent&) { return false; });
}

void OurTree::Draw(Drawbot* inDrawbot, const UI_MultiColumnTreeRow* inRow, std::uint32_t inPosition,
                   const RectT<float>& inCell) const
{
    const UTF16String text = TextOf(inRow, inPosition);
    if (text.empty()) {
        return;
    }
    const drawbot::ScDrawState state(*inDrawbot);
    inDrawbot->Clip(inCell);
    const UTF16String fits = inDrawbot->TruncateString(
        text, mFont, inCell.Width() - 6, inPosition == 4 ? TextTruncation::kMiddle : TextTruncation::kEnd);
    inDrawbot->DrawString(fits, mFont, skins::Color{}, {inCell.left + 6, inCell.bottom - 4});
}

void OurTree::Fill()
{
    const UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow defer(*mTree);
    mTree->RemoveAllRows();
    mPluginOf.clear();
    for (const Plugin& plugin : mPlugins) {
        const UI_MultiColumnTreeRowPtr row(new UI_MultiColumnTreeRow(true, nullptr));
        mPluginOf[row.get()] = &plugin;
        mTree->AppendRow(row, nullptr, true);
    }
}

void OurTree::FitColumns()
{
    for (std::uint32_t id = 1; id <= 4; ++id) {
        drawbot::WidestText widest(mFont);
        widest.Add(kTitles[id]);
        for (const auto& [row, plugin] : mPluginOf) {
            widest.Add(plugin->texts[id - 1]);
        }
        mTree->GetHeaderRow()->SetColumnWidth(id, std::max(70.0F, widest.RoundedUpWidth() + 7));
    }
}

void OurTree::Show()
{
    mWindow->UI_Show(true);
    Paint();
}

void OurTree::Paint()
{
    RunUntilPainted();
}

void OurTree::PageDown()
{
    kioui::testing::PressKey(*mWindow, "PgDown");
}

QtsTree::QtsTree(const std::vector<Plugin>& inPlugins) : mPlugins(inPlugins)
{
    mTree.resize(kTreeWidth, kTreeHeight);
    mTree.setRootIsDecorated(false);
    mTree.setUniformRowHeights(true);
    mTree.setColumnCount(5);
    QStringList titles;
    for (const char16_t* title : kTitles) {
        titles.append(QString::fromUtf16(title));
    }
    mTree.setHeaderLabels(titles);
}

void QtsTree::Fill()
{
    mTree.clear();
    QList<QTreeWidgetItem*> items;
    items.reserve(qsizetype(mPlugins.size()));
    for (const Plugin& plugin : mPlugins) {
        auto* item = new QTreeWidgetItem;
        item->setCheckState(0, plugin.isEnabled ? Qt::Checked : Qt::Unchecked);
        for (std::size_t text = 0; text < plugin.texts.size(); ++text) {
            item->setText(int(text) + 1, Text(plugin.texts[text]));
        }
        items.append(item);
    }
    mTree.addTopLevelItems(items);
}

void QtsTree::Show()
{
    mTree.show();
    Paint();
}

void QtsTree::Paint()
{
    RunUntilPainted();
}

} // namespace bench
