#include <kioscripting/ClassDefinition.h>

#include <kiocore/config/Errors.h>

#include <set>

namespace kioscripting {
namespace {

std::string Signature(const std::string& inName, const std::vector<ParameterDefinition>& inParameters)
{
    std::string text = inName + "(";
    for (std::size_t i = 0; i < inParameters.size(); ++i) {
        const ParameterDefinition& parameter = inParameters[i];
        text += (i == 0 ? "" : ", ") + parameter.name;
        text += (parameter.flags & kParameter_Optional) != 0 ? "?: " : ": ";
        text += parameter.type;
    }
    return text + ")";
}

std::string DescribeClass(const ClassDefinition& inClass)
{
    std::string text = "class " + inClass.QualifiedName() + "\n    " + inClass.description + "\n";
    if (inClass.constructor) {
        text += "\n  new " + Signature(inClass.name, inClass.constructor->parameters) + "\n      " +
                inClass.constructor->description + "\n";
    }
    for (const MethodDefinition& method : inClass.methods) {
        text += "\n  " + Signature(method.name, method.parameters);
        if (!method.result.type.empty()) {
            text += ": " + method.result.type + "  (" + method.result.name + ")";
        }
        text += "\n      " + method.description + "\n";
        for (const ParameterDefinition& parameter : method.parameters) {
            if (!parameter.description.empty()) {
                text += "      " + parameter.name + ": " + parameter.description + "\n";
            }
        }
    }
    for (const PropertyDefinition& property : inClass.properties) {
        text += "\n  " + property.name + ": " + property.type + "  (read-only)\n      " +
                property.description + "\n";
    }
    return text;
}

} // namespace

std::string Describe(std::string_view inName)
{
    const std::string prefix = inName.empty() ? std::string() : std::string(inName) + ".";
    std::set<std::string> namespaces;
    std::string within;
    std::string names;
    for (const ClassDefinitionPtr& definition : ClassRegistry::AllClasses()) {
        if (definition->QualifiedName() == inName) {
            return DescribeClass(*definition);
        }
        if (definition->nameSpace == inName) {
            within += "  " + definition->name + "\n      " + definition->description + "\n";
        } else if ((definition->nameSpace + ".").starts_with(prefix)) {
            namespaces.insert(definition->nameSpace);
        }
        names += (names.empty() ? "" : ", ") + definition->QualifiedName();
    }
    for (const std::string& name : namespaces) {
        within += "  " + name + "\n";
    }
    if (within.empty()) {
        throw kiocore::kio_exception("Nothing is called " + std::string(inName) + "; expected one of " +
                                         names,
                                     kiocore::kError_BadArgument);
    }
    return (inName.empty() ? std::string("namespaces\n") : "namespace " + std::string(inName) + "\n") +
           within;
}

} // namespace kioscripting
