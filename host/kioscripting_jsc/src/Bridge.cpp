#include "Bridge.h"

#include "BridgeScripts.h"
#include "Runtime.h"
#include "Text.h"

#include <memory>

namespace kioscripting_jsc {
namespace {

/// Never freed by the engine's finalisers: a function may be called until its context is gone.
struct Function : Private {
    Function() : Private(PrivateKind::kFunction) {}
    Runtime* runtime = nullptr;
    NativeFunction function = nullptr;
};

JSValueRef OnCalled(JSContextRef, JSObjectRef inFunction, JSObjectRef, std::size_t inCount,
                    const JSValueRef inArguments[], JSValueRef* outException)
{
    const auto& function = *static_cast<Function*>(JSObjectGetPrivate(inFunction));
    return Guarded(*function.runtime, outException, [&] {
        return function.function(*function.runtime, {inArguments, inCount});
    });
}

void OnUnused(JSObjectRef inFunction)
{
    delete static_cast<Function*>(JSObjectGetPrivate(inFunction));
}

JSClassRef FunctionClass()
{
    static const JSClassRef sClass = [] {
        JSClassDefinition definition = kJSClassDefinitionEmpty;
        definition.className = "Function";
        definition.attributes = kJSClassAttributeNoAutomaticPrototype;
        definition.callAsFunction = &OnCalled;
        definition.finalize = &OnUnused;
        return JSClassCreate(&definition);
    }();
    return sClass;
}

/// The script's functions by their names.
JSObjectRef Load(Runtime& inRuntime, const char* inName, const char* inScript, JSObjectRef inNatives)
{
    const ScText script(inScript);
    const ScText place(std::string("kio:") + inName);
    JSValueRef thrown = nullptr;
    const JSValueRef function =
        JSEvaluateScript(inRuntime.context, script.Get(), nullptr, place.Get(), 1, &thrown);
    if (!function) {
        throw ScriptThrown{Protected(inRuntime.context, thrown)};
    }
    const JSValueRef natives = inNatives ? inNatives : JSValueMakeUndefined(inRuntime.context);
    return const_cast<JSObjectRef>(inRuntime.Call(const_cast<JSObjectRef>(function), {natives}));
}

void Take(Runtime& inRuntime, JSObjectRef inFrom, const char* inName, JSObjectRef& outFunction)
{
    outFunction = const_cast<JSObjectRef>(inRuntime.Get(inFrom, inName));
    JSValueProtect(inRuntime.context, outFunction); // until the context goes
}

JSValueRef Tick(Runtime& inRuntime, std::span<const JSValueRef> inArguments)
{
    const double which = JSValueToNumber(inRuntime.context, inArguments[0], nullptr);
    return JSValueMakeNumber(inRuntime.context,
                             double(inRuntime.limits.OnTick(static_cast<std::size_t>(which))));
}

} // namespace

JSObjectRef MakeFunction(Runtime& inRuntime, const char* inName, NativeFunction inFunction)
{
    auto data = std::make_unique<Function>();
    data->runtime = &inRuntime;
    data->function = inFunction;
    const JSObjectRef function = JSObjectMake(inRuntime.context, FunctionClass(), data.release());
    const JSValueRef base = inRuntime.Get(JSContextGetGlobalObject(inRuntime.context), "Function");
    JSObjectSetPrototype(inRuntime.context, function,
                         inRuntime.Get(const_cast<JSObjectRef>(base), "prototype"));
    const ScText name("name");
    JSObjectSetProperty(inRuntime.context, function, name.Get(), MakeText(inRuntime.context, inName),
                        kJSPropertyAttributeDontEnum | kJSPropertyAttributeReadOnly, nullptr);
    return function;
}

void SetMember(Runtime& inRuntime, JSObjectRef inObject, const char* inName, JSValueRef inValue)
{
    JSObjectSetProperty(inRuntime.context, inObject, ScText(inName).Get(), inValue, kJSPropertyAttributeNone,
                        nullptr);
}

void LoadBridge(Runtime& inRuntime)
{
    BridgeFunctions& functions = inRuntime.functions;
    const auto take = [&](JSObjectRef inFrom, const char* inName, JSObjectRef& outFunction) {
        Take(inRuntime, inFrom, inName, outFunction);
    };
    const JSObjectRef errors = Load(inRuntime, "Errors", kErrorsScript, nullptr);
    take(errors, "makeError", functions.makeError);
    take(errors, "facts", functions.facts);
    const JSObjectRef values = Load(inRuntime, "Values", kValuesScript, nullptr);
    take(values, "kindOf", functions.kindOf);
    take(values, "keys", functions.keys);
    take(values, "bytesOf", functions.bytesOf);
    take(values, "dateText", functions.dateText);
    take(values, "watch", functions.watch);
    const JSObjectRef inspect = Load(inRuntime, "Inspect", kInspectScript, nullptr);
    take(inspect, "inspect", functions.inspect);
    take(inspect, "line", functions.line);
    const JSObjectRef classes = Load(inRuntime, "Classes", kClassesScript, inRuntime.classes.Natives());
    take(classes, "handleOf", functions.handleOf);
    take(classes, "nameOf", functions.nameOf);
    take(classes, "defineClass", functions.defineClass);
    take(classes, "wrap", functions.wrap);
    take(classes, "publish", functions.publish);
    take(classes, "defineGlobal", functions.defineGlobal);
    const JSObjectRef modules = Load(inRuntime, "Modules", kModulesScript, inRuntime.modules.Natives());
    take(modules, "makeRequire", functions.makeRequire);
    take(modules, "makeModule", functions.makeModule);
    take(modules, "run", functions.run);
    take(modules, "runData", functions.runData);
    take(modules, "defineRequire", functions.defineRequire);
    const JSObjectRef prompt = Load(inRuntime, "Prompt", kPromptScript, nullptr);
    take(prompt, "complete", functions.complete);
    const JSObjectRef ticks = JSObjectMake(inRuntime.context, nullptr, nullptr);
    SetMember(inRuntime, ticks, "tick", MakeFunction(inRuntime, "kio:tick", &Tick));
    take(Load(inRuntime, "Jobs", kJobsScript, ticks), "watchJobs", functions.watchJobs);
}

} // namespace kioscripting_jsc
