#pragma once

#include "AudioPlaces.h"
#include "DeviceScript.h"
#include "DeviceSession.h"

#include "../support/Failure.h"

#include <map>
#include <memory>
#include <set>
#include <string>

namespace trhost::devices {

/// Runs a script's lines one after the other on real devices. A line is over when the device thread has
/// nothing more to do and every device has done what it was told; when a request waits for a device that was
/// told to hold on, the script goes on meanwhile, and the request ends when it can.
///
/// Threading: main thread.
class DeviceScriptRun {
public:
    /// @param inScriptName  for messages.
    DeviceScriptRun(Context& ioContext, UTF16String inScriptName, bool inOverwrite);
    ~DeviceScriptRun();

    /// @throws Failure naming script and line: kExit_Negative when something expected is not so, kExit_Failed
    ///     when a device failed of which the script does not expect it, or was interrupted.
    void Run(const DeviceScript& inScript);

private:
    struct Device {
        std::shared_ptr<WaveFile> sink;
        std::unique_ptr<Player> player; // last to be made, first to go
        std::unique_ptr<Recorder> recorder;

        DeviceRunner& Runner() { return player ? player->Runner() : recorder->Runner(); }
    };

    void RunStatement(const ScriptStatement& inStatement);
    void MakePlayer(const ScriptStatement& inStatement);
    void MakeRecorder(const ScriptStatement& inStatement);
    void Destroy(const std::string& inName);
    void Settle();
    bool IsSettled();
    bool Holds(const ScriptCondition& inCondition);
    void Check(const ScriptStatement& inStatement);
    UTF16String State();
    void Print(const DeviceEvent& inEvent);

    Context& mContext;
    const UTF16String mScriptName;
    const bool mOverwrite;
    DeviceSession mSession;
    std::map<std::string, Device> mDevices; // after the session: they go first
    std::set<std::string> mFailed;          // and nobody has expected it
};

} // namespace trhost::devices
