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

    /// Null when nobody registered the class.
    ClassFactory::FactoryFunction FindFactory(const utility::Guid& inClassID)
    {
        std::lock_guard guard(lock);
        const auto found = classes.find(inClassID);
        return found != classes.end() ? found->second.factory : nullptr;
    }
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
    const FactoryFunction factory = TheRegistry().FindFactory(inClassID);
    if (!factory) {
        throw kio_exception("No class is registered under " + inClassID.AsUTF8(), kError_ClassNotRegistered);
    }
    InterfaceRef<UnknownBase> object;
    factory(object);
    return object;
}

int ClassFactory::CreateInstanceRef(const utility::Guid& inClassID, InterfaceRef<UnknownBase>& outObject)
{
    KIO_HOST_CALL("kiocore::classref::ClassFactory::CreateInstanceRef", inClassID);
    const FactoryFunction factory = TheRegistry().FindFactory(inClassID);
    if (!factory) {
        return -1;
    }
    InterfaceRef<UnknownBase> object;
    factory(object);
    if (!object) {
        return -2;
    }
    outObject = std::move(object);
    return 0;
}

bool ClassFactory::IsRegistered(const utility::Guid& inClassID)
{
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    return registry.classes.contains(inClassID);
}

} // namespace kiocore::classref
