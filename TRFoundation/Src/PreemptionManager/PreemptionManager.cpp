#include <TR/PreemptionManager.h>

#include <kiocore/debug/Contract.h>
#include <kiocore/utility/MemoryRecycler.h>

#include <chrono>
#include <mutex>

namespace TR {
namespace {

using kiocore::classref::RefToSelf;
using kiocore::classref::UnknownBase;
using kiocore::threads::Gate;

/// How long an activation waits for a holder that does not let go.
constexpr std::chrono::seconds kHandoverLimit{86400};

} // namespace

const std::uint32_t IPreemptableProxy::kPriorityRecorderRecording = 2;
const std::uint32_t IPreemptableProxy::kPriorityRecorderStopped = 5;
const std::uint32_t IPreemptableProxy::kPriorityPlayer = 5;

IPreemptableProxy::~IPreemptableProxy() = default;

const CFUUIDBytes& PreemptionManager::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x0d, 0x59, 0xaa, 0x44, 0x1b, 0x43, 0x4c, 0x85, 0x9e, 0x7c, 0xa4, 0x60, 0x8d, 0x16, 0xc7, 0x6b}};
    return kID;
}

PreemptionManager::PreemptionManager() = default;
PreemptionManager::~PreemptionManager() = default;

PreemptionManager::operator InterfaceRef<UnknownBase>()
{
    return InterfaceRef<UnknownBase>(RefToSelf(*this));
}

void* PreemptionManager::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == InterfaceID() ? this : nullptr;
}

InterfaceRef<PreemptionManager> PreemptionManager::CreateClassRefInternal(bool inCreate)
{
    static std::mutex sMutex;
    static std::weak_ptr<PreemptionManager> sWeakSingleton;

    const std::lock_guard lock(sMutex);
    std::shared_ptr<PreemptionManager> manager = sWeakSingleton.lock();
    if (!manager) {
        if (!inCreate) {
            return {};
        }
        manager =
            std::allocate_shared<PreemptionManager>(kiocore::allocator::STLAllocator<PreemptionManager>());
        manager->SetSelf(std::shared_ptr<UnknownBase>(manager));
        sWeakSingleton = manager;
    }
    PreemptionManager* const interface = manager.get();
    return InterfaceRef<PreemptionManager>(interface, std::move(manager));
}

bool PreemptionManager::ActivateDevice(const IPreemptableProxyRef& inDevice)
{
    if (!inDevice) {
        kiocore::debug::AssertionFailed(
            "inDevice != __null",
            "bool TR::PreemptionManager::ActivateDevice(const TR::IPreemptableProxyRef &)",
            "PreemptionManager/PreemptionManager");
        kiocore::utility::ThrowInputContractViolation();
    }
    if (inDevice == mPendingDevice) {
        return true; // somebody is at it already
    }
    if (!(inDevice == mActiveDevice)) {
        const IPreemptableProxyRef earlierPendingDevice = mPendingDevice;
        // Before anything is decided: a call in progress hands over to whoever stands here when its wait
        // ends, also to a device whose own call has returned false.
        mPendingDevice = inDevice;
        if (mActiveDevice) {
            const std::uint32_t newcomer = inDevice->GetPriority();
            if (newcomer <= mActiveDevice->GetPriority()) {
                if (earlierPendingDevice) {
                    return false;
                }
                mHandoverKey = mActiveDevice->GetHandoverKey();
                mHandoverGate = std::make_shared<Gate>(false);
                mActiveDevice->Preempt(inDevice, mHandoverGate);
            }
        }
        WaitForHandover();
        mActiveDevice = mPendingDevice;
        mPendingDevice.Reset();
    }
    mActiveDevice->Activate();
    return mActiveDevice == inDevice;
}

/// Without a wait gate and key stay, so what an earlier device still has to let go of counts for a later
/// activation too.
void PreemptionManager::WaitForHandover()
{
    if (!mHandoverGate || mHandoverKey == 0 || mHandoverKey == mPendingDevice->GetHandoverKey()) {
        return;
    }
    const std::shared_ptr<Gate> gate = mHandoverGate; // lives until we are through, whatever happens to ours
    gate->PassThroughUntil(std::chrono::steady_clock::now() + kHandoverLimit);
    mHandoverGate.reset();
}

void PreemptionManager::DeactivateDevice(const IPreemptableProxyRef& inDevice)
{
    if (!(inDevice == mActiveDevice)) {
        return;
    }
    mHandoverKey = mActiveDevice->GetHandoverKey();
    mHandoverGate = std::make_shared<Gate>(false);
    mActiveDevice->Preempt({}, mHandoverGate);
    mActiveDevice.Reset();
}

bool PreemptionManager::IsActiveDevice(const IPreemptableProxyRef& inDevice)
{
    return inDevice == mActiveDevice;
}

void PreemptionManager::Reset()
{
    if (mActiveDevice) {
        // A copy: the device must live until the call is over.
        const IPreemptableProxyRef device = mActiveDevice;
        DeactivateDevice(device);
    }
}

void PreemptionManager::Shutdown()
{
    mActiveDevice.Reset();
}

InterfaceRef<PreemptionManager> CreatePreemptionManager()
{
    return PreemptionManager::CreateClassRefInternal(true);
}

} // namespace TR
