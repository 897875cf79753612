#include <kioscripting/ClassDefinition.h>
#include <kioscripting/Context.h>

#include <kiocore/config/Errors.h>

#include <algorithm>

namespace kioscripting {
namespace {

[[noreturn]] void ThrowBadArgument(const std::string& inText)
{
    throw kiocore::kio_exception(inText, kiocore::kError_BadArgument);
}

/// Fills up what may be left out. Arguments beyond the last are refused: a script that passes them expects
/// something that does not happen.
Values Completed(const std::string& inCallee, const std::vector<ParameterDefinition>& inParameters,
                 const Values& inArguments)
{
    const auto required = static_cast<std::size_t>(
        std::count_if(inParameters.begin(), inParameters.end(), [](const ParameterDefinition& inParameter) {
            return (inParameter.flags & kParameter_Optional) == 0;
        }));
    if (inArguments.size() < required || inArguments.size() > inParameters.size()) {
        std::string expected;
        for (const ParameterDefinition& parameter : inParameters) {
            expected += std::string(expected.empty() ? "" : ", ") + parameter.name;
            expected += (parameter.flags & kParameter_Optional) != 0 ? "?" : "";
        }
        ThrowBadArgument(inCallee + ": expected (" + expected + "), found " +
                         std::to_string(inArguments.size()) +
                         (inArguments.size() == 1 ? " argument" : " arguments"));
    }
    Values arguments = inArguments;
    arguments.resize(inParameters.size());
    return arguments;
}

/// Says in front which member it was about.
template <typename Function>
auto Named(const std::string& inCallee, const Function& inFunction) -> decltype(inFunction())
{
    try {
        return inFunction();
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() != kiocore::kError_BadConversion && error.Code() != kiocore::kError_BadGuidText) {
            throw;
        }
        throw kiocore::kio_exception(inCallee + ": " + error.what(), error.Code());
    }
}

ClassDefinitionPtr RequireClassOf(const ScriptObject& inObject)
{
    ClassDefinitionPtr definition = ClassRegistry::ClassOf(inObject);
    if (!definition) {
        ThrowBadArgument(std::string("The class ") + inObject.GetClassname() + " is not registered");
    }
    return definition;
}

template <typename Members>
const auto& RequireMember(const ClassDefinition& inClass, const Members& inMembers, const char* inKind,
                          std::string_view inName)
{
    const auto found = std::find_if(inMembers.begin(), inMembers.end(),
                                    [&](const auto& inMember) { return inMember.name == inName; });
    if (found == inMembers.end()) {
        ThrowBadArgument(inClass.QualifiedName() + " has no " + inKind + " " + std::string(inName));
    }
    return *found;
}

} // namespace

ScriptObjectPtr ConstructObject(const ClassDefinition& inClass, int inContext, const Values& inArguments)
{
    if (!inClass.constructor) {
        ThrowBadArgument(inClass.QualifiedName() + " cannot be constructed by scripts");
    }
    const Values arguments = Completed(inClass.name, inClass.constructor->parameters, inArguments);
    ScriptObjectPtr object = Named(inClass.name, [&] {
        return inClass.constructor->construct ? inClass.constructor->construct(inContext, arguments)
                                              : CreateScriptObject(inClass, inContext);
    });
    if (!object) {
        ThrowBadArgument(inClass.QualifiedName() + ": the context " + std::to_string(inContext) +
                         " is not open");
    }
    return object;
}

Value InvokeMethod(ScriptObject& inObject, std::string_view inName, const Values& inArguments)
{
    const ClassDefinitionPtr definition = RequireClassOf(inObject);
    return InvokeMethod(*definition, RequireMember(*definition, definition->methods, "method", inName),
                        inObject, inArguments);
}

Value InvokeMethod(const ClassDefinition& inClass, const MethodDefinition& inMethod, ScriptObject& inObject,
                   const Values& inArguments)
{
    const std::string callee = inClass.name + "." + inMethod.name;
    const Values arguments = Completed(callee, inMethod.parameters, inArguments);
    return Named(callee, [&] { return inMethod.invoke(inObject, arguments); });
}

Value ReadProperty(const ScriptObject& inObject, std::string_view inName)
{
    const ClassDefinitionPtr definition = RequireClassOf(inObject);
    return RequireMember(*definition, definition->properties, "property", inName).get(inObject);
}

} // namespace kioscripting
