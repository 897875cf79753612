#include "ScriptOptions.h"

#include <kioscripting/ClassDefinition.h>

namespace trhost {
namespace {

using namespace kioscripting;

std::string Parameters(const std::vector<ParameterDefinition>& inParameters)
{
    std::string text;
    for (const ParameterDefinition& parameter : inParameters) {
        text += (text.empty() ? "" : ", ") + parameter.name +
                ((parameter.flags & kParameter_Optional) != 0 ? "?: " : ": ") + parameter.type;
    }
    return "(" + text + ")";
}

std::string ParameterNotes(const std::vector<ParameterDefinition>& inParameters)
{
    std::string text;
    for (const ParameterDefinition& parameter : inParameters) {
        if (!parameter.description.empty()) {
            text += "\n  - `" + parameter.name + "`: " + parameter.description;
        }
    }
    return text;
}

std::string Properties(const ClassDefinition& inClass)
{
    if (inClass.properties.empty()) {
        return {};
    }
    std::string text = "| property | type | |\n|---|---|---|\n";
    for (const PropertyDefinition& property : inClass.properties) {
        text += "| `" + property.name + "` | " + property.type + " | " + property.description + " |\n";
    }
    return text + "\n";
}

std::string Methods(const ClassDefinition& inClass)
{
    std::string text;
    if (inClass.constructor) {
        text += "- `new " + inClass.QualifiedName() + Parameters(inClass.constructor->parameters) +
                "`: " + inClass.constructor->description + ParameterNotes(inClass.constructor->parameters) +
                "\n";
    }
    for (const MethodDefinition& method : inClass.methods) {
        const std::string result = method.result.type.empty() ? "" : ": " + method.result.type;
        text += "- `" + method.name + Parameters(method.parameters) + result + "`: " + method.description +
                ParameterNotes(method.parameters) + "\n";
    }
    return text.empty() ? text : text + "\n";
}

} // namespace

std::string ScriptReference()
{
    std::string text;
    for (const ClassDefinitionPtr& definition : ClassRegistry::AllClasses()) {
        text += "### " + definition->QualifiedName() + "\n\n" + definition->description + "\n\n" +
                Methods(*definition) + Properties(*definition);
    }
    while (text.ends_with("\n\n")) {
        text.pop_back();
    }
    return text;
}

} // namespace trhost
