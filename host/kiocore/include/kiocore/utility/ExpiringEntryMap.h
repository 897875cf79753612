#pragma once

#include <kiocore/Export.h>
#include <kiocore/threads/DelayedExecutor.h>
#include <kiocore/threads/RecursiveMutex.h>
#include <kiocore/utility/TimeStampable.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>

namespace kiocore::utility {

/// The executor that maps of expiring entries clean up on.
KIO_EXPORT std::shared_ptr<threads::DelayedExecutor> CreateExpiringEntryMapExecutor();

/// Puts another executor in its place for maps made meanwhile, so that a test decides when time passes.
class KIO_EXPORT ScReplaceExpiringEntryMapExecutor {
public:
    explicit ScReplaceExpiringEntryMapExecutor(std::shared_ptr<threads::DelayedExecutor> inReplacement);
    ~ScReplaceExpiringEntryMapExecutor();
    ScReplaceExpiringEntryMapExecutor(const ScReplaceExpiringEntryMapExecutor&) = delete;
    ScReplaceExpiringEntryMapExecutor& operator=(const ScReplaceExpiringEntryMapExecutor&) = delete;

private:
    std::shared_ptr<threads::DelayedExecutor> mPrevious;
};

/// The steady time, to a few milliseconds and for a quarter of the price; the replaced clock's while one is
/// (threads/Clock.h).
KIO_EXPORT TimeStampable::Time CoarseSteadyTime() noexcept;

/// How long a map keeps what.
struct ExpiringEntryMapSettings {
    std::size_t keptRegardlessOfAge = 0;   ///< a pass does nothing while there are no more entries than this
    std::chrono::milliseconds age{300000}; ///< since an entry's last Find, or its Insert
    std::chrono::milliseconds passDelay{10000};
    std::chrono::milliseconds lockLimit = threads::kLockLimit;
};

/// Keeps entries that are in use: one that nobody has found for its age goes. Only the pass removes entries.
/// It runs on the executor a delay after it was queued, at most one is queued at a time: by Insert, and by a
/// pass that leaves entries. So an entry may live for its age and one delay more.
///
/// Threading: any thread. Values are let go without our lock, which is recursive.
/// @tparam Value  derives from TimeStampable.
template <typename Key, typename Value, typename Compare = std::less<Key>>
class ExpiringEntryMap : public std::enable_shared_from_this<ExpiringEntryMap<Key, Value, Compare>> {
public:
    using ValueRef = std::shared_ptr<Value>;

    /// A pass that is queued does not keep the map alive.
    static std::shared_ptr<ExpiringEntryMap> Create(const ExpiringEntryMapSettings& inSettings,
                                                    std::shared_ptr<threads::DelayedExecutor> inExecutor);

    /// The entry, its time stamp raised to now; empty when there is none.
    ValueRef Find(const Key& inKey);
    /// Adds an entry or replaces the one that has the key, stamped with now, and queues a pass.
    void Insert(const Key& inKey, ValueRef inValue);
    std::size_t Size() const;

private:
    ExpiringEntryMap(const ExpiringEntryMapSettings& inSettings,
                     std::shared_ptr<threads::DelayedExecutor> inExecutor);
    void QueuePass();
    void RunPass();

    const ExpiringEntryMapSettings mSettings;
    const std::shared_ptr<threads::DelayedExecutor> mExecutor;
    mutable threads::RecursiveMutex mLock{"ExpiringEntryMap"}; // guards the members below
    std::map<Key, ValueRef, Compare> mEntries;
    bool mPassIsQueued = false;
};

} // namespace kiocore::utility
