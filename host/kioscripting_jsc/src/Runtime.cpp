#include "Runtime.h"

#include "Bridge.h"
#include "Console.h"
#include "Text.h"

#include <kioscripting/Context.h>

namespace kioscripting_jsc {
namespace {

JSValueRef NoteRejection(Runtime& inRuntime, std::span<const JSValueRef> inArguments)
{
    if (inArguments.size() > 1) {
        inRuntime.rejections.emplace_back(inRuntime.context, inArguments[1]);
    }
    return JSValueMakeUndefined(inRuntime.context);
}

} // namespace

Runtime::Runtime(kioscripting::EngineSettings inSettings)
    : settings(std::move(inSettings)), limits(*this), handles(*this), classes(*this), modules(*this)
{
    group = JSContextGroupCreate();
    context = JSGlobalContextCreateInGroup(group, nullptr);
    contextHdl = kioscripting::OpenContext();
    LoadBridge(*this);
    DefineConsole(*this);
    classes.Update();
    JSGlobalContextSetUnhandledRejectionCallback(
        context, MakeFunction(*this, "kio:rejected", &NoteRejection), nullptr);
}

Runtime::~Runtime()
{
    // New objects are not made any more, whatever the destructors of those that go now may try.
    kioscripting::CloseContext(contextHdl);
    rejections.clear();
    modules.Clear();
    handles.ForgetObjects();
    JSGlobalContextRelease(context);
    JSContextGroupRelease(group);
}

JSValueRef Runtime::Call(JSObjectRef inFunction, std::span<const JSValueRef> inArguments)
{
    JSValueRef thrown = nullptr;
    const JSValueRef value = JSObjectCallAsFunction(context, inFunction, nullptr, inArguments.size(),
                                                    inArguments.data(), &thrown);
    if (!value || thrown) {
        throw ScriptThrown{Protected(context, thrown)};
    }
    return value;
}

std::string Runtime::Text(JSValueRef inValue)
{
    JSValueRef thrown = nullptr;
    const JSStringRef text = JSValueToStringCopy(context, inValue, &thrown);
    const ScText owned = ScText::Own(text);
    if (!text || thrown) {
        throw ScriptThrown{Protected(context, thrown)};
    }
    return owned.UTF8();
}

JSValueRef Runtime::Get(JSObjectRef inObject, const char* inName)
{
    JSValueRef thrown = nullptr;
    const JSValueRef value = JSObjectGetProperty(context, inObject, ScText(inName).Get(), &thrown);
    if (!value || thrown) {
        throw ScriptThrown{Protected(context, thrown)};
    }
    return value;
}

JSValueRef Runtime::GetAt(JSObjectRef inArray, unsigned inIndex)
{
    JSValueRef thrown = nullptr;
    const JSValueRef value = JSObjectGetPropertyAtIndex(context, inArray, inIndex, &thrown);
    if (!value || thrown) {
        throw ScriptThrown{Protected(context, thrown)};
    }
    return value;
}

std::size_t Runtime::Length(JSObjectRef inArray)
{
    return static_cast<std::size_t>(JSValueToNumber(context, Get(inArray, "length"), nullptr));
}

} // namespace kioscripting_jsc
