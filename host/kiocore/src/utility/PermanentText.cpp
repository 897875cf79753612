#include <kiocore/utility/PermanentText.h>

#include "platform/Pages.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <unordered_set>

namespace kiocore::utility {
namespace {

constexpr std::size_t kUsualBlockBytes = 64 * 1024;

/// Texts one behind the other in blocks of pages, each block written to only while a text is added.
class TextStore {
public:
    std::string_view Add(std::string_view inText)
    {
        const std::lock_guard lock(mLock);
        if (const auto found = mTexts.find(inText); found != mTexts.end()) {
            return *found;
        }
        const std::size_t bytes = inText.size() + 1;
        if (bytes > mFreeBytes) {
            const std::size_t blockBytes = std::max(bytes, kUsualBlockBytes);
            mBlock = static_cast<char*>(platform::MapPages(blockBytes));
            mBlockBytes = mFreeBytes = blockBytes;
        }
        char* const place = mBlock + (mBlockBytes - mFreeBytes);
        platform::SetPagesWritable(mBlock, mBlockBytes, true);
        std::memcpy(place, inText.data(), inText.size());
        platform::SetPagesWritable(mBlock, mBlockBytes, false);
        mTexts.emplace(place, inText.size()); // when this throws, the next text takes the place
        mFreeBytes -= bytes;
        return {place, inText.size()};
    }

private:
    std::mutex mLock; // guards the members below
    std::unordered_set<std::string_view> mTexts;
    char* mBlock = nullptr;
    std::size_t mBlockBytes = 0;
    std::size_t mFreeBytes = 0;
};

} // namespace

ImmutableString MakePermanentText(std::string_view inText)
{
    // Never destroyed: texts are read until the process is gone.
    static TextStore* const store = new TextStore;
    return ImmutableString::FromPermanent(store->Add(inText));
}

} // namespace kiocore::utility
