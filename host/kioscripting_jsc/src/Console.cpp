#include "Console.h"

#include "Bridge.h"
#include "Runtime.h"
#include "Text.h"

#include <kioscripting/ClassDefinition.h>

namespace kioscripting_jsc {
namespace {

using kioscripting::ConsoleLevel;

template <ConsoleLevel kLevel>
JSValueRef Write(Runtime& inRuntime, std::span<const JSValueRef> inArguments)
{
    inRuntime.limits.Check();
    const std::string text = inRuntime.Text(inRuntime.Call(inRuntime.functions.line, inArguments));
    if (inRuntime.settings.console) {
        inRuntime.settings.console(kLevel, text);
    }
    return JSValueMakeUndefined(inRuntime.context);
}

/// A name, a class, a namespace, or an object of a class.
std::string DescribedName(Runtime& inRuntime, JSValueRef inThing)
{
    const JSContextRef context = inRuntime.context;
    if (JSValueIsUndefined(context, inThing)) {
        return {};
    }
    if (JSValueIsString(context, inThing)) {
        return TextOf(context, inThing);
    }
    const JSValueRef name = inRuntime.Call(inRuntime.functions.nameOf, {inThing});
    if (JSValueIsString(context, name)) {
        return TextOf(context, name);
    }
    const JSValueRef carried = inRuntime.Call(inRuntime.functions.handleOf, {inThing});
    if (const auto* const handle = PrivateOf<Handle>(context, carried, PrivateKind::kHandle)) {
        return handle->binding->definition->QualifiedName();
    }
    throw WrongUse("describe: expected a class, a namespace, an object of a class, or a name");
}

JSValueRef DescribeThing(Runtime& inRuntime, std::span<const JSValueRef> inArguments)
{
    const JSValueRef thing = inArguments.empty() ? JSValueMakeUndefined(inRuntime.context) : inArguments[0];
    return MakeText(inRuntime.context, kioscripting::Describe(DescribedName(inRuntime, thing)));
}

} // namespace

void DefineConsole(Runtime& inRuntime)
{
    const JSObjectRef console = JSObjectMake(inRuntime.context, nullptr, nullptr);
    const auto add = [&](const char* inName, NativeFunction inFunction) {
        SetMember(inRuntime, console, inName, MakeFunction(inRuntime, inName, inFunction));
    };
    add("log", &Write<ConsoleLevel::kLog>);
    add("debug", &Write<ConsoleLevel::kLog>);
    add("info", &Write<ConsoleLevel::kInfo>);
    add("warn", &Write<ConsoleLevel::kWarning>);
    add("error", &Write<ConsoleLevel::kError>);
    const JSObjectRef global = JSContextGetGlobalObject(inRuntime.context);
    SetMember(inRuntime, global, "console", console);
    SetMember(inRuntime, global, "describe", MakeFunction(inRuntime, "describe", &DescribeThing));
}

} // namespace kioscripting_jsc
