#pragma once

#include <TR/PreemptionManager.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// A device whose every answer is set by the test, and which notes every call it gets.
///
/// Threading: one thread at a time; whoever hands over between threads orders what they do.
class ScriptedDevice final : public TR::IPreemptableProxy, public virtual kiocore::classref::UnknownBase {
public:
    ScriptedDevice(std::string inName, std::vector<std::string>& ioNotes)
        : mName(std::move(inName)), mNotes(ioNotes)
    {}

    std::uint32_t priority = kPriorityPlayer;
    std::uint32_t key = 1;
    bool opensAtOnce = true;                      ///< lets go within Preempt
    std::shared_ptr<kiocore::threads::Gate> gate; ///< the last one that it was given
    std::function<void()> onPreempt;              ///< called once, then forgotten
    std::function<void()> onKey;                  ///< called each time it is asked for its key

    std::uint32_t GetPriority() override
    {
        mNotes.push_back(mName + ".priority");
        return priority;
    }
    void Activate() override { mNotes.push_back(mName + ".activate"); }
    void Preempt(const TR::IPreemptableProxyRef& inRequester,
                 std::shared_ptr<kiocore::threads::Gate>& ioGate) override
    {
        mNotes.push_back(mName + (inRequester ? ".preempt" : ".deactivate"));
        gate = ioGate;
        if (opensAtOnce) {
            ioGate->Open();
        }
        if (const auto call = std::exchange(onPreempt, nullptr)) {
            call();
        }
    }
    std::uint32_t GetHandoverKey() override
    {
        mNotes.push_back(mName + ".key");
        if (onKey) {
            onKey();
        }
        return key;
    }
    void* QueryMap(const CFUUIDBytes&) override { return nullptr; }

private:
    const std::string mName;
    std::vector<std::string>& mNotes;
};

} // namespace support
