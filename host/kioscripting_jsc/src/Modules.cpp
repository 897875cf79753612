#include "Modules.h"

#include "Bridge.h"
#include "Runtime.h"
#include "Text.h"

#include <kioscripting/Engine.h>

namespace kioscripting_jsc {
namespace {

constexpr const char kHead[] = "(function (exports, require, module, __filename, __dirname) {";

std::string FolderOf(const std::string& inPath)
{
    const std::size_t end = inPath.rfind('/');
    return end == std::string::npos ? "." : end == 0 ? "/" : inPath.substr(0, end);
}

/// The line of a script for a shell is no script's.
std::string WithoutShebang(const std::string& inText)
{
    return inText.starts_with("#!") ? "//" + inText.substr(2) : inText;
}

} // namespace

JSObjectRef ModuleCache::Natives()
{
    const JSObjectRef natives = JSObjectMake(mRuntime.context, nullptr, nullptr);
    SetMember(
        mRuntime, natives, "load",
        MakeFunction(mRuntime, "kio:load", [](Runtime& inRuntime, std::span<const JSValueRef> inArguments) {
            if (!JSValueIsString(inRuntime.context, inArguments[1])) {
                throw WrongUse("require: expected the name of a module");
            }
            return inRuntime.modules.Load(TextOf(inRuntime.context, inArguments[0]),
                                          TextOf(inRuntime.context, inArguments[1]));
        }));
    return natives;
}

void ModuleCache::Offer(const std::string& inFile)
{
    if (mRuntime.settings.loadModule) {
        const JSValueRef require =
            mRuntime.Call(mRuntime.functions.makeRequire, {MakeText(mRuntime.context, inFile)});
        mRuntime.Call(mRuntime.functions.defineRequire, {require});
    }
}

JSValueRef ModuleCache::Load(const std::string& inFromFile, const std::string& inName)
{
    mRuntime.limits.Check();
    const kioscripting::ModuleSource source = mRuntime.settings.loadModule(inName, inFromFile);
    if (const auto known = mModules.find(source.path); known != mModules.end()) {
        return mRuntime.Get(const_cast<JSObjectRef>(known->second.Get()), "exports");
    }
    const auto module = const_cast<JSObjectRef>(
        mRuntime.Call(mRuntime.functions.makeModule, {MakeText(mRuntime.context, source.path)}));
    mModules.emplace(source.path, Protected(mRuntime.context, module));
    try {
        Run(module, source.path, source.text);
    } catch (...) {
        mModules.erase(source.path); // asked for again, it is to fail again
        throw;
    }
    return mRuntime.Get(module, "exports");
}

/// The engine's own way to make a function of a text sees that it is nothing but a function's body, but
/// counts the lines of a head that it puts in front. So that is for checking only.
JSObjectRef ModuleCache::Compile(const std::string& inPath, const std::string& inText)
{
    const JSContextRef context = mRuntime.context;
    const ScText path(inPath);
    JSValueRef thrown = nullptr;
    const bool isBody =
        JSObjectMakeFunction(context, nullptr, 0, nullptr, ScText(inText).Get(), path.Get(), 1, &thrown);
    JSValueRef thrownInPlace = nullptr;
    const ScText whole(std::string(kHead) + inText + "\n})");
    const JSValueRef function =
        isBody || !JSCheckScriptSyntax(context, whole.Get(), path.Get(), 1, &thrownInPlace)
            ? JSEvaluateScript(context, whole.Get(), nullptr, path.Get(), 1, &thrownInPlace)
            : nullptr;
    if (!function || thrownInPlace) {
        throw ScriptThrown{Protected(context, thrownInPlace ? thrownInPlace : thrown)};
    }
    return const_cast<JSObjectRef>(function);
}

int ModuleCache::ColumnInFile(const std::string& inFile, int inLine, int inColumn) const
{
    const int head = static_cast<int>(std::string_view(kHead).size());
    return inLine == 1 && inColumn > head && mModules.contains(inFile) ? inColumn - head : inColumn;
}

void ModuleCache::Run(JSObjectRef inModule, const std::string& inPath, const std::string& inText)
{
    const JSContextRef context = mRuntime.context;
    if (inPath.ends_with(".json")) {
        mRuntime.Call(mRuntime.functions.runData, {inModule, MakeText(context, inText)});
        return;
    }
    const JSObjectRef compiled = Compile(inPath, WithoutShebang(inText));
    mRuntime.Call(mRuntime.functions.run, {inModule, compiled, MakeText(context, FolderOf(inPath))});
}

} // namespace kioscripting_jsc
