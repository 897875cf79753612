#pragma once

#include <pthread.h>

namespace kiocore::platform {

/// Calls a function at the end of each thread that set a pointer, with that pointer: after the destructors of
/// the thread's thread_local objects, and again if one of those functions sets it once more. Not for the
/// thread that ends the process.
///
/// Threading: any thread.
class ThreadEndSlot {
public:
    /// @throws std::bad_alloc when the system has no more slots.
    explicit ThreadEndSlot(void (*inAtEnd)(void*));
    ThreadEndSlot(const ThreadEndSlot&) = delete;
    ThreadEndSlot& operator=(const ThreadEndSlot&) = delete;

    /// @throws std::bad_alloc.
    void Set(void* inPointer) const;

private:
    pthread_key_t mKey; // never given back: threads may outlive what is destroyed at exit
};

} // namespace kiocore::platform
