#pragma once

#include <kioscripting/Context.h>
#include <kioscripting/Conversion.h>

#include <tuple>
#include <typeinfo>

namespace kioscripting {

namespace detail {

/// Runs a conversion and adds which argument it was about to what it throws.
[[noreturn]] KIO_EXPORT void RethrowForArgument(const ParameterDefinition& inParameter);

template <typename T>
T Argument(const std::vector<ParameterDefinition>& inParameters, const Values& inArguments,
           std::size_t inIndex)
{
    const ParameterDefinition& parameter = inParameters[inIndex];
    if ((parameter.flags & kParameter_Optional) != 0 && inArguments[inIndex].IsUndefined()) {
        return T();
    }
    try {
        return Convert<T>::From(inArguments[inIndex]);
    } catch (...) {
        RethrowForArgument(parameter);
    }
}

/// The object as what it is. Most are exactly that, which is known without a search among base classes.
/// @throws std::bad_cast for one of another class.
template <typename T, typename Object>
auto& Self(Object& inObject)
{
    using Result = std::conditional_t<std::is_const_v<Object>, const T, T>;
    if constexpr (requires { static_cast<Result&>(inObject); }) {
        if (typeid(inObject) == typeid(T)) {
            return static_cast<Result&>(inObject);
        }
    }
    return dynamic_cast<Result&>(inObject);
}

/// A member function's result and parameters as plain types.
template <typename Function>
struct Signature;
template <typename R, typename C, typename... A>
struct Signature<R (C::*)(A...)> {
    using Result = R;
    using Arguments = std::tuple<std::decay_t<A>...>;
};
template <typename R, typename C, typename... A>
struct Signature<R (C::*)(A...) const> : Signature<R (C::*)(A...)> {};

template <typename Arguments, std::size_t... kIndexes>
Arguments ConvertArguments(const std::vector<ParameterDefinition>& inParameters, const Values& inArguments,
                           std::index_sequence<kIndexes...>)
{
    // Braces, so that the first wrong argument is the one that is told.
    return Arguments{
        Argument<std::tuple_element_t<kIndexes, Arguments>>(inParameters, inArguments, kIndexes)...};
}
template <typename Arguments>
Arguments ConvertArguments(const std::vector<ParameterDefinition>& inParameters, const Values& inArguments)
{
    return ConvertArguments<Arguments>(inParameters, inArguments,
                                       std::make_index_sequence<std::tuple_size_v<Arguments>>());
}

} // namespace detail

/// Describes a native class to the bridge:
///
///     ClassBuilder<Level>("Acme.Sound", "Level", "How loud something is.")
///         .Constructor("Construct a level")
///         .Property("decibels", "number", "Below full scale", &Level::GetDecibels)
///         .Method("above", "Says whether it is the louder one", &Level::IsAbove, {{"other", "Level"}},
///                 {"isAbove", "boolean"})
///         .Finish();
///
/// T derives from ScriptObject and has a default constructor. Members' parameters are taken from script
/// values by Convert, in the order of their descriptions; there must be as many as the function has.
template <typename T>
class ClassBuilder {
public:
    ClassBuilder(std::string inNamespace, std::string inName, std::string inDescription)
    {
        mDefinition.nameSpace = std::move(inNamespace);
        mDefinition.name = std::move(inName);
        mDefinition.description = std::move(inDescription);
        mDefinition.nativeType = typeid(T);
        mDefinition.create = [] { return ScriptObjectPtr(new T()); };
    }

    /// Without arguments: the object is as its default constructor made it.
    ClassBuilder& Constructor(std::string inDescription)
    {
        mDefinition.constructor = ConstructorDefinition{std::move(inDescription), {}, nullptr};
        return *this;
    }
    /// Calls inFunction with the arguments on the new object.
    template <typename Function>
    ClassBuilder& Constructor(std::string inDescription, Function inFunction,
                              std::vector<ParameterDefinition> inParameters)
    {
        using Arguments = typename detail::Signature<Function>::Arguments;
        static_assert(std::is_member_function_pointer_v<Function>);
        const auto parameters = Checked<Arguments>(inParameters);
        mDefinition.constructor = ConstructorDefinition{
            std::move(inDescription), std::move(inParameters),
            [inFunction, parameters, create = mDefinition.create](int inContext, const Values& inArguments) {
                auto arguments = detail::ConvertArguments<Arguments>(parameters, inArguments);
                const boost::intrusive_ptr<T> object = CreateScriptObject<T>(inContext);
                if (object) {
                    std::apply([&](auto&... inValues) { (object.get()->*inFunction)(inValues...); },
                               arguments);
                }
                return ScriptObjectPtr(object);
            }};
        return *this;
    }

    template <typename Function>
    ClassBuilder& Method(std::string inName, std::string inDescription, Function inFunction,
                         std::vector<ParameterDefinition> inParameters = {}, ResultDefinition inResult = {})
    {
        using Signature = detail::Signature<Function>;
        const auto parameters = Checked<typename Signature::Arguments>(inParameters);
        MethodDefinition method{std::move(inName), std::move(inDescription), std::move(inParameters),
                                std::move(inResult), nullptr};
        method.invoke = [inFunction, parameters](ScriptObject& inObject, const Values& inArguments) -> Value {
            auto arguments = detail::ConvertArguments<typename Signature::Arguments>(parameters, inArguments);
            auto& object = detail::Self<T>(inObject);
            return std::apply(
                [&](auto&... inValues) -> Value {
                    using Result = typename Signature::Result;
                    if constexpr (std::is_void_v<Result>) {
                        (object.*inFunction)(inValues...);
                        return Undefined();
                    } else {
                        return Convert<std::decay_t<Result>>::To((object.*inFunction)(inValues...),
                                                                 inObject.GetContextHdl());
                    }
                },
                arguments);
        };
        mDefinition.methods.push_back(std::move(method));
        return *this;
    }

    template <typename Getter>
    ClassBuilder& Property(std::string inName, std::string inType, std::string inDescription, Getter inGetter,
                           PropertyFlags inFlags = kProperty_Plain)
    {
        using Result = std::decay_t<typename detail::Signature<Getter>::Result>;
        mDefinition.properties.push_back({std::move(inName), std::move(inType), std::move(inDescription),
                                          inFlags, [inGetter](const ScriptObject& inObject) -> Value {
                                              return Convert<Result>::To(
                                                  (detail::Self<T>(inObject).*inGetter)(),
                                                  inObject.GetContextHdl());
                                          }});
        return *this;
    }

    ClassDefinition Finish() { return std::move(mDefinition); }

private:
    template <typename Arguments>
    std::vector<ParameterDefinition> Checked(const std::vector<ParameterDefinition>& inParameters) const
    {
        CheckCount(mDefinition, inParameters.size(), std::tuple_size_v<Arguments>);
        return inParameters;
    }

    ClassDefinition mDefinition;
};

/// @throws std::logic_error when a member is described with another number of parameters than it takes.
KIO_EXPORT void CheckCount(const ClassDefinition& inClass, std::size_t inDescribed, std::size_t inTaken);

} // namespace kioscripting
