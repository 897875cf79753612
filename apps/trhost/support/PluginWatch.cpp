#include "PluginWatch.h"

#include "Failure.h"

#include <effects/run/BlackBox.h>
#include <effects/run/Watchdog.h>
#include <kiocore/debug/Trace.h>

#include <atomic>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;

/// Straight to standard error: the main thread, which else says things, may be what hangs.
void TellOfHang(const std::string& inMatchName, std::chrono::seconds inRunning)
{
    const std::string line = kiocore::utility::ToUTF8(Text(
        "$$$/Halcyon/TrHost/EffectHangs=@0 has been running for @1 s and does not come back; Ctrl-C twice "
        "ends trhost, trhost effects disable @0 switches it off",
        {ToUTF16(inMatchName), ToUTF16(std::to_string(inRunning.count()))}));
    std::fprintf(stderr, "trhost: %s\n", line.c_str());
}

class Watch {
public:
    Watch(kiocore::UTF16String inCrashFolder, std::chrono::seconds inLimit)
        : mFolder(std::move(inCrashFolder)), mWatchdog(&TellOfHang, inLimit)
    {}

    void Enter(std::string_view inMatchName) noexcept
    {
        if (!mHasTried.load(std::memory_order_acquire)) [[unlikely]] {
            MakeBox();
        }
        if (mBox) {
            mBox->Enter(inMatchName);
        }
        mWatchdog.Enter(inMatchName);
    }
    void Leave() noexcept
    {
        mWatchdog.Leave();
        if (mBox) {
            mBox->Leave();
        }
    }

private:
    void MakeBox() noexcept
    {
        const std::lock_guard guard(mLock); // others wait: they are to be named too
        if (mHasTried.load(std::memory_order_relaxed)) {
            return;
        }
        try {
            mBox.emplace(mFolder);
        } catch (const std::exception& error) {
            // Effects run all the same; only a suspect goes unnamed.
            kiocore::debug::Trace(1, "Effects", std::string("no black box: ") + error.what());
        }
        mHasTried.store(true, std::memory_order_release);
    }

    const kiocore::UTF16String mFolder;
    std::mutex mLock; // one thread makes the box
    std::atomic<bool> mHasTried{false};
    std::optional<effects::BlackBox> mBox;
    effects::Watchdog mWatchdog;
};

std::unique_ptr<Watch> sWatch;

} // namespace

void StartPluginWatch(const kiocore::UTF16String& inCrashFolder, std::chrono::seconds inLimit)
{
    sWatch = std::make_unique<Watch>(inCrashFolder, inLimit);
}

void StopPluginWatch() noexcept
{
    sWatch.reset();
}

ScWatchedCall::ScWatchedCall(std::string_view inMatchName) noexcept : mIsWatched(sWatch != nullptr)
{
    if (mIsWatched) {
        sWatch->Enter(inMatchName);
    }
}

ScWatchedCall::~ScWatchedCall()
{
    if (mIsWatched) {
        sWatch->Leave();
    }
}

} // namespace trhost
