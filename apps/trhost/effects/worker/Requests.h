#pragma once

#include "CatchingCalls.h"
#include "EffectEngine.h"
#include "GuardedMemory.h"
#include "platform/WorkerProcess.h"

#include <kiocore/serialization/JSON.h>

#include <map>
#include <optional>
#include <string>

namespace trhost::effects {

/// Answers requests, one JSON object a line. "engine" and "file" are native paths as
/// kiocore::filesupport::FromNative gives them.
///
///     {"do":"names","engine":E,"file":F}            {"done":true,"names":[...],"behind":[...]}
///     {"do":"describe","engine":E,"file":F,"name":N}  {"done":true,"description":{...}}
///     {"do":"check","engine":E,"description":{...},"cases":[...]}
///         {"at":0} before each call of the plug-in, {"finding":{...}} for each finding, {"done":true}
///
/// {"error":"..."} is the engine's refusal; {"fatal":"..."} says that no request to this engine can succeed.
/// The first line of all is {"ready":true}; {"loaded":true} follows when a request has made an engine load.
///
/// Threading: one thread.
class Requests {
public:
    explicit Requests(platform::LineConnection& inConnection) : mConnection(inConnection) {}
    /// Says that it is ready and answers until the other side has gone.
    void Serve();

private:
    using JSONObject = kiocore::serialization::JSONObject;
    JSONObject Answer(const JSONObject& inRequest);
    JSONObject AnswerNames(const JSONObject& inRequest);
    JSONObject AnswerDescribe(const JSONObject& inRequest);
    JSONObject AnswerCheck(const JSONObject& inRequest);
    IEffectEngine& Engine(const JSONObject& inRequest);
    void Say(const JSONObject& inObject);

    platform::LineConnection& mConnection;
    CatchingCalls mCalls;
    std::map<std::string, IEffectEngine*> mEngines;
    std::optional<GuardedMemory> mMemory; // from the first check on; engines that know it live as long
};

} // namespace trhost::effects
