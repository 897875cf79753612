#pragma once

#include "EngineFunctions.h"

#include <kioscripting/ScriptObject.h>

#include <atomic>
#include <unordered_map>
#include <unordered_set>

namespace kioscripting_jsc {

struct Binding;
struct Runtime;

/// What the private data of the engine's objects points to; all of it begins so.
enum class PrivateKind { kHandle, kBinding, kMember, kFunction };
struct Private {
    explicit Private(PrivateKind inKind) : kind(inKind) {}
    const PrivateKind kind;
};

/// A native that a script's object stands for.
struct Handle : Private {
    Handle() : Private(PrivateKind::kHandle) {}
    Runtime* runtime = nullptr;
    const Binding* binding = nullptr;
    kioscripting::ScriptObjectPtr native;
    JSWeakRef object = nullptr; ///< the script's
    Handle* nextUnused = nullptr;
};

/// Null for what is no object of the kind.
template <typename T>
T* PrivateOf(JSContextRef inContext, JSValueRef inValue, PrivateKind inKind)
{
    if (!JSValueIsObject(inContext, inValue)) {
        return nullptr;
    }
    auto* const found = static_cast<Private*>(JSObjectGetPrivate(const_cast<JSObjectRef>(inValue)));
    return found && found->kind == inKind ? static_cast<T*>(found) : nullptr;
}

/// Owns an engine's handles, and with them its share of the natives. The engine tells on whatever thread, in
/// the middle of its collection, that it has found one unused; natives are let go afterwards, on the engine's
/// thread, since their destructors may do anything.
///
/// Threading: the engine's thread.
class HandleKeeper {
public:
    explicit HandleKeeper(Runtime& inRuntime) : mRuntime(inRuntime) {}
    ~HandleKeeper();

    /// An engine's object that holds the native as long as inObject carries it.
    JSObjectRef Make(const Binding& inBinding, kioscripting::ScriptObjectPtr inNative);
    /// The script's object that carries a handle that was just made.
    void SetObject(JSObjectRef inHandle, JSObjectRef inObject);
    /// The script's object that stands for a native; null when there is none.
    JSObjectRef Find(const kioscripting::ScriptObject& inNative) const;
    /// Lets go what the engine has found unused.
    void ReleaseUnused();
    /// Before the context goes: nothing may point into it any more.
    void ForgetObjects();

private:
    static void OnUnused(JSObjectRef inHandle);
    static JSClassRef HandleClass();
    void Delete(Handle* inHandle);

    Runtime& mRuntime;
    std::unordered_set<Handle*> mAll;
    std::unordered_map<const kioscripting::ScriptObject*, Handle*> mByNative;
    std::atomic<Handle*> mUnused{nullptr}; // any thread
};

} // namespace kioscripting_jsc
