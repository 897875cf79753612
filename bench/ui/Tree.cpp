#include "TreeOfPlugins.h"
#include "UIBench.h"

#include "support/Interleaved.h"

#include <kioui/ui/Application.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <optional>
#include <string>

namespace bench {
namespace {

using namespace kioui;
using namespace kioui::controls;

constexpr std::size_t kRows = 10'000;
constexpr std::size_t kPairs = 9;
constexpr double kFrame = 16e6; // nanoseconds between two pictures of a display at 60 Hz
constexpr double kLimit = 60e6; // for opening
constexpr double kBytes = 300;  // for a row that was never shown

/// Time of this thread: all that is measured happens on it, and other programs do not count.
double Measured(const std::function<void()>& inWork)
{
    return Timed(CLOCK_THREAD_CPUTIME_ID, inWork);
}

void PrintLimit(const char* inWhat, double inLimit, double inOurs)
{
    PrintNumbers(inWhat, inLimit / 1e6, inOurs / 1e6, "ms", 1);
}

void Open(const std::vector<Plugin>& inPlugins)
{
    const auto theirs = [&] {
        std::optional<QtsTree> tree;
        return Measured([&] {
            tree.emplace(inPlugins);
            tree->Fill();
            tree->Show();
        });
    };
    const auto ours = [&] {
        std::optional<OurTree> tree;
        return Measured([&] {
            tree.emplace(inPlugins);
            tree->Fill();
            tree->FitColumns();
            tree->Show();
        });
    };
    const Comparison comparison = Compare(theirs, ours, kPairs, 1);
    PrintRow("open: filled, columns fitted (theirs not), painted", comparison, 1, "ms");
    PrintLimit("the same against a limit", kLimit, comparison.ours);
}

void Repopulate(const std::vector<Plugin>& inPlugins)
{
    QtsTree theirs(inPlugins);
    OurTree ours(inPlugins);
    theirs.Fill();
    theirs.Show();
    ours.Fill();
    ours.Show();
    const auto again = [](auto& tree) {
        return Measured([&] {
            tree.Fill();
            tree.Paint();
        });
    };
    PrintRow("the same rows once more, painted",
             Compare([&] { return again(theirs); }, [&] { return again(ours); }, kPairs, 1), 0.25, "ms");
    ours.Tree().GetHeaderRow()->SetSortColumn(1, true);
    PrintRow("likewise, ours sorted by name, theirs not",
             Compare([&] { return again(theirs); }, [&] { return again(ours); }, kPairs, 1), 0, "ms");
    bool isAscending = true;
    PrintRow("a click on a title, against one refill of theirs",
             Compare([&] { return again(theirs); },
                     [&] {
                         isAscending = !isAscending;
                         return Measured([&] {
                             ours.Tree().GetHeaderRow()->SetSortColumn(1, isAscending);
                             ours.Paint();
                         });
                     },
                     kPairs, 1),
             0, "ms");
}

void Pages(const std::vector<Plugin>& inPlugins)
{
    OurTree tree(inPlugins);
    tree.Fill();
    tree.FitColumns();
    tree.Show();
    tree.Tree().SetKeyboardFocus(FocusChangeReason::kProgram);
    std::vector<double> times;
    while (!tree.Tree().IsRowVisible(tree.Tree().GetRowAt(kRows - 1).get())) {
        times.push_back(Measured([&] { tree.PageDown(); }));
    }
    constexpr std::size_t kSome = 20; // the very first press only moves within the first page
    const double first = Median({times.begin() + 1, times.begin() + 1 + kSome});
    const double last = Median({times.end() - kSome, times.end()});
    std::sort(times.begin(), times.end());
    char what[100];
    std::snprintf(what, sizeof what, "a page down to rows never shown, p95 of %zu (median %.1f ms)",
                  times.size(), Median(times) / 1e6);
    PrintLimit(what, kFrame, times[times.size() * 95 / 100]);
    Comparison ends;
    ends.floor = first;
    ends.ours = last;
    ends.ratio = last / first;
    PrintRow("the last pages against the first", ends, 1.3, "ms");
}

void Memory(const std::vector<Plugin>& inPlugins)
{
    const auto perRow = [](const auto& fill) {
        const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        fill();
        return double(mallinfo2().uordblks + mallinfo2().hblkhd - before) / double(kRows);
    };
    QtsTree theirs({inPlugins});
    theirs.Show();
    const double theirBytes = perRow([&] {
        theirs.Fill();
        theirs.Paint();
    });
    OurTree ours(inPlugins);
    ours.Show();
    const double ourBytes = perRow([&] {
        const UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow defer(ours.Tree());
        ours.Tree().SetRowVisibilityChangedFunction({}); // nothing but rows
        for (std::size_t row = 0; row < kRows; ++row) {
            ours.Tree().AppendRow(new UI_MultiColumnTreeRow(true, nullptr), nullptr, true);
        }
    });
    PrintNumbers("bytes a row, beyond the records", theirBytes, ourBytes, "B", 0);
    PrintNumbers("the same against a limit", kBytes, ourBytes, "B", 1);
}

} // namespace

void BenchTree()
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const ui::ScApplication application({});
    const std::vector<Plugin> plugins = MakePlugins(kRows);
    PrintHeader("a tree of 10,000 rows and five columns: Qt's own with items, or a limit | ours");
    Open(plugins);
    Repopulate(plugins);
    Pages(plugins);
    Memory(plugins);
}

} // namespace bench
