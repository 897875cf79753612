#pragma once

#include <kiocore/Export.h>
#include <kiocore/debug/Trace.h>

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kiocore::threads {

/// A lock that its owner may take again. Waiting longer than the limit given to Lock is reported once
/// on trace channel "Threads" (level 1: who waits and for how long already, for what, who holds it) and
/// the wait goes on: a lock is never given up, because no caller could go on without it.
///
/// Spins for a moment before it sleeps: the map look-ups it guards take less time than a wake-up.
/// Nothing is made or released with it, so a static one works from before the first constructor until
/// after the last destructor.
///
/// Threading: any thread. Unlock on the thread that locked.
class KIO_EXPORT RecursiveMutex {
public:
    /// @param inName  for reports; may be null; must outlive the mutex.
    constexpr explicit RecursiveMutex(const char* inName = nullptr) noexcept : mName(inName) {}
    ~RecursiveMutex() = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    /// @param inName   who asks, for reports; may be null; must outlive the process's use of the mutex
    ///     (a literal).
    /// @param inLimit  after which a wait is reported.
    void Lock(const char* inName, std::chrono::milliseconds inLimit)
    {
        if (!TryLock(inName)) {
            LockSlowly(inName, inLimit);
        }
    }
    /// @return false at once when another thread holds it.
    bool TryLock() { return TryLock(nullptr); }
    void Unlock()
    {
        if (--mDepth != 0) {
            return;
        }
        mHolder.store(nullptr, std::memory_order_relaxed);
        mOwner.store(0, std::memory_order_relaxed);
        if (mState.exchange(kFree, std::memory_order_release) == kHeldAndAwaited) {
            WakeOne();
        }
    }

private:
    static constexpr std::uint32_t kFree = 0;
    static constexpr std::uint32_t kHeld = 1;
    static constexpr std::uint32_t kHeldAndAwaited = 2; // somebody sleeps, or is about to

    // Never 0, and read from a register: no look-up, no guard.
    static std::uintptr_t CallingThread() noexcept { return (std::uintptr_t)pthread_self(); }

    bool TryLock(const char* inName)
    {
        const std::uintptr_t caller = CallingThread();
        std::uint32_t expected = kFree;
        if (mState.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
                                           std::memory_order_relaxed)) {
            Own(caller, inName);
            return true;
        }
        // Only the caller itself can have stored its own identity, so no order is needed.
        if (mOwner.load(std::memory_order_relaxed) == caller) {
            ++mDepth;
            return true;
        }
        return false;
    }
    void Own(std::uintptr_t inCaller, const char* inName) noexcept
    {
        mOwner.store(inCaller, std::memory_order_relaxed);
        mHolder.store(inName, std::memory_order_relaxed);
        mDepth = 1;
    }
    bool Spin(const char* inName) noexcept;
    void LockSlowly(const char* inName, std::chrono::milliseconds inLimit);
    void ReportWait(const char* inName, std::chrono::milliseconds inWaited) const;
    void WakeOne() noexcept;

    std::atomic<std::uint32_t> mState{kFree};
    std::uint32_t mDepth = 0; // of the owner; touched by the owner only
    std::atomic<std::uintptr_t> mOwner{0};
    std::atomic<const char*> mHolder{nullptr}; // the owner's name for itself
    std::atomic<std::uint32_t> mUsualSpins{0}; // how many rounds it took lately to get it
    const char* const mName;
};

/// How long the library waits for its locks before the wait is reported.
inline constexpr std::chrono::milliseconds kLockLimit{60000};

/// Holds a RecursiveMutex for a scope. One that is asked for by name shows on trace channel "Host".
class ScLock {
public:
    explicit ScLock(RecursiveMutex& inMutex, std::chrono::milliseconds inLimit = kLockLimit,
                    const char* inName = nullptr)
        : mMutex(inMutex)
    {
        if (inName) {
            KIO_HOST_CALL("kiocore::threads::RecursiveMutex::Lock", inName,
                          static_cast<long long>(inLimit.count()));
        }
        mMutex.Lock(inName, inLimit);
    }
    ~ScLock() { mMutex.Unlock(); }
    ScLock(const ScLock&) = delete;
    ScLock& operator=(const ScLock&) = delete;

private:
    RecursiveMutex& mMutex;
};

} // namespace kiocore::threads
