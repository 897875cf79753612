#pragma once

// The order of rows. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kioui::controls {

/// Puts rows in the order of a dictionary; equal texts stay as they stood, whichever way round.
///
/// Comparing as a dictionary does is slow, and who types into a search box sorts parts of the same texts
/// again at each key. So the order of the texts of the last sort that met a new one is remembered, as a hash
/// and a place for each.
class SortOrder {
public:
    /// @param inText  what a row is sorted by, asked for once per row. What it throws passes through; the
    /// rows
    ///     stay as they are then.
    void Sort(UI_MultiColumnTree::Rows& ioRows,
              const std::function<ui::UTF16String(UI_MultiColumnTreeRow*)>& inText, bool inAscending);

private:
    using Texts = std::vector<ui::UTF16String>;
    using Places = std::vector<std::uint32_t>;
    struct Known {
        std::uint64_t hash = 0;
        std::uint32_t place = kNowhere;
    };
    static constexpr std::uint32_t kNowhere = 0xFFFFFFFF;

    Known& Find(std::uint64_t inHash);
    /// Empty when there is a text that is not known.
    Places KnownPlaces(const Texts& inTexts);
    Places Compare(const Texts& inTexts) const;
    void Remember(const Texts& inTexts, const Places& inPlaces);

    std::vector<Known> mKnown; // by hash, with open addressing; a power of two of them
};

} // namespace kioui::controls
