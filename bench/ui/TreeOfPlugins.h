#pragma once

#include <kioui/controls/MultiColumnTree.h>
#include <kioui/ui/Window.h>

#include <QTreeWidget>

#include <array>
#include <map>
#include <memory>
#include <vector>

namespace bench {

struct Plugin {
    bool isEnabled = false;
    std::array<kiocore::UTF16String, 4> texts; // name, kind, vendor, path
};
/// What a machine with that many plug-ins might have; the same each time.
std::vector<Plugin> MakePlugins(std::size_t inCount);

constexpr int kTreeWidth = 900;
constexpr int kTreeHeight = 600;

/// A window with a tree of five columns: boxes that are made when their row comes into view, and drawn texts.
class OurTree {
public:
    explicit OurTree(const std::vector<Plugin>& inPlugins);
    ~OurTree();

    /// In one deferral; rows there are go.
    void Fill();
    void FitColumns();
    /// Shown and painted.
    void Show();
    void Paint();
    void PageDown();
    kioui::controls::UI_MultiColumnTree& Tree() { return *mTree; }

private:
    kiocore::UTF16String TextOf(const kioui::controls::UI_MultiColumnTreeRow* inRow,
                                std::uint32_t inPosition) const;
    void MakeBox(kioui::controls::UI_MultiColumnTreeRow* inRow);
    void Draw(kioui::Drawbot* inDrawbot, const kioui::controls::UI_MultiColumnTreeRow* inRow,
              std::uint32_t inPosition, const kioui::RectT<float>& inCell) const;

    const std::vector<Plugin>& mPlugins;
    boost::intrusive_ptr<kioui::ui::UI_OSWindow> mWindow;
    kioui::controls::UI_MultiColumnTreePtr mTree;
    kioui::FontRef mFont;
    std::map<const kioui::controls::UI_MultiColumnTreeRow*, const Plugin*> mPluginOf;
};

/// The same with what Qt has ready: items with texts, and check states in the first column.
class QtsTree {
public:
    explicit QtsTree(const std::vector<Plugin>& inPlugins);
    void Fill();
    void Show();
    void Paint();

private:
    const std::vector<Plugin>& mPlugins;
    QTreeWidget mTree;
};

} // namespace bench
