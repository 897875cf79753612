#include "Schedule.h"

#include "ScriptedDevice.h"

#include <array>
#include <semaphore>
#include <thread>

namespace support {
namespace {

using kiocore::threads::Gate;

constexpr int kDevices = 4;
constexpr int kNone = -1;

/// What the manager is meant to do, with devices as numbers.
struct Model {
    struct Device {
        std::uint32_t priority = 5;
        std::uint32_t key = 1;
        bool opensAtOnce = true;
    };
    std::array<Device, kDevices> devices;
    int active = kNone;
    int pending = kNone;
    bool hasGate = false;
    bool gateIsOpen = false;
    std::uint32_t key = 0;
    std::vector<std::string> notes;

    static std::string Name(int inDevice) { return std::string(1, static_cast<char>('a' + inDevice)); }
    void Note(int inDevice, const char* inCall) { notes.push_back(Name(inDevice) + inCall); }

    void AskToLetGo(int inHolder, bool inForAnother)
    {
        Note(inHolder, ".key");
        key = devices[inHolder].key;
        hasGate = true;
        gateIsOpen = false;
        Note(inHolder, inForAnother ? ".preempt" : ".deactivate");
        gateIsOpen = devices[inHolder].opensAtOnce;
    }

    enum class Outcome { kTrue, kFalse, kOnItsWay };
    /// Up to where a hand-over is on its way, its holder asked.
    /// @param inCallBack  a device that the holder activates while it is asked to let go, or kNone.
    Outcome BeginActivate(int inDevice, int inCallBack)
    {
        if (inDevice == pending) {
            return Outcome::kTrue;
        }
        if (inDevice == active) {
            Note(active, ".activate");
            return Outcome::kTrue;
        }
        const bool another = pending != kNone;
        pending = inDevice;
        if (active != kNone) {
            Note(inDevice, ".priority");
            Note(active, ".priority");
            if (devices[inDevice].priority <= devices[active].priority) {
                if (another) {
                    return Outcome::kFalse;
                }
                AskToLetGo(active, true);
                if (inCallBack != kNone) {
                    BeginActivate(inCallBack, kNone);
                }
            }
        }
        return Outcome::kOnItsWay;
    }
    /// Whether the activation on its way waits now.
    bool Waits()
    {
        if (!hasGate || key == 0) {
            return false;
        }
        Note(pending, ".key");
        if (key == devices[pending].key) {
            return false;
        }
        hasGate = false;
        return !gateIsOpen;
    }
    bool EndActivate(int inDevice)
    {
        active = pending;
        pending = kNone;
        Note(active, ".activate");
        return active == inDevice;
    }

    void Deactivate(int inDevice)
    {
        if (inDevice == active && active != kNone) {
            AskToLetGo(active, false);
            active = kNone;
        }
    }
};

/// A thread that makes one call at a time and says when it is done.
class Caller {
public:
    Caller()
        : mThread([this] {
              for (;;) {
                  mGo.acquire();
                  if (!mCall) {
                      return;
                  }
                  mCall();
                  mStopped->release();
              }
          })
    {}
    ~Caller()
    {
        mCall = nullptr;
        mGo.release();
        mThread.join();
    }
    /// @param ioStopped  released when the call is over.
    void Begin(std::function<void()> inCall, std::binary_semaphore& ioStopped)
    {
        mCall = std::move(inCall);
        mStopped = &ioStopped;
        mGo.release();
    }

private:
    std::function<void()> mCall;
    std::binary_semaphore* mStopped = nullptr;
    std::binary_semaphore mGo{0};
    std::thread mThread;
};

class Player {
public:
    explicit Player(std::span<const std::uint8_t> inSteps) : mSteps(inSteps)
    {
        for (int index = 0; index < kDevices; ++index) {
            mDevices[index] = kiocore::classref::MakeObject<ScriptedDevice>(Model::Name(index), mNotes);
        }
    }

    std::string Play()
    {
        while (mFault.empty() && !mSteps.empty()) {
            const std::uint8_t step = Next();
            const int device = step % kDevices;
            if (mWaiting == kNone) {
                StepAlone(step / kDevices % 16, device);
            } else {
                StepDuringWait(step / kDevices % 4, device);
            }
        }
        if (mWaiting != kNone) {
            OpenGate();
        }
        return mFault;
    }

private:
    std::uint8_t Next()
    {
        if (mSteps.empty()) {
            return 0;
        }
        const std::uint8_t byte = mSteps.front();
        mSteps = mSteps.subspan(1);
        return byte;
    }

    void StepAlone(int inKind, int inDevice)
    {
        Model::Device& device = mModel.devices[inDevice];
        switch (inKind) {
        case 0:
            mCalled = "deactivate " + Model::Name(inDevice);
            if (mModel.active != kNone) { // with an empty slot it is no call for a device
                mModel.Deactivate(inDevice);
                mManager->DeactivateDevice(mDevices[inDevice]);
                RememberGate();
            }
            break;
        case 1:
            mCalled = "reset";
            mModel.Deactivate(mModel.active);
            mManager->Reset();
            RememberGate();
            break;
        case 2:
            mCalled = "shutdown";
            mModel.active = kNone;
            mManager->Shutdown();
            break;
        case 3:
            device.priority = mDevices[inDevice]->priority = Next() % 3 + 4;
            return;
        case 4:
        case 5:
            device.key = mDevices[inDevice]->key = Next() % 3;
            return;
        case 6:
        case 7:
            device.opensAtOnce = mDevices[inDevice]->opensAtOnce = !device.opensAtOnce;
            return;
        case 8:
            OpenGate(); // of one that was deactivated and lets go late
            break;
        default:
            Activate(inDevice, inKind < 12 ? Next() % (2 * kDevices) : kDevices);
            return;
        }
        Compare();
    }

    /// What the manager provides for while one call waits.
    void StepDuringWait(int inKind, int inDevice)
    {
        if (inKind == 0) {
            mCalled = "open";
            OpenGate();
            return;
        }
        mCalled = "activate " + Model::Name(inDevice) + " meanwhile";
        if (MayOverlap(inDevice)) {
            const bool expected = mModel.BeginActivate(inDevice, kNone) == Model::Outcome::kTrue;
            bool found = !expected;
            mCallers[1].Begin([&] { found = mManager->ActivateDevice(mDevices[inDevice]); }, mStopped);
            mStopped.acquire();
            Expect(expected, found);
        }
        Compare();
    }

    bool MayOverlap(int inDevice) const
    {
        return inDevice == mModel.pending ||
               (mModel.active != kNone && inDevice != mModel.active &&
                mModel.devices[inDevice].priority <= mModel.devices[mModel.active].priority);
    }

    /// @param inCallBack  a device that the holder activates when it is asked to let go; none if too large.
    void Activate(int inDevice, int inCallBack)
    {
        mCalled = "activate " + Model::Name(inDevice);
        int callBack = kNone;
        const int holder = mModel.active;
        if (inCallBack < kDevices && holder != kNone && holder != inDevice && holder != inCallBack &&
            mModel.devices[inDevice].priority <= mModel.devices[holder].priority &&
            mModel.devices[inCallBack].priority <= mModel.devices[holder].priority) {
            callBack = inCallBack;
            mCalled += ", which activates " + Model::Name(callBack);
            mDevices[holder]->onPreempt = [this, callBack] { mManager->ActivateDevice(mDevices[callBack]); };
        }
        const Model::Outcome outcome = mModel.BeginActivate(inDevice, callBack);
        const bool onItsWay = outcome == Model::Outcome::kOnItsWay;
        const bool waits = onItsWay && mModel.Waits();
        if (waits) {
            // Asking the newcomer for its key is the last that it does before it waits.
            mDevices[mModel.pending]->onKey = [this] { mStopped.release(); };
        }
        mWaitingFound = false;
        mCallers[0].Begin([this, inDevice] { mWaitingFound = mManager->ActivateDevice(mDevices[inDevice]); },
                          waits ? mOver : mStopped);
        mStopped.acquire();
        if (waits) {
            mDevices[mModel.pending]->onKey = nullptr;
            mWaiting = inDevice;
            RememberGate();
            Compare();
            return;
        }
        RememberGate();
        Expect(onItsWay ? mModel.EndActivate(inDevice) : outcome == Model::Outcome::kTrue, mWaitingFound);
        Compare();
    }

    void RememberGate()
    {
        for (const auto& device : mDevices) {
            if (device->gate) {
                mGate = std::move(device->gate);
                device->gate.reset();
            }
        }
    }

    void OpenGate()
    {
        if (!mGate) {
            return;
        }
        mModel.gateIsOpen = true;
        if (mWaiting == kNone) {
            mGate->Open();
            return;
        }
        const bool expected = mModel.EndActivate(mWaiting);
        mGate->Open();
        mOver.acquire();
        mWaiting = kNone;
        Expect(expected, mWaitingFound);
        Compare();
    }

    void Expect(bool inExpected, bool inFound)
    {
        if (inExpected != inFound && mFault.empty()) {
            mFault = mCalled + ": expected " + (inExpected ? "true" : "false") + ", found the contrary";
        }
    }

    void Compare()
    {
        if (!mFault.empty()) {
            return;
        }
        if (mNotes != mModel.notes) {
            mFault = mCalled + ": expected calls";
            for (const auto& note : mModel.notes) {
                mFault += " " + note;
            }
            mFault += ", found";
            for (const auto& note : mNotes) {
                mFault += " " + note;
            }
        }
        for (int index = 0; index < kDevices; ++index) {
            if (mManager->IsActiveDevice(mDevices[index]) != (mModel.active == index)) {
                mFault = mCalled + ": expected " +
                         (mModel.active == kNone ? "none" : Model::Name(mModel.active)) +
                         " to be active; of " + Model::Name(index) + " the contrary holds";
            }
        }
        mNotes.clear();
        mModel.notes.clear();
    }

    static std::array<Caller, 2>& Callers()
    {
        static std::array<Caller, 2> callers;
        return callers;
    }

    std::span<const std::uint8_t> mSteps;
    Model mModel;
    std::vector<std::string> mNotes;
    std::array<kiocore::InterfaceRef<ScriptedDevice>, kDevices> mDevices;
    const kiocore::InterfaceRef<TR::PreemptionManager> mManager = TR::CreatePreemptionManager();
    std::array<Caller, 2>& mCallers = Callers();
    std::binary_semaphore mStopped{0}; // the running thread came to a stop: its call is over, or it waits
    std::binary_semaphore mOver{0};    // the call that waited is over
    std::shared_ptr<Gate> mGate;       // the manager's last one
    int mWaiting = kNone;              // whose activation waits
    bool mWaitingFound = false;
    std::string mCalled;
    std::string mFault;
};

} // namespace

std::string PlaySchedule(std::span<const std::uint8_t> inSteps)
{
    return Player(inSteps).Play();
}

} // namespace support
