#include "DeviceTimeline.h"

#include "../support/Failure.h"

#include <kiocore/debug/Trace.h>
#include <kiocore/threads/Clock.h>

#include <cstdio>
#include <utility>

namespace trhost::devices {
namespace {

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

thread_local std::string tThreadName = "main";

} // namespace

ScThreadName::ScThreadName(const std::string& inName)
{
    tThreadName = inName;
}

ScThreadName::~ScThreadName()
{
    tThreadName = "main";
}

const char* NameOf(DeviceEvent::Kind inKind)
{
    using Kind = DeviceEvent::Kind;
    switch (inKind) {
    case Kind::kAsks:
        return "asks";
    case Kind::kAlreadyHolds:
        return "alreadyHolds";
    case Kind::kAskedToLetGo:
        return "askedToLetGo";
    case Kind::kHoldsOn:
        return "holdsOn";
    case Kind::kOpened:
        return "opened";
    case Kind::kClosed:
        return "closed";
    case Kind::kLetGo:
        return "letGo";
    case Kind::kReplaced:
        return "replaced";
    case Kind::kActive:
        return "active";
    case Kind::kNotActive:
        return "notActive";
    case Kind::kDeactivated:
        return "deactivated";
    case Kind::kRecording:
        return "recording";
    case Kind::kRecorded:
        return "recorded";
    case Kind::kFinished:
        return "finished";
    case Kind::kFailed:
        return "failed";
    case Kind::kDestroyed:
        return "destroyed";
    case Kind::kWaits:
        return "waits";
    }
    return "";
}

kiocore::UTF16String Describe(const DeviceEvent& inEvent)
{
    using Kind = DeviceEvent::Kind;
    const UTF16String device = ToUTF16(inEvent.device);
    const UTF16String other = ToUTF16(inEvent.other);
    const UTF16String priority = DecimalText(inEvent.priority);
    const UTF16String otherPriority = DecimalText(inEvent.otherPriority);
    switch (inEvent.kind) {
    case Kind::kAsks:
        if (inEvent.other.empty()) {
            return Text("$$$/Halcyon/TrHost/Device/AsksNobody=@0 (priority @1, key @2) asks for the slot, "
                        "which nobody holds",
                        {device, priority, DecimalText(inEvent.key)});
        }
        return Text("$$$/Halcyon/TrHost/Device/Asks=@0 (priority @1, key @2) asks for the slot, which @3 "
                    "(priority @4, key @5) holds",
                    {device, priority, DecimalText(inEvent.key), other, otherPriority,
                     DecimalText(inEvent.otherKey)});
    case Kind::kAlreadyHolds:
        return Text("$$$/Halcyon/TrHost/Device/AlreadyHolds=@0 asks for the slot that it holds", {device});
    case Kind::kAskedToLetGo:
        return inEvent.other.empty()
                   ? Text("$$$/Halcyon/TrHost/Device/AskedByNobody=@0 is asked to let go", {device})
                   : Text("$$$/Halcyon/TrHost/Device/AskedToLetGo=@0 is asked to let go for @1",
                          {device, other});
    case Kind::kHoldsOn:
        return Text("$$$/Halcyon/TrHost/Device/HoldsOn=@0 was told to hold on and does", {device});
    case Kind::kOpened:
        return Text("$$$/Halcyon/TrHost/Device/Opened=@0 opened @1", {device, inEvent.text});
    case Kind::kClosed:
        return Text("$$$/Halcyon/TrHost/Device/Closed=@0 closed @1", {device, inEvent.text});
    case Kind::kLetGo:
        return Text("$$$/Halcyon/TrHost/Device/LetGo=@0 has let go", {device});
    case Kind::kReplaced:
        return Text("$$$/Halcyon/TrHost/Device/Replaced=@0 (priority @1) loses the slot to @2 (priority @3) "
                    "and is not asked",
                    {device, priority, other, otherPriority});
    case Kind::kActive:
        return Text("$$$/Halcyon/TrHost/Device/Active=@0 holds the slot", {device});
    case Kind::kNotActive:
        return Text("$$$/Halcyon/TrHost/Device/NotActive=@0 did not get the slot", {device});
    case Kind::kDeactivated:
        return Text("$$$/Halcyon/TrHost/Device/Deactivated=the slot was taken from @0", {device});
    case Kind::kRecording:
        return Text("$$$/Halcyon/TrHost/Device/Recording=@0 records", {device});
    case Kind::kRecorded:
        return Text("$$$/Halcyon/TrHost/Device/Recorded=@0 recorded @1", {device, inEvent.text});
    case Kind::kFinished:
        return Text("$$$/Halcyon/TrHost/Device/Finished=@0 has played all", {device});
    case Kind::kFailed:
        return Text("$$$/Halcyon/TrHost/Device/Failed=@0 failed: @1", {device, inEvent.text});
    case Kind::kDestroyed:
        return Text("$$$/Halcyon/TrHost/Device/Destroyed=@0 is gone", {device});
    case Kind::kWaits:
        return Text("$$$/Halcyon/TrHost/Device/WaitsFor=waiting for @0 to let go of the audio device#{@0: a "
                    "player or recorder}",
                    {other});
    }
    return {};
}

DeviceTimeline::DeviceTimeline(std::shared_ptr<kiocore::threads::MainThread> inMainThread)
    : mMainThread(std::move(inMainThread)), mStart(kiocore::threads::GetClock().SteadyTime())
{}

void DeviceTimeline::Add(DeviceEvent inEvent)
{
    inEvent.thread = tThreadName;
    {
        // The time is taken under the lock, so that times and order agree.
        const std::lock_guard lock(mLock);
        inEvent.time = kiocore::threads::GetClock().SteadyTime() - mStart;
        mNew.push_back(inEvent);
    }
    if (kiocore::debug::TraceEnabled("Devices", 1)) {
        char time[32];
        std::snprintf(time, sizeof time, "%.3f ", std::chrono::duration<double>(inEvent.time).count());
        kiocore::debug::Trace(1, "Devices",
                              time + inEvent.thread + " " + NameOf(inEvent.kind) + ": " +
                                  kiocore::utility::ToUTF8(Describe(inEvent)));
    }
    WakeMainThread();
}

std::vector<DeviceEvent> DeviceTimeline::TakeNew()
{
    const std::lock_guard lock(mLock);
    return std::exchange(mNew, {});
}

void DeviceTimeline::WakeMainThread() const
{
    mMainThread->Post([] {});
}

} // namespace trhost::devices
