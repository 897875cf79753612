#pragma once

#include <kiocore/classref/InterfaceRef.h>
#include <kioscripting/ClassDefinition.h>

namespace kioscripting::factory {

/// Turns references on a host's object into script objects wherever natives return them to scripts.
struct ObjectTransformation {
    std::type_index interfaceType = typeid(void);
    /// @param inReference  an InterfaceRef of the interface.
    std::function<ScriptObjectPtr(const void* inReference, int inContext)> transform;
};
template <typename Interface>
ObjectTransformation
MakeTransformation(ScriptObjectPtr (*inTransform)(const kiocore::InterfaceRef<Interface>&, int inContext))
{
    return {typeid(Interface), [inTransform](const void* inReference, int inContext) {
                return inTransform(*static_cast<const kiocore::InterfaceRef<Interface>*>(inReference),
                                   inContext);
            }};
}

using DefineFunction = ClassDefinition (*)();

/// A static object of this registers a class with the bridge as its library is loaded, and takes it back as
/// it is unloaded. The definition is made when somebody first asks for classes, so loading costs nothing. Of
/// two classes of one name the one registered last counts.
///
/// Threading: any thread.
class KIO_EXPORT ScriptObjectDefinitionInitiator {
public:
    explicit ScriptObjectDefinitionInitiator(DefineFunction inDefine);
    ~ScriptObjectDefinitionInitiator();
    ScriptObjectDefinitionInitiator(const ScriptObjectDefinitionInitiator&) = delete;
    ScriptObjectDefinitionInitiator& operator=(const ScriptObjectDefinitionInitiator&) = delete;
};

/// The same for a class whose objects stand for objects of the host.
class KIO_EXPORT ScriptObjectDefinitionRegistrar {
public:
    ScriptObjectDefinitionRegistrar(DefineFunction inDefine, ObjectTransformation inTransformation);
    ~ScriptObjectDefinitionRegistrar();
    ScriptObjectDefinitionRegistrar(const ScriptObjectDefinitionRegistrar&) = delete;
    ScriptObjectDefinitionRegistrar& operator=(const ScriptObjectDefinitionRegistrar&) = delete;

private:
    const ScriptObjectDefinitionInitiator mInitiator;
};

/// @return empty when nobody has registered a transformation of the interface, or it made nothing.
KIO_EXPORT ScriptObjectPtr Transform(std::type_index inInterface, const void* inReference, int inContext);

} // namespace kioscripting::factory
