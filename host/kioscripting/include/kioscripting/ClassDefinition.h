#pragma once

#include <kioscripting/Value.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <typeindex>
#include <vector>

namespace kioscripting {

enum ParameterFlags : int {
    kParameter_Required = 0,
    kParameter_Optional = 1, ///< may be left out; the native gets its type's default value then
};
enum PropertyFlags : int {
    kProperty_Plain = 0,
    kProperty_Object = 1, ///< its value is an object of the bridge, made anew at each reading
};

/// Types are named as scripts know them ("string", "number", "boolean", "object") or by a class's name.
struct ParameterDefinition {
    std::string name;
    std::string type;
    ParameterFlags flags = kParameter_Required;
    std::string description = {};
};
struct ResultDefinition {
    std::string name; ///< for people who read descriptions; the value itself is what the call returns
    std::string type;
};

/// @param inContext    of the calling script.
/// @param inArguments  counted and, where they were left out, filled up with undefined.
using ConstructFunction = std::function<ScriptObjectPtr(int inContext, const Values& inArguments)>;
using InvokeFunction = std::function<Value(ScriptObject& inObject, const Values& inArguments)>;
using GetFunction = std::function<Value(const ScriptObject& inObject)>;

struct ConstructorDefinition {
    std::string description = {};
    std::vector<ParameterDefinition> parameters;
    ConstructFunction construct;
};
struct MethodDefinition {
    std::string name;
    std::string description = {};
    std::vector<ParameterDefinition> parameters;
    ResultDefinition result;
    InvokeFunction invoke;
};
/// Read-only for scripts.
struct PropertyDefinition {
    std::string name;
    std::string type;
    std::string description = {};
    PropertyFlags flags = kProperty_Plain;
    GetFunction get;
};

/// A class as scripts see it: data, whatever engine evaluates them.
struct ClassDefinition {
    std::string nameSpace; ///< with dots: "Halcyon.TRFoundation"
    std::string name;
    std::string description = {};
    std::optional<ConstructorDefinition> constructor; ///< none: only natives make objects
    std::vector<MethodDefinition> methods;            ///< in the order of registration, like the properties
    std::vector<PropertyDefinition> properties;
    std::type_index nativeType = typeid(void);
    std::function<ScriptObjectPtr()> create; ///< an object that nothing has filled yet

    std::string QualifiedName() const { return nameSpace + "." + name; }
};
using ClassDefinitionPtr = std::shared_ptr<const ClassDefinition>;

/// What is registered. Definitions of a library that is unloaded go with it; whoever holds one by its pointer
/// may still read, but not call it.
///
/// Threading: any thread.
class KIO_EXPORT ClassRegistry {
public:
    /// Another number after every registration and withdrawal.
    static std::uint64_t Version();
    /// Sorted by qualified name.
    static std::vector<ClassDefinitionPtr> AllClasses();
    /// Empty when there is none.
    static ClassDefinitionPtr FindClass(std::string_view inQualifiedName);
    static ClassDefinitionPtr FindClass(std::type_index inNativeType);
    /// Of the object's own type.
    static ClassDefinitionPtr ClassOf(const ScriptObject& inObject);
};

/// Objects are made, called and read by name as engines do it, arguments checked against the definition.
/// @throws kio_exception: kError_BadArgument naming class, member and what was expected for a name that is
///     not there, or too few or too many arguments; kError_BadConversion for an argument of the wrong type.
///     What the native throws passes through.
///
/// Threading: that of the context.
KIO_EXPORT ScriptObjectPtr ConstructObject(const ClassDefinition& inClass, int inContext,
                                           const Values& inArguments = {});
KIO_EXPORT Value InvokeMethod(ScriptObject& inObject, std::string_view inName,
                              const Values& inArguments = {});
KIO_EXPORT Value ReadProperty(const ScriptObject& inObject, std::string_view inName);
/// The same by definition, without looking names up.
KIO_EXPORT Value InvokeMethod(const ClassDefinition& inClass, const MethodDefinition& inMethod,
                              ScriptObject& inObject, const Values& inArguments);

/// What people read about a class, or a namespace and the classes in it: "" lists the namespaces.
/// @throws kio_exception (kError_BadArgument) for a name that is neither, naming those there are.
KIO_EXPORT std::string Describe(std::string_view inName);

} // namespace kioscripting
