#pragma once

#include <kiocore/threads/MainThread.h>

namespace support {

/// Makes the test's thread the main thread for as long as it lives; runs what is left at the end, so what
/// posted work uses has to be declared before it, or the work run before the test ends.
class ScMainThread {
public:
    ScMainThread() : mThread(kiocore::threads::RegisterMainThread()) {}
    ~ScMainThread() { kiocore::threads::UnregisterMainThread(); }
    ScMainThread(const ScMainThread&) = delete;
    ScMainThread& operator=(const ScMainThread&) = delete;

    kiocore::threads::MainThread* operator->() const { return mThread.get(); }

private:
    const std::shared_ptr<kiocore::threads::MainThread> mThread;
};

} // namespace support
