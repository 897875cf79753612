#include "SortOrder.h"

#include <kiocore/config/Localizer.h>

#include <algorithm>
#include <string>
#include <utility>

namespace kioui::controls {

void SortRows(UI_MultiColumnTree::Rows& ioRows,
              const std::function<ui::UTF16String(UI_MultiColumnTreeRow*)>& inText, bool inAscending)
{
    struct Keyed {
        std::string key;
        UI_MultiColumnTreeRowPtr row;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(ioRows.size());
    for (const UI_MultiColumnTreeRowPtr& row : ioRows) {
        keyed.push_back({kiocore::config::SortKeyUnderDefaultLocale(inText(row.get())), row});
    }
    std::vector<Keyed*> order;
    order.reserve(keyed.size());
    for (Keyed& one : keyed) {
        order.push_back(&one);
    }
    std::stable_sort(order.begin(), order.end(), [inAscending](const Keyed* a, const Keyed* b) {
        return inAscending ? a->key < b->key : b->key < a->key;
    });
    std::transform(order.begin(), order.end(), ioRows.begin(),
                   [](Keyed* one) { return std::move(one->row); });
}

} // namespace kioui::controls
