#pragma once

#include <kiocore/Export.h>
#include <kiocore/threads/DelayedExecutor.h>
#include <kiocore/threads/RecursiveMutex.h>
#include <kiocore/utility/TimeStampable.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

namespace kiocore::utility {

/// The executor that maps of expiring entries clean up on: one for all who hold it at the same time. Its
/// thread begins with the first pass and ends when nobody holds it any more.
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
/// An executor that refuses a pass is asked again at the next Insert.
///
/// Threading: any thread. Values are let go, and the executor is called, without our lock, which is
/// recursive.
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
    using Entries = std::map<Key, ValueRef, Compare>;

    ExpiringEntryMap(const ExpiringEntryMapSettings& inSettings,
                     std::shared_ptr<threads::DelayedExecutor> inExecutor)
        : mSettings(inSettings), mExecutor(std::move(inExecutor))
    {}
    threads::ScLock Lock() const { return threads::ScLock(mLock, mSettings.lockLimit); }
    /// Called under the lock. @return whether the caller is to submit a pass, unlocked.
    bool NeedsToQueuePass() { return !std::exchange(mPassIsQueued, true); }
    void SubmitPass() noexcept;
    void RunPass();

    const ExpiringEntryMapSettings mSettings;
    const std::shared_ptr<threads::DelayedExecutor> mExecutor;
    mutable threads::RecursiveMutex mLock{"ExpiringEntryMap"}; // guards the members below
    Entries mEntries;
    bool mPassIsQueued = false;
};

// ---------------------------------------------------------------------------------------------

template <typename Key, typename Value, typename Compare>
std::shared_ptr<ExpiringEntryMap<Key, Value, Compare>>
ExpiringEntryMap<Key, Value, Compare>::Create(const ExpiringEntryMapSettings& inSettings,
                                              std::shared_ptr<threads::DelayedExecutor> inExecutor)
{
    return std::shared_ptr<ExpiringEntryMap>(new ExpiringEntryMap(inSettings, std::move(inExecutor)));
}

template <typename Key, typename Value, typename Compare>
typename ExpiringEntryMap<Key, Value, Compare>::ValueRef
ExpiringEntryMap<Key, Value, Compare>::Find(const Key& inKey)
{
    const TimeStampable::Time now = CoarseSteadyTime();
    const threads::ScLock lock = Lock();
    const auto found = mEntries.find(inKey);
    if (found == mEntries.end()) {
        return nullptr;
    }
    // Within the lock: a pass must not take for idle what somebody is just getting.
    found->second->RaiseTimeStamp(now);
    return found->second;
}

template <typename Key, typename Value, typename Compare>
void ExpiringEntryMap<Key, Value, Compare>::Insert(const Key& inKey, ValueRef inValue)
{
    inValue->RaiseTimeStamp(CoarseSteadyTime());
    bool submit;
    {
        const threads::ScLock lock = Lock();
        mEntries[inKey].swap(inValue); // what was there is let go unlocked, with the argument
        submit = NeedsToQueuePass();
    }
    if (submit) {
        SubmitPass();
    }
}

template <typename Key, typename Value, typename Compare>
std::size_t ExpiringEntryMap<Key, Value, Compare>::Size() const
{
    const threads::ScLock lock = Lock();
    return mEntries.size();
}

template <typename Key, typename Value, typename Compare>
void ExpiringEntryMap<Key, Value, Compare>::SubmitPass() noexcept
{
    int result = -1;
    try {
        result = mExecutor->SubmitAfter(mSettings.passDelay, [weak = this->weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->RunPass();
            }
        });
    } catch (...) {
        threads::ReportException("Queueing a pass over a map of expiring entries");
    }
    if (result < 0) {
        const threads::ScLock lock = Lock();
        mPassIsQueued = false;
    }
}

template <typename Key, typename Value, typename Compare>
void ExpiringEntryMap<Key, Value, Compare>::RunPass()
{
    const TimeStampable::Time oldest = CoarseSteadyTime() - mSettings.age;
    Entries expired; // let go unlocked
    bool submit = false;
    {
        const threads::ScLock lock = Lock();
        mPassIsQueued = false;
        if (mEntries.size() <= mSettings.keptRegardlessOfAge) {
            return;
        }
        for (auto entry = mEntries.begin(); entry != mEntries.end();) {
            const auto next = std::next(entry);
            if (entry->second->GetTimeStamp() < oldest) {
                expired.insert(expired.end(), mEntries.extract(entry)); // moves the node: nothing allocates
            }
            entry = next;
        }
        submit = !mEntries.empty() && NeedsToQueuePass();
    }
    if (submit) {
        SubmitPass();
    }
}

} // namespace kiocore::utility
