#include "Requests.h"

#include "Trial.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/platform/Modules.h>
#include <kiocore/serialization/JSONConvert.h>

#include <exception>
#include <vector>

namespace trhost::effects {

using namespace kiocore::serialization;

namespace {

/// No request to the engine can succeed.
class EngineProblem : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string PathMember(const JSONObject& inObject, const char* inName)
{
    return kiocore::filesupport::ToNative(GetMember<kiocore::UTF16String>(inObject, inName));
}

} // namespace

void Requests::Say(const JSONObject& inObject)
{
    if (!mConnection.Write(GetJSONUTF8String(inObject, false))) {
        platform::EndAtOnce(0); // nobody listens any more
    }
}

void Requests::Serve()
{
    Say({{"ready", true}});
    std::string line;
    while (mConnection.Read(line)) {
        std::string problem;
        const char* kind = "error";
        try {
            Say(Answer(AsObject(GetJSONFromUTF8String(line))));
            continue;
        } catch (const EngineProblem& exception) {
            problem = exception.what();
            kind = "fatal";
        } catch (const std::exception& exception) {
            problem = exception.what();
        } catch (...) {
            problem = "$$$/Halcyon/TrHost/Effects/ThrewNoException=threw something that is no exception";
        }
        // What plug-ins say may be in any encoding; lone surrogates stand for the bytes that are no UTF-8.
        Say({{kind, TextFromUTF16(kiocore::filesupport::FromNative(problem))}});
    }
}

JSONObject Requests::Answer(const JSONObject& inRequest)
{
    const auto what = GetMember<std::string>(inRequest, "do");
    if (what == "names") {
        return AnswerNames(inRequest);
    }
    if (what == "describe") {
        return AnswerDescribe(inRequest);
    }
    if (what == "check") {
        return AnswerCheck(inRequest);
    }
    throw bad_cast_exception("the text \"" + what + "\"", "names, describe or check");
}

IEffectEngine& Requests::Engine(const JSONObject& inRequest)
{
    const std::string module = PathMember(inRequest, "engine");
    IEffectEngine*& engine = mEngines[module];
    if (engine) {
        return *engine;
    }
    try {
        const auto function = reinterpret_cast<EffectEngineFunction>(
            kiocore::platform::LoadModuleFunction(module, kEffectEngineFunctionName));
        engine = function(kEffectEngineVersion, mCalls);
    } catch (const kiocore::kio_exception& problem) {
        throw EngineProblem(problem.what());
    }
    if (!engine) {
        throw EngineProblem(KeptText("$$$/Halcyon/TrHost/WrongModule=@0 was built for another version of "
                                     "trhost; install both from one build",
                                     {module}));
    }
    Say({{"loaded", true}});
    return *engine;
}

JSONObject Requests::AnswerNames(const JSONObject& inRequest)
{
    IEffectEngine& engine = Engine(inRequest);
    const std::string file = PathMember(inRequest, "file");
    JSONObject answer{{"done", true}};
    AddMember(answer, "names", engine.PluginNames(file));
    std::vector<kiocore::UTF16String> behind;
    for (const std::string& path : engine.FilesBehind(file)) {
        behind.push_back(kiocore::filesupport::FromNative(path));
    }
    AddMember(answer, "behind", behind);
    return answer;
}

JSONObject Requests::AnswerDescribe(const JSONObject& inRequest)
{
    IEffectEngine& engine = Engine(inRequest);
    const EffectDescription description =
        engine.Describe(PathMember(inRequest, "file"), GetMember<std::string>(inRequest, "name"));
    return {{"done", true}, {"description", ToJSON(description)}};
}

JSONObject Requests::AnswerCheck(const JSONObject& inRequest)
{
    IEffectEngine& engine = Engine(inRequest);
    const EffectDescription description = FromJSON(GetMember<JSON>(inRequest, "description"));
    std::vector<TrialCase> cases;
    for (const JSON& value : GetMember<JSONArray>(inRequest, "cases")) {
        cases.push_back(TrialCaseFromJSON(value));
    }
    if (!mMemory) {
        mMemory.emplace();
        platform::ReportFaults(mConnection.File());
    }
    engine.SetFrameMemory(&*mMemory);
    Trial trial(engine, description, *mMemory, mCalls);
    for (std::size_t index = 0; index < cases.size(); ++index) {
        const auto tellAt = [&] { Say({{"at", static_cast<std::uint64_t>(index)}}); };
        tellAt();
        for (const TrialFinding& finding : trial.Run(cases[index], tellAt)) {
            Say({{"finding", ToJSON(finding)}});
        }
    }
    return {{"done", true}};
}

} // namespace trhost::effects
