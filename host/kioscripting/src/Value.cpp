#include <kioscripting/Value.h>

namespace kioscripting {

ScriptObjectBase::~ScriptObjectBase() = default;

std::string TypeNameOf(const Value& inValue)
{
    struct Name {
        std::string operator()(Undefined) const { return "undefined"; }
        std::string operator()(Null) const { return "null"; }
        std::string operator()(bool) const { return "boolean"; }
        std::string operator()(double) const { return "number"; }
        std::string operator()(const std::string&) const { return "string"; }
        std::string operator()(const Bytes&) const { return "bytes"; }
        std::string operator()(const Value::Array&) const { return "array"; }
        std::string operator()(const Value::Members&) const { return "object"; }
        std::string operator()(const ScriptObjectPtr& inObject) const { return inObject->GetClassname(); }
        std::string operator()(const Foreign& inForeign) const { return inForeign.type; }
    };
    return std::visit(Name(), inValue.AsVariant());
}

} // namespace kioscripting
