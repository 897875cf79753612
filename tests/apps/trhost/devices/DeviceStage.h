#pragma once

#include <devices/DeviceThread.h>
#include <devices/Player.h>
#include <devices/Recorder.h>

#include <support/ScMainThread.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace devicetests {

using namespace trhost::devices;

/// Hardware in a test's hands, shared by the outputs and inputs that are opened on it: only one at a time, as
/// with a real sound card.
class FakeHardware {
public:
    OutputOpener Output();
    InputOpener Input();

    bool IsOpen() const { return mIsOpen; }
    int OpenCount() const { return mOpenCount; }
    /// Throws on each try to open, and on each use, with this code; 0: never.
    void Refuse(std::uint32_t inCode) { mRefusal = inCode; }
    void Break() { mBroken = true; }
    /// How many frames it takes, or gives, before it has to be given more leave.
    void Allow(std::int64_t inFrames) { mAllowed += inFrames; }
    /// How many of the frames that it took will not be heard when it is closed.
    void SetQueued(int inFrames) { mQueued = inFrames; }
    std::vector<float> Taken() const;
    /// Lets closing take until FinishClosing.
    void CloseSlowly() { mClosesSlowly = true; }
    bool IsClosing() const { return mIsClosing; }
    void FinishClosing();

private:
    class FakeOutput;
    class FakeInput;
    void Open();
    void Close();
    int Use(int inMostFrames);

    std::atomic<bool> mIsOpen{false};
    std::atomic<int> mOpenCount{0};
    std::atomic<std::uint32_t> mRefusal{0};
    std::atomic<bool> mBroken{false};
    std::atomic<std::int64_t> mAllowed{0};
    std::atomic<int> mQueued{0};
    std::atomic<bool> mClosesSlowly{false};
    std::atomic<bool> mIsClosing{false};
    mutable std::mutex mLock; // guards mTaken
    std::vector<float> mTaken;
};

/// The main thread, the device thread, and what happened on them.
class DeviceStage {
public:
    DeviceStage();

    DeviceThread& Devices() { return *mDevices; }
    std::unique_ptr<Player> MakePlayer(const char* inName, std::uint32_t inKey, FakeHardware& inHardware,
                                       std::unique_ptr<trhost::media::IAudioReader> inMedia = {});
    std::unique_ptr<Recorder> MakeRecorder(const char* inName, std::uint32_t inKey, FakeHardware& inHardware);

    /// Runs the main thread until it is so; fails the test when that takes a minute.
    void Await(const char* inWhat, const std::function<bool()>& inCondition);
    void AwaitIdle();
    /// Asks for the slot, and waits until the request was answered and the hardware is open.
    void Activate(DeviceRunner& inRunner);
    bool Has(const std::string& inEvent);
    /// "player1 opened", ...: those of the given events that happened, in order.
    std::vector<std::string> Order(const std::vector<std::string>& inEvents);

private:
    void Collect();

    support::ScMainThread mMain;
    std::unique_ptr<DeviceThread> mDevices;
    std::vector<std::string> mEvents;
};

} // namespace devicetests
