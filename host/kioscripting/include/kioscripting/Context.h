#pragma once

#include <kioscripting/ClassDefinition.h>

#include <cstdint>

namespace kioscripting {

/// A context is what scripts that see each other's objects run in. Natives know it by a number above 0, never
/// given twice; an engine opens one for itself, and so can a test that needs no engine.
///
/// Threading: any thread.
KIO_EXPORT int OpenContext();
/// Objects made in it may outlive it; new ones are not made any more. Closing again is no error.
KIO_EXPORT void CloseContext(int inContext) noexcept;
KIO_EXPORT bool IsContextOpen(int inContext);
/// How many objects made in the context are alive, also after it was closed.
KIO_EXPORT std::int64_t CountLiveObjects(int inContext);

/// @return empty when the context is not open or the class was not registered.
KIO_EXPORT ScriptObjectPtr CreateScriptObject(const ClassDefinition& inClass, int inContext);

/// An object of a registered native type, for natives that return one.
/// @return empty when the context is not open or nobody has registered the type.
template <typename T>
boost::intrusive_ptr<T> CreateScriptObject(int inContext)
{
    const ClassDefinitionPtr definition = ClassRegistry::FindClass(typeid(T));
    const ScriptObjectPtr object = definition ? CreateScriptObject(*definition, inContext) : nullptr;
    return boost::intrusive_ptr<T>(dynamic_cast<T*>(object.get()));
}

} // namespace kioscripting
