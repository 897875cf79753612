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
    const auto sorted = [&] {
        std::optional<OurTree> tree;
        return Measured([&] {
            tree.emplace(inPlugins);
            tree->Tree().GetHeaderRow()->SetSortColumn(1, true);
            tree->Fill();
            tree->FitColumns();
            tree->Show();
        });
    };
    const Comparison withOrder = Compare(theirs, sorted, kPairs, 1);
    PrintRow("open: likewise, ours sorted by name, theirs not", withOrder, 0, "ms");
    PrintLimit("the same against a limit", kLimit, withOrder.ours);
}

void Repopulate(const std::vector<Plugin>& inPlugins)
{
    QtsTree theirs(inPlugins);
    OurTree ours(inPlugins);
    theirs.Fill();
    theirs.Show();
    ours.Fill();
    ours.FitColumns(); // as a dialog does once
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

/// Pages down in trees of the same rows, each once from the top to the end.
class Reader {
public:
    explicit Reader(const std::vector<Plugin>& inPlugins) : mTree(inPlugins)
    {
        mTree.Fill();
        mTree.FitColumns();
        mTree.Show();
        mTree.Tree().SetKeyboardFocus(FocusChangeReason::kProgram);
        mTree.PageDown(); // the first one stays within the page
    }
    double TurnPage()
    {
        return Measured([&] { mTree.PageDown(); });
    }
    bool IsAtEnd() { return mTree.Tree().IsRowVisible(mTree.Tree().GetRowAt(kRows - 1).get()); }

private:
    OurTree mTree;
};

void Pages(const std::vector<Plugin>& inPlugins)
{
    std::vector<double> times;
    {
        Reader reader(inPlugins);
        while (!reader.IsAtEnd()) {
            times.push_back(reader.TurnPage());
        }
    }
    const std::size_t pages = times.size();
    std::sort(times.begin(), times.end());
    char what[100];
    std::snprintf(what, sizeof what, "a page down to rows never shown, p95 of %zu (median %.1f ms)", pages,
                  Median(times) / 1e6);
    PrintLimit(what, kFrame, times[pages * 95 / 100]);

    constexpr std::size_t kSome = 25;
    Reader early(inPlugins);
    Reader late(inPlugins);
    for (std::size_t page = 0; page + kSome + 2 < pages; ++page) {
        late.TurnPage();
    }
    PrintRow("the last pages against the first",
             Compare([&] { return early.TurnPage(); }, [&] { return late.TurnPage(); }, kSome - 1, 1), 1.3,
             "ms");
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
        ours.Tree().SetRowVisibilityChangedFunction({}); // nothing but rows
        for (std::size_t row = 0; row < kRows; ++row) {
            ours.Tree().AppendRow(new UI_MultiColumnTreeRow(true, nullptr), nullptr, true);
        }
        ours.Paint();
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
