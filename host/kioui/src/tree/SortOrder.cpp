#include "SortOrder.h"

#include <kiocore/config/Localizer.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <string>
#include <utility>

namespace kioui::controls {
namespace {

std::uint64_t HashOf(const ui::UTF16String& inText)
{
    return std::hash<ui::UTF16String>()(inText);
}

/// What most keys differ in, to compare as a number.
std::uint64_t Beginning(const std::string& inKey)
{
    std::uint64_t beginning = 0;
    for (std::size_t at = 0; at < sizeof(beginning); ++at) {
        beginning = beginning << 8 | (at < inKey.size() ? static_cast<unsigned char>(inKey[at]) : 0U);
    }
    return beginning;
}

} // namespace

SortOrder::Known& SortOrder::Find(std::uint64_t inHash)
{
    std::size_t at = inHash & (mKnown.size() - 1);
    while (mKnown[at].place != kNowhere && mKnown[at].hash != inHash) {
        at = (at + 1) & (mKnown.size() - 1);
    }
    return mKnown[at];
}

SortOrder::Places SortOrder::KnownPlaces(const Texts& inTexts)
{
    Places places;
    if (mKnown.empty()) {
        return places;
    }
    places.reserve(inTexts.size());
    for (const ui::UTF16String& text : inTexts) {
        places.push_back(Find(HashOf(text)).place);
        if (places.back() == kNowhere) {
            return {};
        }
    }
    return places;
}

SortOrder::Places SortOrder::Compare(const Texts& inTexts) const
{
    struct Keyed {
        std::uint64_t beginning;
        std::uint32_t index;
    };
    std::vector<std::string> keys;
    std::vector<Keyed> order;
    keys.reserve(inTexts.size());
    order.reserve(inTexts.size());
    for (const ui::UTF16String& text : inTexts) {
        keys.push_back(kiocore::config::SortKeyUnderDefaultLocale(text));
        order.push_back({Beginning(keys.back()), std::uint32_t(order.size())});
    }
    const auto isLess = [&keys](const Keyed& a, const Keyed& b) {
        return a.beginning != b.beginning ? a.beginning < b.beginning : keys[a.index] < keys[b.index];
    };
    std::sort(order.begin(), order.end(), isLess);
    Places places(inTexts.size());
    std::uint32_t place = 0;
    for (std::size_t at = 0; at < order.size(); ++at) {
        place += at > 0 && isLess(order[at - 1], order[at]); // equal texts share a place
        places[order[at].index] = place;
    }
    return places;
}

void SortOrder::Remember(const Texts& inTexts, const Places& inPlaces)
{
    mKnown.assign(std::bit_ceil(inTexts.size() * 3 / 2 + 1), {});
    for (std::size_t at = 0; at < inTexts.size(); ++at) {
        const std::uint64_t hash = HashOf(inTexts[at]);
        Known& known = Find(hash);
        if (known.place != kNowhere && known.place != inPlaces[at]) {
            mKnown.clear(); // two texts of one hash
            return;
        }
        known = {hash, inPlaces[at]};
    }
}

void SortOrder::Sort(UI_MultiColumnTree::Rows& ioRows,
                     const std::function<ui::UTF16String(UI_MultiColumnTreeRow*)>& inText, bool inAscending)
{
    Texts texts;
    texts.reserve(ioRows.size());
    for (const UI_MultiColumnTreeRowPtr& row : ioRows) {
        texts.push_back(inText(row.get()));
    }
    Places places = KnownPlaces(texts);
    if (places.empty()) {
        places = Compare(texts);
        Remember(texts, places);
    }
    std::vector<std::uint64_t> order; // the place, and behind it where the row stood
    order.reserve(places.size());
    for (const std::uint32_t place : places) {
        order.push_back(std::uint64_t(inAscending ? place : ~place) << 32 | order.size());
    }
    std::sort(order.begin(), order.end());
    UI_MultiColumnTree::Rows sorted;
    sorted.reserve(ioRows.size());
    for (const std::uint64_t one : order) {
        sorted.push_back(std::move(ioRows[std::uint32_t(one)]));
    }
    ioRows = std::move(sorted);
}

} // namespace kioui::controls
