// What a process that evaluates a script cannot avoid: loading the engine, starting it, and stopping it.

#include <JavaScriptCore/JavaScript.h>

int main()
{
    const JSGlobalContextRef context = JSGlobalContextCreate(nullptr);
    const JSStringRef script = JSStringCreateWithUTF8CString("1");
    const JSValueRef value = JSEvaluateScript(context, script, nullptr, nullptr, 1, nullptr);
    JSStringRelease(script);
    JSGlobalContextRelease(context);
    return value ? 0 : 1;
}
