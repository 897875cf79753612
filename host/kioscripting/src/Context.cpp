#include <kioscripting/Context.h>

#include "ContextTable.h"

#include <kiocore/debug/Trace.h>

#include <map>
#include <mutex>

namespace kioscripting {
namespace {

struct ContextState {
    bool isOpen = true;
    std::int64_t liveObjects = 0;
};

/// Never destroyed: objects may be let go while the process ends.
struct ContextTable {
    std::mutex lock; // guards the members below
    std::map<int, ContextState> contexts;
    int last = 0;
};
ContextTable& Table()
{
    static auto* const sTable = new ContextTable();
    return *sTable;
}

} // namespace

int OpenContext()
{
    KIO_HOST_CALL("kioscripting::OpenContext");
    ContextTable& table = Table();
    std::lock_guard lock(table.lock);
    table.contexts.emplace(++table.last, ContextState());
    return table.last;
}

void CloseContext(int inContext) noexcept
{
    ContextTable& table = Table();
    std::lock_guard lock(table.lock);
    if (const auto found = table.contexts.find(inContext); found != table.contexts.end()) {
        found->second.isOpen = false;
        if (found->second.liveObjects == 0) {
            table.contexts.erase(found);
        }
    }
}

bool IsContextOpen(int inContext)
{
    ContextTable& table = Table();
    std::lock_guard lock(table.lock);
    const auto found = table.contexts.find(inContext);
    return found != table.contexts.end() && found->second.isOpen;
}

std::int64_t CountLiveObjects(int inContext)
{
    ContextTable& table = Table();
    std::lock_guard lock(table.lock);
    const auto found = table.contexts.find(inContext);
    return found == table.contexts.end() ? 0 : found->second.liveObjects;
}

ScriptObjectPtr CreateScriptObject(const ClassDefinition& inClass, int inContext)
{
    KIO_HOST_CALL("kioscripting::CreateScriptObject", inClass.name, inContext);
    if (!inClass.create) {
        return {};
    }
    {
        ContextTable& table = Table();
        std::lock_guard lock(table.lock);
        const auto found = table.contexts.find(inContext);
        if (found == table.contexts.end() || !found->second.isOpen) {
            return {};
        }
        ++found->second.liveObjects; // now, so that a context closed meanwhile is not forgotten
    }
    ScriptObjectPtr object;
    try {
        object = inClass.create();
    } catch (...) {
        ForgetObject(inContext);
        throw;
    }
    if (object) {
        ScriptObjectAccess::SetContext(*object, inContext);
    } else {
        ForgetObject(inContext);
    }
    return object;
}

void ForgetObject(int inContext) noexcept
{
    ContextTable& table = Table();
    std::lock_guard lock(table.lock);
    const auto found = table.contexts.find(inContext);
    if (found != table.contexts.end() && --found->second.liveObjects == 0 && !found->second.isOpen) {
        table.contexts.erase(found);
    }
}

void ScriptObjectAccess::SetContext(ScriptObject& ioObject, int inContext)
{
    ioObject.mContext = inContext;
}

ScriptObject::ScriptObject() = default;

ScriptObject::~ScriptObject()
{
    if (mContext != 0) {
        ForgetObject(mContext);
    }
}

} // namespace kioscripting
