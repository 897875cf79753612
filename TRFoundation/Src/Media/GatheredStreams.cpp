#include "GatheredStreams.h"

#include <algorithm>

namespace TR {

using kiocore::UTF16View;

namespace {

/// Puts elements in the order of a text in them and drops all but the first of equal ones. Records are
/// written in this order, so mostly there is nothing to do.
/// @return behind the last one that stays.
template <typename Element>
Element* PutInOrder(Element* inFirst, Element* inLast, UTF16View Element::*inText)
{
    const auto notBefore = [&](const Element& a, const Element& b) { return a.*inText >= b.*inText; };
    if (std::adjacent_find(inFirst, inLast, notBefore) == inLast) {
        return inLast;
    }
    std::stable_sort(inFirst, inLast,
                     [&](const Element& a, const Element& b) { return a.*inText < b.*inText; });
    return std::unique(inFirst, inLast,
                       [&](const Element& a, const Element& b) { return a.*inText == b.*inText; });
}

} // namespace

GatheredStreams::GatheredStreams(std::size_t inItems)
{
    static constexpr std::size_t kMostAtOnce = 256;
    static constexpr std::size_t kUsualUnits = 128; // of an item's texts
    const std::size_t items = std::min(inItems, kMostAtOnce);
    mItems.reserve(items);
    mTexts.reserve(items * kUsualUnits);
}

GatheredStreams::Text GatheredStreams::Keep(UTF16View inText)
{
    const Text text{mTexts.size(), inText.size()};
    mTexts.append(inText);
    return text;
}

void GatheredStreams::BeginStream(UTF16View inStreamID)
{
    mStreams.push_back({Keep(inStreamID), mItems.size()});
}

void GatheredStreams::Add(const MediaAcceleratorItem& inItem)
{
    mItems.push_back({Keep(inItem.key), Keep(inItem.path), Keep(inItem.winPath), inItem.canBeCopied});
}

const std::vector<PackedEntry::StreamView>& GatheredStreams::InOrder()
{
    mItemViews.clear();
    mItemViews.reserve(mItems.size());
    for (const Item& item : mItems) {
        mItemViews.push_back({View(item.key), View(item.path), View(item.winPath), item.canBeCopied});
    }
    mStreamViews.clear();
    mStreamViews.reserve(mStreams.size());
    for (std::size_t s = 0; s < mStreams.size(); ++s) {
        const std::size_t end = s + 1 < mStreams.size() ? mStreams[s + 1].firstItem : mItems.size();
        PackedEntry::ItemView* const first = mItemViews.data() + mStreams[s].firstItem;
        PackedEntry::ItemView* const last =
            PutInOrder(first, mItemViews.data() + end, &PackedEntry::ItemView::key);
        mStreamViews.push_back({View(mStreams[s].id), {first, last}});
    }
    const auto* const last = PutInOrder(mStreamViews.data(), mStreamViews.data() + mStreamViews.size(),
                                        &PackedEntry::StreamView::id);
    mStreamViews.resize(static_cast<std::size_t>(last - mStreamViews.data()));
    return mStreamViews;
}

} // namespace TR
