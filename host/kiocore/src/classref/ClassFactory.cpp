#include <kiocore/classref/ClassFactory.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include "debug/TypeName.h"

#include <map>
#include <mutex>

namespace kiocore::classref {
namespace {

struct Registry {
    struct Class {
        const char* classIDName;
        const char* className;
        ClassFactory::FactoryFunction factory;
    };
    std::mutex lock;
    std::map<utility::Guid, Class> classes;
};

Registry& TheRegistry()
{
    static Registry registry;
    return registry;
}

} // namespace

Unknown::~Unknown() = default;
UnknownBase::~UnknownBase() = default;
void* UnknownBase::QueryMap(const CFUUIDBytes&)
{
    return nullptr;
}

void ThrowNullReference(const std::type_info& inType)
{
    throw null_reference_exception(debug::TypeName(inType));
}

void ClassFactory::RegisterClass(const utility::Guid& inClassID, const char* inClassIDName,
                                 const char* inClassName, FactoryFunction inFactory)
{
    KIO_HOST_CALL("kiocore::classref::ClassFactory::RegisterClass", inClassID, inClassIDName, inClassName);
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    registry.classes[inClassID] = {inClassIDName, inClassName, inFactory};
}

InterfaceRef<UnknownBase> ClassFactory::CreateClassInstanceRef(const utility::Guid& inClassID)
{
    KIO_HOST_CALL("kiocore::classref::ClassFactory::CreateClassInstanceRef", inClassID);
    FactoryFunction factory = nullptr;
    {
        Registry& registry = TheRegistry();
        std::lock_guard lock(registry.lock);
        if (auto found = registry.classes.find(inClassID); found != registry.classes.end()) {
            factory = found->second.factory;
        }
    }
    if (!factory) {
        throw kio_exception("No class is registered under " + inClassID.AsUTF8(), kError_ClassNotRegistered);
    }
    InterfaceRef<UnknownBase> object;
    factory(object);
    return object;
}

bool ClassFactory::IsRegistered(const utility::Guid& inClassID)
{
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    return registry.classes.contains(inClassID);
}

} // namespace kiocore::classref
