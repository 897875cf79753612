#pragma once

#include <kioscripting/ScriptObject.h>

#include <cstddef>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kioscripting {

struct Undefined {
    friend bool operator==(Undefined, Undefined) { return true; }
};
struct Null {
    friend bool operator==(Null, Null) { return true; }
};
/// Bytes of an engine's buffer, copied.
struct Bytes {
    std::vector<std::byte> bytes;
    friend bool operator==(const Bytes&, const Bytes&) = default;
};
/// Something of the engine's that natives have no use for: a function, a symbol, a big integer.
struct Foreign {
    std::string type; ///< as the engine calls it
    friend bool operator==(const Foreign&, const Foreign&) = default;
};

/// What passes between scripts and natives.
///
/// Threading: a plain value.
class Value {
public:
    using Array = std::vector<Value>;
    /// In the order of the script.
    using Members = std::vector<std::pair<std::string, Value>>;
    using Variant = std::variant<Undefined, Null, bool, double, std::string, Bytes, Array, Members,
                                 ScriptObjectPtr, Foreign>;

    Value() = default;
    Value(Undefined) {}
    Value(Null) : mVariant(Null()) {}
    Value(bool inValue) : mVariant(inValue) {}
    Value(double inValue) : mVariant(inValue) {}
    Value(int inValue) : mVariant(double(inValue)) {}
    /// UTF-8.
    Value(std::string inText) : mVariant(std::move(inText)) {}
    Value(const char* inText) : mVariant(std::string(inText)) {}
    Value(Bytes inBytes) : mVariant(std::move(inBytes)) {}
    Value(Array inValues) : mVariant(std::move(inValues)) {}
    Value(Members inMembers) : mVariant(std::move(inMembers)) {}
    /// An empty pointer is null.
    Value(ScriptObjectPtr inObject)
    {
        if (inObject) {
            mVariant = std::move(inObject);
        } else {
            mVariant = Null();
        }
    }
    Value(Foreign inForeign) : mVariant(std::move(inForeign)) {}

    const Variant& AsVariant() const { return mVariant; }
    /// Null when it is of another type.
    template <typename T>
    const T* As() const
    {
        return std::get_if<T>(&mVariant);
    }
    bool IsUndefined() const { return As<Undefined>() != nullptr; }
    bool IsNullOrUndefined() const { return IsUndefined() || As<Null>() != nullptr; }

    friend bool operator==(const Value& inA, const Value& inB) { return inA.mVariant == inB.mVariant; }

private:
    Variant mVariant;
};
using Values = std::vector<Value>;

/// For messages: "undefined", "null", "boolean", "number", "string", "bytes", "array", "object", the class
/// name of a script object, or the engine's name of something foreign.
KIO_EXPORT std::string TypeNameOf(const Value& inValue);

} // namespace kioscripting
