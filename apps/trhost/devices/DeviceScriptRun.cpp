#include "DeviceScriptRun.h"

#include "../support/Interrupt.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace trhost::devices {
namespace {

using Verb = ScriptStatement::Verb;
using What = ScriptCondition::What;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

// Opening hardware may take some seconds; a device that is still not done then never will be.
constexpr std::chrono::seconds kSettleLimit{30};

UTF16String Shown(const std::string& inNative)
{
    return kiocore::filesupport::FromNative(inNative);
}

std::chrono::steady_clock::time_point In(std::chrono::nanoseconds inDuration)
{
    return kiocore::threads::GetClock().SteadyTime() + inDuration;
}

} // namespace

DeviceScriptRun::DeviceScriptRun(Context& ioContext, UTF16String inScriptName, bool inOverwrite)
    : mContext(ioContext), mScriptName(std::move(inScriptName)), mOverwrite(inOverwrite), mSession(ioContext)
{
    mSession.OnEvent([this](const DeviceEvent& event) {
        if (event.kind == DeviceEvent::Kind::kFailed) {
            mFailed.insert(event.device);
        }
        Print(event);
    });
}

DeviceScriptRun::~DeviceScriptRun() = default;

void DeviceScriptRun::Run(const DeviceScript& inScript)
{
    for (const ScriptStatement& statement : inScript.statements) {
        try {
            RunStatement(statement);
            Settle();
        } catch (const std::exception& error) {
            mSession.Report(); // what led to it comes first
            ThrowIfInterrupted();
            const auto* failure = dynamic_cast<const Failure*>(&error);
            throw Failure(failure ? failure->GetStatus() : kExit_Failed,
                          Text("$$$/Halcyon/TrHost/Script/AtLine=@0:@1: @2#{@0: a file, @1: line, @2: what}",
                               {mScriptName, DecimalText(unsigned(statement.line)),
                                failure ? failure->GetText() : Told(error)}));
        }
    }
    while (!mDevices.empty()) {
        Destroy(mDevices.begin()->first);
    }
    Settle();
    if (!mFailed.empty()) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/Script/DeviceFailed=@0: @1 failed, which the script does not "
                           "expect#{@0: a file, @1: a device}",
                           {mScriptName, Shown(*mFailed.begin())}));
    }
}

void DeviceScriptRun::RunStatement(const ScriptStatement& inStatement)
{
    DeviceThread& devices = mSession.Devices();
    const auto device = mDevices.find(inStatement.name);
    const auto runner = [&]() -> DeviceRunner& { return device->second.Runner(); };
    switch (inStatement.verb) {
    case Verb::kPlayer:
        MakePlayer(inStatement);
        break;
    case Verb::kRecorder:
        MakeRecorder(inStatement);
        break;
    case Verb::kActivate:
        if (inStatement.priority) {
            runner().Proxy()->SetPriority(*inStatement.priority);
        }
        if (inStatement.key) {
            runner().Proxy()->SetKey(*inStatement.key);
        }
        devices.Activate(runner().Proxy());
        break;
    case Verb::kRecord: {
        Recorder& recorder = *device->second.recorder;
        std::unique_ptr<WaveFile> file;
        if (!inStatement.out.empty()) {
            file = std::make_unique<WaveFile>(inStatement.out, recorder.Format(), SampleForm::kInt16,
                                              mOverwrite);
        }
        recorder.Record(std::move(file), -1);
        devices.Activate(runner().Proxy());
        break;
    }
    case Verb::kStop:
        device->second.recorder->Stop();
        break;
    case Verb::kDeactivate:
        devices.Deactivate(runner().Proxy());
        break;
    case Verb::kReset:
        devices.Reset();
        break;
    case Verb::kHold:
        runner().SetHolding(true);
        break;
    case Verb::kRelease:
        runner().SetHolding(false);
        break;
    case Verb::kDestroy:
        Destroy(inStatement.name);
        break;
    case Verb::kWait:
        mSession.RunUntil([] { return false; }, In(inStatement.duration));
        ThrowIfInterrupted();
        break;
    case Verb::kExpect:
    case Verb::kAwait:
        Check(inStatement);
        break;
    }
}

void DeviceScriptRun::MakePlayer(const ScriptStatement& inStatement)
{
    PlayerSettings settings;
    settings.name = inStatement.name;
    settings.key = inStatement.key.value_or(0);
    settings.priority = inStatement.priority.value_or(settings.priority);
    if (!inStatement.media.empty()) {
        settings.media = OpenSound(inStatement.media, -1);
        const media::StreamInfo& stream = settings.media->Stream();
        settings.format = {stream.sampleRate, stream.channels};
    }
    Device device;
    if (inStatement.sink.empty()) {
        settings.place = inStatement.device.empty() ? "default" : inStatement.device;
        settings.open = DeviceOutput(settings.place);
    } else {
        settings.place = inStatement.sink;
        device.sink = std::make_shared<WaveFile>(
            SinkPath(inStatement.sink), settings.format,
            settings.media ? FormFor(settings.media->Stream().codec) : SampleForm::kInt16, mOverwrite);
        settings.open = FileOutput(device.sink);
        // Silence without end, as fast as it goes, would fill the disk.
        settings.pacing = inStatement.paced || !settings.media ? Pacer::Mode::kAlways : Pacer::Mode::kNever;
    }
    device.player = std::make_unique<Player>(std::move(settings), mSession.Devices());
    mDevices[inStatement.name] = std::move(device);
}

void DeviceScriptRun::MakeRecorder(const ScriptStatement& inStatement)
{
    RecorderSettings settings;
    settings.name = inStatement.name;
    settings.key = inStatement.key.value_or(0);
    settings.place = inStatement.device.empty() ? "default" : inStatement.device;
    settings.open = DeviceInput(settings.place);
    settings.format = {inStatement.rate, inStatement.channels};
    mDevices[inStatement.name].recorder = std::make_unique<Recorder>(std::move(settings), mSession.Devices());
}

void DeviceScriptRun::Destroy(const std::string& inName)
{
    Device device = std::move(mDevices.at(inName));
    mDevices.erase(inName);
    device.player.reset();
    device.recorder.reset();
    if (device.sink && !device.sink->IsFinished()) {
        device.sink->Finish();
    }
}

bool DeviceScriptRun::IsSettled()
{
    for (auto& [name, device] : mDevices) {
        if (!device.Runner().IsSettled()) {
            return false;
        }
    }
    if (mSession.Devices().IsIdle()) {
        return true;
    }
    const auto waiting = mSession.Devices().WaitsFor();
    const auto other = waiting ? mDevices.find(waiting->other) : mDevices.end();
    return other != mDevices.end() && other->second.Runner().HoldsOn();
}

void DeviceScriptRun::Settle()
{
    if (mSession.RunUntil([this] { return IsSettled(); }, In(kSettleLimit))) {
        return;
    }
    ThrowIfInterrupted();
    throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/Script/NotSettled=not done within @0 seconds; @1",
                                     {DecimalText(unsigned(kSettleLimit.count())), State()}));
}

bool DeviceScriptRun::Holds(const ScriptCondition& inCondition)
{
    const auto device = mDevices.find(inCondition.name);
    bool holds = false;
    switch (inCondition.what) {
    case What::kActive:
        holds = mSession.Devices().Holder() == inCondition.name;
        break;
    case What::kWaiting: {
        const auto waiting = mSession.Devices().WaitsFor();
        holds = waiting ? waiting->device == inCondition.name &&
                              (inCondition.forName.empty() || waiting->other == inCondition.forName)
                        : inCondition.name.empty();
        break;
    }
    case What::kOpen:
        holds = device->second.Runner().IsOpen();
        break;
    case What::kRecording:
        holds = device->second.recorder->IsRecording() && device->second.Runner().IsOpen();
        break;
    case What::kFinished:
        holds = device->second.player->HasFinished();
        break;
    case What::kFailed:
        holds = device->second.Runner().HasFailed();
        mFailed.erase(inCondition.name);
        break;
    }
    return holds != inCondition.negated;
}

void DeviceScriptRun::Check(const ScriptStatement& inStatement)
{
    const bool holds =
        inStatement.verb == Verb::kExpect
            ? Holds(inStatement.condition)
            : mSession.RunUntil([&] { return Holds(inStatement.condition); }, In(inStatement.duration));
    if (!holds) {
        ThrowIfInterrupted();
        throw Failure(kExit_Negative, Text("$$$/Halcyon/TrHost/Script/NotSo=expected: @0; found: @1",
                                           {Shown(inStatement.text), State()}));
    }
    if (inStatement.condition.what == What::kFailed) {
        mSession.Report();
        mFailed.erase(inStatement.condition.name);
    }
}

/// Everything that can be expected, as it is.
UTF16String DeviceScriptRun::State()
{
    const std::string holder = mSession.Devices().Holder();
    UTF16String state = u"active " + Shown(holder.empty() ? "nobody" : holder);
    if (const auto waiting = mSession.Devices().WaitsFor()) {
        state += u", waiting " + Shown(waiting->device) + u" for " + Shown(waiting->other);
    }
    for (auto& [name, device] : mDevices) {
        const DeviceRunner& runner = device.Runner();
        if (runner.IsOpen()) {
            state += u", open " + Shown(name);
        }
        if (device.recorder && device.recorder->IsRecording()) {
            state += u", recording " + Shown(name);
        }
        if (device.player && device.player->HasFinished()) {
            state += u", finished " + Shown(name);
        }
        if (runner.HasFailed()) {
            state += u", failed " + Shown(name);
        }
    }
    return state;
}

void DeviceScriptRun::Print(const DeviceEvent& inEvent)
{
    const double seconds = std::chrono::duration<double>(inEvent.time).count();
    JsonLine object;
    object.Add("time", seconds)
        .Add("thread", Shown(inEvent.thread))
        .Add("event", NameOf(inEvent.kind))
        .Add("device", Shown(inEvent.device));
    if (!inEvent.other.empty()) {
        object.Add("other", Shown(inEvent.other));
    }
    if (inEvent.kind == DeviceEvent::Kind::kAsks || inEvent.kind == DeviceEvent::Kind::kReplaced) {
        object.Add("priority", inEvent.priority).Add("key", inEvent.key);
        if (!inEvent.other.empty()) {
            object.Add("otherPriority", inEvent.otherPriority).Add("otherKey", inEvent.otherKey);
        }
    }
    if (!inEvent.text.empty()) {
        object.Add("text", inEvent.text);
    }
    char time[32];
    std::snprintf(time, sizeof time, "%8.3f  ", seconds);
    UTF16String thread = Shown(inEvent.thread);
    thread.resize(std::max<std::size_t>(thread.size(), 12), u' ');
    mContext.output.Result(ToUTF16(time) + thread + u"  " + Describe(inEvent), object);
}

} // namespace trhost::devices
