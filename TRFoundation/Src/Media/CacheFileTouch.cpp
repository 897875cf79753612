#include "CacheFileTouch.h"

#include <kiocore/debug/Trace.h>
#include <kiocore/utility/FileUtils.h>

#include <atomic>
#include <cstdint>

namespace TR {
namespace {

constexpr const char* kTraceChannel = "MCDB";
constexpr int kTraceLevel = 8;

/// Asks the trace again only when its settings changed.
bool IsTraced()
{
    static std::atomic<std::uint32_t> seenChangeCount{0};
    static std::atomic<bool> enabled{false};
    const std::uint32_t changeCount = kiocore::debug::TraceChangeCount();
    if (seenChangeCount.exchange(changeCount) != changeCount) {
        enabled.store(kiocore::debug::TraceEnabled(kTraceChannel, kTraceLevel));
    }
    return enabled.load();
}

} // namespace

void TouchCacheFile(const kiocore::UTF16String& inPath)
{
    try {
        kiocore::utility::FileUtils::UpdateFileAccessedTime(inPath);
    } catch (...) {
        if (IsTraced()) {
            kiocore::debug::Trace(
                kTraceLevel, kTraceChannel,
                u"MediaAcceleratorDatabaseEntry::FindItem - FileUtils UpdateFileAccessTime threw an "
                u"exception for path: " +
                    inPath + u"\n");
        }
    }
}

} // namespace TR
