#include "Handles.h"

#include "Runtime.h"

#include <memory>

namespace kioscripting_jsc {

HandleKeeper::~HandleKeeper()
{
    // Destructors of natives may come back to the bridge, but not to this engine any more.
    mUnused.store(nullptr);
    mByNative.clear();
    const std::unordered_set<Handle*> all = std::move(mAll);
    for (Handle* const handle : all) {
        delete handle;
    }
}

JSClassRef HandleKeeper::HandleClass()
{
    static const JSClassRef sClass = [] {
        JSClassDefinition definition = kJSClassDefinitionEmpty;
        definition.className = "Native";
        definition.attributes = kJSClassAttributeNoAutomaticPrototype;
        definition.finalize = &HandleKeeper::OnUnused;
        return JSClassCreate(&definition);
    }();
    return sClass;
}

void HandleKeeper::OnUnused(JSObjectRef inHandle)
{
    auto* const handle = static_cast<Handle*>(JSObjectGetPrivate(inHandle));
    std::atomic<Handle*>& unused = handle->runtime->handles.mUnused;
    handle->nextUnused = unused.load(std::memory_order_relaxed);
    while (!unused.compare_exchange_weak(handle->nextUnused, handle, std::memory_order_release,
                                         std::memory_order_relaxed)) {
    }
}

JSObjectRef HandleKeeper::Make(const Binding& inBinding, kioscripting::ScriptObjectPtr inNative)
{
    ReleaseUnused();
    auto handle = std::make_unique<Handle>();
    handle->runtime = &mRuntime;
    handle->binding = &inBinding;
    handle->native = std::move(inNative);
    mAll.insert(handle.get());
    return JSObjectMake(mRuntime.context, HandleClass(), handle.release());
}

void HandleKeeper::SetObject(JSObjectRef inHandle, JSObjectRef inObject)
{
    auto* const handle = static_cast<Handle*>(JSObjectGetPrivate(inHandle));
    mByNative[handle->native.get()] = handle;
    handle->object = JSWeakCreate(mRuntime.group, inObject);
}

JSObjectRef HandleKeeper::Find(const kioscripting::ScriptObject& inNative) const
{
    const auto found = mByNative.find(&inNative);
    return found == mByNative.end() ? nullptr : JSWeakGetObject(found->second->object);
}

void HandleKeeper::ReleaseUnused()
{
    if (!mUnused.load(std::memory_order_relaxed)) {
        return;
    }
    Handle* handle = mUnused.exchange(nullptr, std::memory_order_acquire);
    while (handle) {
        Handle* const next = handle->nextUnused;
        Delete(handle);
        handle = next;
    }
}

void HandleKeeper::Delete(Handle* inHandle)
{
    mAll.erase(inHandle);
    const auto found = mByNative.find(inHandle->native.get());
    if (found != mByNative.end() && found->second == inHandle) {
        mByNative.erase(found);
    }
    if (inHandle->object) {
        JSWeakRelease(mRuntime.group, inHandle->object);
    }
    delete inHandle;
}

void HandleKeeper::ForgetObjects()
{
    for (Handle* const handle : mAll) {
        if (handle->object) {
            JSWeakRelease(mRuntime.group, handle->object);
            handle->object = nullptr;
        }
    }
    mByNative.clear();
}

} // namespace kioscripting_jsc
