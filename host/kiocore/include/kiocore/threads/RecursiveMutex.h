#pragma once

#include <kiocore/Export.h>

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kiocore::threads {

/// A lock that its owner may take again. Waiting longer than the limit given to Lock is reported once
/// on trace channel "Threads" (level 1: who waits, who holds, since when) and the wait goes on: a lock
/// is never given up, because no caller could go on without it.
///
/// Spins for a moment before it sleeps: the map look-ups it guards take less time than a wake-up.
///
/// Threading: any thread. Unlock on the thread that locked.
class KIO_EXPORT RecursiveMutex {
public:
    /// @param inName  for reports; may be null; must outlive the mutex.
    explicit RecursiveMutex(const char* inName = nullptr) noexcept;
    ~RecursiveMutex();
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    /// @param inName   who asks, for reports; may be null.
    /// @param inLimit  after which a wait is reported.
    void Lock(const char* inName, std::chrono::milliseconds inLimit);
    /// @return false at once when another thread holds it.
    bool TryLock();
    void Unlock();

private:
    bool OwnedByCaller() const noexcept;
    void LockSlowly(const char* inName, std::chrono::milliseconds inLimit);

    std::atomic<std::uint32_t> mState{0}; // 0 free, 1 held, 2 held and somebody sleeps
    std::uint32_t mDepth = 0;             // of the owner; written by the owner only
    std::atomic<std::uintptr_t> mOwner{0};
    const char* const mName;
};

/// How long the library waits for its locks before the wait is reported.
inline constexpr std::chrono::milliseconds kLockLimit{60000};

/// Holds a RecursiveMutex for a scope.
class ScLock {
public:
    explicit ScLock(RecursiveMutex& inMutex, std::chrono::milliseconds inLimit = kLockLimit,
                    const char* inName = nullptr)
        : mMutex(inMutex)
    {
        mMutex.Lock(inName, inLimit);
    }
    ~ScLock() { mMutex.Unlock(); }
    ScLock(const ScLock&) = delete;
    ScLock& operator=(const ScLock&) = delete;

private:
    RecursiveMutex& mMutex;
};

} // namespace kiocore::threads
