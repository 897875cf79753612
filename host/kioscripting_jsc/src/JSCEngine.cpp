#include <kioscripting_jsc/JSCEngine.h>

#include "Bridge.h"
#include "Runtime.h"
#include "Text.h"
#include "Values.h"
#include "platform/EngineStart.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <optional>

namespace kioscripting_jsc {
namespace {

/// Holds the engine for one run, in which jobs of promises wait until they are let run.
class ScRun {
public:
    /// @param ioInnermost  the engine's.
    explicit ScRun(Runtime& inRuntime, ScRun*& ioInnermost)
        : mRuntime(inRuntime), mInnermost(ioInnermost), mOuter(ioInnermost)
    {
        JSLock(mRuntime.context);
        mInnermost = this;
        if (!mOuter) {
            mRuntime.limits.BeginRun();
        }
    }
    ~ScRun()
    {
        mInnermost = mOuter;
        if (!mOuter) {
            mRuntime.rejections.clear();
            mRuntime.limits.EndRun();
        }
        JSUnlock(mRuntime.context);
        if (!mOuter) {
            mRuntime.handles.ReleaseUnused();
        }
    }
    ScRun(const ScRun&) = delete;
    ScRun& operator=(const ScRun&) = delete;

    /// Natives that evaluate do so within a job or a script, whose end comes first.
    void RunJobs()
    {
        if (mOuter) {
            return;
        }
        if (mRuntime.limits.IsOn()) {
            mRuntime.limits.BeginJobs();
            mRuntime.Call(mRuntime.functions.watchJobs, {});
        }
        JSUnlock(mRuntime.context);
        JSLock(mRuntime.context);
    }

private:
    const platform::ScScriptThread mThread;
    Runtime& mRuntime;
    ScRun*& mInnermost;
    ScRun* const mOuter;
};

class Engine final : public kioscripting::IScriptEngine {
public:
    explicit Engine(kioscripting::EngineSettings inSettings) : mRuntime(std::move(inSettings)) {}

    int GetContextHdl() const override { return mRuntime.contextHdl; }

    kioscripting::Value Evaluate(std::string_view inSource, const std::string& inFile,
                                 int inFirstLine) override
    {
        KIO_HOST_CALL("kioscripting::Evaluate", inFile);
        return Translated([&] { return ToNative(mRuntime, Run(inSource, inFile, inFirstLine)); });
    }

    void Execute(std::string_view inSource, const std::string& inFile) override
    {
        KIO_HOST_CALL("kioscripting::Execute", inFile);
        Translated([&] { Run(inSource, inFile, 1); });
    }

    std::string EvaluateToText(std::string_view inSource, const std::string& inFile) override
    {
        KIO_HOST_CALL("kioscripting::EvaluateToText", inFile);
        return Translated([&] {
            return mRuntime.Text(mRuntime.Call(mRuntime.functions.inspect, {Run(inSource, inFile, 1)}));
        });
    }

    bool IsIncomplete(std::string_view inSource) override;
    std::vector<std::string> Complete(std::string_view inText) override;

    void SetGlobal(const std::string& inName, const kioscripting::Value& inValue) override
    {
        KIO_HOST_CALL("kioscripting::SetGlobal", inName);
        Translated([&] {
            mRuntime.Call(mRuntime.functions.defineGlobal,
                          {MakeText(mRuntime.context, inName), ToScript(mRuntime, inValue)});
        });
    }

    void CollectGarbage() override
    {
        KIO_HOST_CALL("kioscripting::CollectGarbage");
        const platform::ScScriptThread thread;
        JSSynchronousGarbageCollectForDebugging(mRuntime.context);
        mRuntime.handles.ReleaseUnused();
    }

private:
    template <typename Function>
    auto Translated(const Function& inFunction) -> decltype(inFunction())
    {
        ScRun run(mRuntime, mRun);
        try {
            return inFunction();
        } catch (const ScriptThrown& thrown) {
            ThrowScriptException(mRuntime, thrown.value.Get());
        } catch (const RunEnded&) {
            mRuntime.limits.ThrowIfEnded();
            throw;
        }
    }

    JSValueRef Run(std::string_view inSource, const std::string& inFile, int inFirstLine);
    JSValueRef Settled(JSObjectRef inOutcome);
    void ThrowRejections();
    std::string SyntaxFailure(std::string_view inSource);

    Runtime mRuntime;
    ScRun* mRun = nullptr; // the innermost: natives may evaluate too
};

JSValueRef Engine::Run(std::string_view inSource, const std::string& inFile, int inFirstLine)
{
    ScRun& run = *mRun;
    mRuntime.classes.Update();
    mRuntime.modules.Offer(inFile);
    JSValueRef thrown = nullptr;
    JSValueRef value = JSEvaluateScript(mRuntime.context, ScText(inSource).Get(), nullptr,
                                        ScText(inFile).Get(), inFirstLine, &thrown);
    mRuntime.limits.Check();
    const std::optional<Protected> failure =
        !value || thrown ? std::optional<Protected>(std::in_place, mRuntime.context, thrown) : std::nullopt;
    JSObjectRef outcome = nullptr;
    if (!failure) {
        const JSValueRef watched = mRuntime.Call(mRuntime.functions.watch, {value});
        outcome = JSValueIsObject(mRuntime.context, watched) ? const_cast<JSObjectRef>(watched) : nullptr;
    }
    run.RunJobs();
    mRuntime.limits.Check();
    if (failure) {
        throw ScriptThrown{*failure};
    }
    if (outcome) {
        value = Settled(outcome);
    }
    ThrowRejections();
    return value;
}

JSValueRef Engine::Settled(JSObjectRef inOutcome)
{
    if (mRuntime.Length(inOutcome) == 0) {
        throw kioscripting::script_exception(
            "The script's value is a promise that is never settled: nothing is left to be done",
            kioscripting::kError_Script, {});
    }
    const JSValueRef value = mRuntime.GetAt(inOutcome, 1);
    if (TextOf(mRuntime.context, mRuntime.GetAt(inOutcome, 0)) == "rejected") {
        throw ScriptThrown{Protected(mRuntime.context, value)};
    }
    return value;
}

void Engine::ThrowRejections()
{
    if (!mRuntime.rejections.empty()) {
        throw ScriptThrown{mRuntime.rejections.front()};
    }
}

bool Engine::IsIncomplete(std::string_view inSource)
{
    return Translated([&] {
        std::string failure = SyntaxFailure(inSource);
        if (failure.find("Unexpected EOF") !=
            std::string::npos) { // a quote is open, perhaps one of many lines
            return SyntaxFailure(std::string(inSource) + "`") != failure;
        }
        return failure.find("Unexpected end of script") != std::string::npos ||
               failure.find("Multiline comment was not closed properly") != std::string::npos;
    });
}

std::string Engine::SyntaxFailure(std::string_view inSource)
{
    JSValueRef thrown = nullptr;
    const bool isScript = JSCheckScriptSyntax(mRuntime.context, ScText(inSource).Get(), nullptr, 1, &thrown);
    return isScript || !thrown ? std::string() : mRuntime.Text(thrown);
}

std::vector<std::string> Engine::Complete(std::string_view inText)
{
    return Translated([&] {
        mRuntime.classes.Update();
        const kioscripting::Value found = ToNative(
            mRuntime, mRuntime.Call(mRuntime.functions.complete, {MakeText(mRuntime.context, inText)}));
        std::vector<std::string> names;
        for (const kioscripting::Value& name : *found.As<kioscripting::Value::Array>()) {
            names.push_back(*name.As<std::string>());
        }
        return names;
    });
}

} // namespace

std::unique_ptr<kioscripting::IScriptEngine> MakeEngine(kioscripting::EngineSettings inSettings)
{
    KIO_HOST_CALL("kioscripting::MakeEngine");
    platform::StartEngine();
    const platform::ScScriptThread thread;
    return std::make_unique<Engine>(std::move(inSettings));
}

} // namespace kioscripting_jsc
