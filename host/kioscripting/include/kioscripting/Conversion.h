#pragma once

#include <kiocore/utility/UTF16String.h>
#include <kioscripting/Factory.h>
#include <kioscripting/GuidObject.h>

#include <concepts>
#include <limits>
#include <type_traits>

/// Natives' types from and to script values. Whoever has a type of his own specialises Convert.
///
/// From throws kio_exception (kError_BadConversion): "expected a string, found a number". It takes undefined
/// as the default value only where a parameter is optional, which is decided before it is called.
namespace kioscripting {

/// @throws kio_exception (kError_BadConversion).
[[noreturn]] KIO_EXPORT void ThrowWrongType(const char* inExpected, const Value& inFound);
/// A whole number in a range.
/// @throws kio_exception (kError_BadConversion) naming the number and the range.
KIO_EXPORT double CheckedInteger(const Value& inValue, double inLeast, double inMost);

template <typename T>
struct Convert;

template <>
struct Convert<Value> {
    static Value To(const Value& inValue, int) { return inValue; }
    static Value From(const Value& inValue) { return inValue; }
};

template <>
struct Convert<bool> {
    static Value To(bool inValue, int) { return inValue; }
    static bool From(const Value& inValue)
    {
        const bool* const value = inValue.As<bool>();
        return value ? *value : (ThrowWrongType("a boolean", inValue), false);
    }
};

template <std::floating_point T>
struct Convert<T> {
    static Value To(T inValue, int) { return double(inValue); }
    static T From(const Value& inValue)
    {
        const double* const value = inValue.As<double>();
        return value ? T(*value) : (ThrowWrongType("a number", inValue), T());
    }
};

/// Scripts' numbers hold whole numbers up to 2^53; larger ones become inexact on the way to a script and are
/// refused from one.
template <std::integral T>
struct Convert<T> {
    static constexpr double kMostExact = 9007199254740992.0;

    static Value To(T inValue, int) { return double(inValue); }
    static T From(const Value& inValue)
    {
        return T(CheckedInteger(inValue, std::max(double(std::numeric_limits<T>::min()), -kMostExact),
                                std::min(double(std::numeric_limits<T>::max()), kMostExact)));
    }
};

template <>
struct Convert<std::string> {
    static Value To(const std::string& inText, int) { return inText; }
    static std::string From(const Value& inValue)
    {
        const std::string* const text = inValue.As<std::string>();
        return text ? *text : (ThrowWrongType("a string", inValue), std::string());
    }
};

template <>
struct Convert<kiocore::UTF16String> {
    static Value To(const kiocore::UTF16String& inText, int) { return kiocore::utility::ToUTF8(inText); }
    static kiocore::UTF16String From(const Value& inValue)
    {
        return kiocore::utility::ToUTF16(Convert<std::string>::From(inValue));
    }
};

template <typename T>
struct Convert<std::vector<T>> {
    static Value To(const std::vector<T>& inValues, int inContext)
    {
        Value::Array array;
        array.reserve(inValues.size());
        for (const T& value : inValues) {
            array.push_back(Convert<T>::To(value, inContext));
        }
        return array;
    }
    static std::vector<T> From(const Value& inValue)
    {
        const Value::Array* const array = inValue.As<Value::Array>();
        if (!array) {
            ThrowWrongType("an array", inValue);
        }
        std::vector<T> values;
        values.reserve(array->size());
        for (const Value& value : *array) {
            values.push_back(Convert<T>::From(value));
        }
        return values;
    }
};

/// Script objects of a native type.
template <std::derived_from<ScriptObject> T>
struct Convert<boost::intrusive_ptr<T>> {
    static Value To(const boost::intrusive_ptr<T>& inObject, int) { return ScriptObjectPtr(inObject); }
    static boost::intrusive_ptr<T> From(const Value& inValue)
    {
        const ScriptObjectPtr* const object = inValue.As<ScriptObjectPtr>();
        T* const typed = object ? dynamic_cast<T*>(object->get()) : nullptr;
        if (!typed) {
            const ClassDefinitionPtr expected = ClassRegistry::FindClass(typeid(T));
            ThrowWrongType(expected ? expected->name.c_str() : "another object", inValue);
        }
        return typed;
    }
};

template <>
struct Convert<kiocore::Guid> {
    static Value To(const kiocore::Guid& inGuid, int inContext)
    {
        return ScriptObjectPtr(CreateGuidObject(inGuid, inContext));
    }
    /// A "Guid" object, or its text.
    KIO_EXPORT static kiocore::Guid From(const Value& inValue);
};

/// Host objects pass through whatever transformation is registered, and back through the cast of the script
/// object. One that is gone comes back empty; so does null.
template <typename T>
struct Convert<kiocore::InterfaceRef<T>> {
    static Value To(const kiocore::InterfaceRef<T>& inReference, int inContext)
    {
        return factory::Transform(typeid(T), &inReference, inContext);
    }
    static kiocore::InterfaceRef<T> From(const Value& inValue)
    {
        kiocore::InterfaceRef<T> reference;
        if (inValue.As<Null>()) {
            return reference;
        }
        const ScriptObjectPtr* const object = inValue.As<ScriptObjectPtr>();
        const auto* const cast =
            object ? dynamic_cast<const ICast<kiocore::InterfaceRef<T>>*>(object->get()) : nullptr;
        if (!cast) {
            ThrowWrongType("an object of another class", inValue);
        }
        cast->CastTo(reference);
        return reference;
    }
};

} // namespace kioscripting
