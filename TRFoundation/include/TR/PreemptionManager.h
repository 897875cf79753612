#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/threads/Gate.h>

#include <cstdint>
#include <memory>

namespace TR {

using kiocore::InterfaceRef;

class IPreemptableProxy;
using IPreemptableProxyRef = InterfaceRef<IPreemptableProxy>;

/// What a playback or recording device shows of itself to the one who decides which device is active.
///
/// Threading: called on the threads that call the manager.
class KIO_EXPORT IPreemptableProxy : public virtual kiocore::classref::Unknown {
public:
    /// The smaller value stays: a newcomer asks a holder of the same or a greater value to let go, and waits;
    /// a newcomer of a greater value simply replaces the holder.
    static const std::uint32_t kPriorityRecorderRecording; ///< 2
    static const std::uint32_t kPriorityRecorderStopped;   ///< 5
    static const std::uint32_t kPriorityPlayer;            ///< 5

    ~IPreemptableProxy() override;

    virtual std::uint32_t GetPriority() = 0;
    /// The device holds the slot. Comes again each time it asks for what it holds, so repeating must be
    /// harmless.
    virtual void Activate() = 0;
    /// Give up the slot.
    /// @param inRequester  who takes over; empty when the device is only being deactivated.
    /// @param ioGate       keep a copy and open it once the hardware is let go, from any thread, at any
    ///     later time. Who holds it must open it at the latest when it goes away: others wait.
    virtual void Preempt(const IPreemptableProxyRef& inRequester,
                         std::shared_ptr<kiocore::threads::Gate>& ioGate) = 0;
    /// 0: nobody ever waits for this device. Devices of equal keys hand over to each other without waiting.
    virtual std::uint32_t GetHandoverKey() = 0;
};

/// Decides which one of the process's playback and recording devices holds the one active-device slot.
///
/// Threading: takes no lock, so calls are made one at a time, but for one overlap: while an ActivateDevice is
/// in progress (its thread waits for a holder to let go, or a device's Preempt calls back) another call may
/// be made. It finds that call's device pending: activating the same device returns true at once; activating
/// another, of the holder's priority value or a smaller one, puts that device in the pending place and
/// returns false, and the call in progress then hands over to it.
class KIO_EXPORT PreemptionManager final : public virtual kiocore::classref::UnknownBase {
public:
    static const CFUUIDBytes& InterfaceID(); // 0D59AA44-1B43-4C85-9E7C-A4608D16C76B

    PreemptionManager();
    ~PreemptionManager() override;
    virtual operator InterfaceRef<kiocore::classref::UnknownBase>();
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

    /// The live manager. It lives while somebody holds a reference; the next one starts with an empty slot.
    /// @return empty when there is none and inCreate is false.
    static InterfaceRef<PreemptionManager> CreateClassRefInternal(bool inCreate);

    /// Gives the device the slot. May wait, for up to 24 hours, until the holder has let go.
    /// @return whether the device holds the slot now.
    /// @throws input_contract_exception for an empty reference; nothing has changed then. What the devices'
    ///     operations throw passes through; what was changed by then stays changed.
    bool ActivateDevice(const IPreemptableProxyRef& inDevice);
    /// Takes the slot from the device if it holds it. Never waits: the next ActivateDevice does.
    /// @throws null_reference_exception for an empty reference while no device is active.
    void DeactivateDevice(const IPreemptableProxyRef& inDevice);
    bool IsActiveDevice(const IPreemptableProxyRef& inDevice);
    /// Takes the slot from whichever device holds it.
    void Reset();
    /// Empties the slot without telling the holder.
    void Shutdown();

private:
    void WaitForHandover();

    IPreemptableProxyRef mActiveDevice;
    IPreemptableProxyRef mPendingDevice; // while an ActivateDevice is in progress
    std::shared_ptr<kiocore::threads::Gate> mHandoverGate;
    std::uint32_t mHandoverKey = 0; // of the device that was asked to let go last
};

/// The process's manager.
KIO_EXPORT InterfaceRef<PreemptionManager> CreatePreemptionManager();

} // namespace TR
