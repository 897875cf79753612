#include "Runtime.h"

#include "Bridge.h"
#include "Console.h"
#include "Text.h"

#include <kiocore/config/Errors.h>
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

ScContext::ScContext()
    : group(JSContextGroupCreate()), context(JSGlobalContextCreateInGroup(group, nullptr)),
      hdl(kioscripting::OpenContext())
{}

ScContext::~ScContext()
{
    JSGlobalContextRelease(context);
    JSContextGroupRelease(group);
    kioscripting::CloseContext(hdl);
}

Runtime::Runtime(kioscripting::EngineSettings inSettings)
    : settings(std::move(inSettings)), handles(*this), classes(*this), group(owned.group),
      context(owned.context), contextHdl(owned.hdl), limits(*this), modules(*this)
{
    try {
        LoadBridge(*this);
        DefineConsole(*this);
        classes.Update();
        JSGlobalContextSetUnhandledRejectionCallback(
            context, MakeFunction(*this, "kio:rejected", &NoteRejection), nullptr);
    } catch (const ScriptThrown&) { // which must not outlive the context
        throw kiocore::kio_exception("Cannot start a script engine: the thread has too little stack for it",
                                     kiocore::kError_Startup);
    }
}

Runtime::~Runtime()
{
    // New objects are not made any more, whatever the destructors of those that go now may try.
    kioscripting::CloseContext(contextHdl);
    handles.ForgetObjects();
}

JSValueRef Runtime::Call(JSObjectRef inFunction, std::span<const JSValueRef> inArguments)
{
    JSValueRef thrown = nullptr;
    const JSValueRef value =
        JSObjectCallAsFunction(context, inFunction, nullptr, inArguments.size(), inArguments.data(), &thrown);
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
