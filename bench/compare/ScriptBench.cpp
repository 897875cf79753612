#include "CompareBench.h"

#include "Processes.h"

#include "support/Interleaved.h"

#include <JavaScriptCore/JavaScript.h>
#include <kioscripting/ClassBuilder.h>
#include <kioscripting_jsc/JSCEngine.h>

namespace bench {
namespace {

constexpr std::size_t kReads = 100000;
constexpr std::size_t kPairs = 41;
constexpr std::size_t kStarts = 31;

class Reading : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override { return "Reading"; }
    double GetNumber() const { return 2.5; }
    std::string GetText() const { return "a text of the usual length"; }
    /// Each time another one.
    std::string GetNewText() const { return "number " + std::to_string(++mCount); }
    double Add(double inOther) { return inOther + 1; }

private:
    mutable int mCount = 0;
};

kioscripting::ClassDefinition DefineReading()
{
    return kioscripting::ClassBuilder<Reading>("Bench", "Reading", "What is read.")
        .Constructor("Construct")
        .Property("number", "number", "A number", &Reading::GetNumber)
        .Property("text", "string", "A text", &Reading::GetText)
        .Property("newText", "string", "A text that changes", &Reading::GetNewText)
        .Method("add", "Adds one", &Reading::Add, {{"other", "number"}})
        .Finish();
}
const kioscripting::factory::ScriptObjectDefinitionInitiator sReading(&DefineReading);

JSValueRef DoNothing(JSContextRef inContext, JSObjectRef, JSObjectRef, std::size_t, const JSValueRef[],
                     JSValueRef*)
{
    return JSValueMakeUndefined(inContext);
}

/// The engine by itself, with one native function that does nothing.
class BareEngine {
public:
    BareEngine() : mContext(JSGlobalContextCreate(nullptr))
    {
        const JSStringRef name = JSStringCreateWithUTF8CString("empty");
        JSObjectSetProperty(mContext, JSContextGetGlobalObject(mContext), name,
                            JSObjectMakeFunctionWithCallback(mContext, name, &DoNothing), 0, nullptr);
        JSStringRelease(name);
    }
    ~BareEngine() { JSGlobalContextRelease(mContext); }
    BareEngine(const BareEngine&) = delete;
    BareEngine& operator=(const BareEngine&) = delete;

    void Run(const std::string& inScript)
    {
        const JSStringRef script = JSStringCreateWithUTF8CString(inScript.c_str());
        JSEvaluateScript(mContext, script, nullptr, nullptr, 1, nullptr);
        JSStringRelease(script);
    }

private:
    JSGlobalContextRef mContext;
};

/// Whole processes: the engine alone in one that does nothing else, and `trhost script -e 1`.
void PrintStart()
{
    const ScratchFolder state;
    const auto cost = [](const std::vector<std::string>& inCommand) {
        return RunProcess(inCommand).cpuNanoseconds;
    };
    const auto floor = [&] { return cost({BARE_ENGINE_PROGRAM}); };
    const auto ours = [&] { return cost({TRHOST_PROGRAM, "--state", state.Path(), "script", "-e", "1"}); };
    PrintHeader("Start of a process that evaluates 1; the floor links the engine alone");
    PrintRow("trhost script -e 1", Compare(floor, ours, kStarts, 1), 1.5, "ms");
}

std::string Loop(const std::string& inOperation)
{
    return "for (let i = 0; i < count; ++i) " + inOperation;
}

} // namespace

void BenchScript()
{
    PrintStart(); // while this process is small
    const auto engine = kioscripting_jsc::MakeEngine({});
    BareEngine bare;
    const std::string define = "function run(count) { ";
    bare.Run(define + Loop("empty();") + " }");
    const std::string call = "run(" + std::to_string(kReads) + "); 0";
    PrintHeader("Natives from a script; the floor is a call of an empty native function");
    const struct {
        const char* name;
        const char* operation;
        double goal;
    } kRows[] = {
        {"read a number", "sink = r.number;", 3},
        {"read a text", "sink = r.text;", 3},
        {"read a text that changes", "sink = r.newText;", 0},
        {"call a method with a number", "sink = r.add(1);", 0},
        {"make an object, every tenth time", "if (i % 10 === 0) sink = new Bench.Reading();", 0},
    };
    for (const auto& row : kRows) {
        engine->Evaluate("var sink; var r = new Bench.Reading(); " + define + Loop(row.operation) + " }; 0",
                         "bench.js");
        const auto floor = [&] { return Timed(CLOCK_THREAD_CPUTIME_ID, [&] { bare.Run(call); }); };
        const auto ours = [&] {
            return Timed(CLOCK_THREAD_CPUTIME_ID, [&] { engine->Evaluate(call, "bench.js"); });
        };
        for (int i = 0; i < 3; ++i) { // compiled by then
            floor();
            ours();
        }
        PrintRow(row.name, Compare(floor, ours, kPairs, kReads), row.goal, "ns");
    }
}

} // namespace bench
