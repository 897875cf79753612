#include "Classes.h"

#include "Bridge.h"
#include "Runtime.h"
#include "Text.h"
#include "Values.h"

#include <kiocore/config/Errors.h>
#include <kioscripting/Context.h>

#include <algorithm>

namespace kioscripting_jsc {
namespace {

using kioscripting::ClassDefinition;
using kioscripting::ParameterDefinition;
using kioscripting::Values;

const char* NameOf(const Member& inMember)
{
    return inMember.property ? inMember.property->name.c_str() : inMember.method->name.c_str();
}

/// The native that a member is used on.
const Handle& Receiver(JSContextRef inContext, JSValueRef inHandle, const Member& inMember)
{
    const auto* const handle = PrivateOf<Handle>(inContext, inHandle, PrivateKind::kHandle);
    if (!handle || handle->binding != inMember.binding) {
        const std::string name = inMember.binding->definition->name;
        throw WrongUse(name + "." + NameOf(inMember) + " is for objects of class " + name + " only, found " +
                       (handle ? "one of class " + handle->binding->definition->name : "another value"));
    }
    return *handle;
}

constexpr std::size_t kLongestKept = 256;

/// Texts that a property has over and over again are made into a script's text once.
JSValueRef TextOfProperty(JSContextRef inContext, Member& ioMember, const std::string& inText)
{
    if (inText.size() > kLongestKept) {
        return MakeText(inContext, inText);
    }
    if (ioMember.lastText != inText) {
        if (ioMember.lastValue) {
            JSValueUnprotect(inContext, ioMember.lastValue);
            ioMember.lastValue = nullptr;
        }
        ioMember.lastText = inText;
        return MakeText(inContext, inText);
    }
    if (!ioMember.lastValue) {
        const JSValueRef value = MakeText(inContext, inText);
        JSValueProtect(inContext, value);
        ioMember.lastValue = value;
    }
    return ioMember.lastValue;
}

JSValueRef OnRead(JSContextRef inContext, JSObjectRef, JSObjectRef, std::size_t,
                  const JSValueRef inArguments[], JSValueRef* outException)
{
    auto& member = *PrivateOf<Member>(inContext, inArguments[1], PrivateKind::kMember);
    Runtime& runtime = *member.binding->runtime;
    return Guarded(runtime, outException, [&]() -> JSValueRef {
        const Handle& handle = Receiver(inContext, inArguments[0], member);
        const kioscripting::Value value = member.property->get(*handle.native);
        if (const double* const number = value.As<double>()) {
            return JSValueMakeNumber(inContext, *number);
        }
        if (const std::string* const text = value.As<std::string>()) {
            return TextOfProperty(inContext, member, *text);
        }
        return ToScript(runtime, value);
    });
}

Values Converted(Runtime& inRuntime, std::size_t inCount, const JSValueRef inArguments[])
{
    Values values;
    values.reserve(inCount);
    for (std::size_t i = 0; i < inCount; ++i) {
        values.push_back(ToNative(inRuntime, inArguments[i]));
    }
    return values;
}

JSValueRef OnCall(JSContextRef inContext, JSObjectRef, JSObjectRef, std::size_t inCount,
                  const JSValueRef inArguments[], JSValueRef* outException)
{
    const auto& member = *PrivateOf<Member>(inContext, inArguments[1], PrivateKind::kMember);
    Runtime& runtime = *member.binding->runtime;
    return Guarded(runtime, outException, [&] {
        const Handle& handle = Receiver(inContext, inArguments[0], member);
        runtime.limits.Check();
        // Held: what the native calls may let its own object go.
        const kioscripting::ScriptObjectPtr native = handle.native;
        return ToScript(runtime, InvokeMethod(*member.binding->definition, *member.method, *native,
                                              Converted(runtime, inCount - 2, inArguments + 2)));
    });
}

JSValueRef OnConstruct(JSContextRef inContext, JSObjectRef, JSObjectRef, std::size_t inCount,
                       const JSValueRef inArguments[], JSValueRef* outException)
{
    const auto& binding = *PrivateOf<Binding>(inContext, inArguments[1], PrivateKind::kBinding);
    Runtime& runtime = *binding.runtime;
    return Guarded(runtime, outException, [&]() -> JSValueRef {
        runtime.limits.Check();
        const Values arguments = Converted(runtime, inCount - 2, inArguments + 2);
        const JSObjectRef handle = runtime.handles.Make(
            binding, ConstructObject(*binding.definition, runtime.contextHdl, arguments));
        runtime.handles.SetObject(handle, const_cast<JSObjectRef>(inArguments[0]));
        return handle;
    });
}

JSValueRef OnRefuse(JSContextRef inContext, JSObjectRef, JSObjectRef, std::size_t,
                    const JSValueRef inArguments[], JSValueRef* outException)
{
    const auto& binding = *PrivateOf<Binding>(inContext, inArguments[0], PrivateKind::kBinding);
    return Guarded(*binding.runtime, outException, [&]() -> JSValueRef {
        throw WrongUse(binding.definition->QualifiedName() + " has no constructor for scripts");
    });
}

JSClassRef DataClass()
{
    static const JSClassRef sClass = [] {
        JSClassDefinition definition = kJSClassDefinitionEmpty;
        definition.className = "Definition";
        definition.attributes = kJSClassAttributeNoAutomaticPrototype;
        return JSClassCreate(&definition);
    }();
    return sClass;
}

std::size_t CountRequired(const std::vector<ParameterDefinition>& inParameters)
{
    return static_cast<std::size_t>(
        std::count_if(inParameters.begin(), inParameters.end(), [](const ParameterDefinition& inParameter) {
            return (inParameter.flags & kioscripting::kParameter_Optional) == 0;
        }));
}

/// Grows one by one: the engine does not find values that lie in a vector.
class ScriptArray {
public:
    explicit ScriptArray(JSContextRef inContext)
        : mContext(inContext), mArray(JSObjectMakeArray(inContext, 0, nullptr, nullptr))
    {}
    void Add(JSValueRef inValue) { JSObjectSetPropertyAtIndex(mContext, mArray, mCount++, inValue, nullptr); }
    JSObjectRef Get() const { return mArray; }

private:
    JSContextRef mContext;
    JSObjectRef mArray;
    unsigned mCount = 0;
};

} // namespace

JSObjectRef ClassTable::Natives()
{
    const JSContextRef context = mRuntime.context;
    const JSObjectRef natives = JSObjectMake(context, nullptr, nullptr);
    const auto add = [&](const char* inName, JSObjectCallAsFunctionCallback inFunction) {
        const ScText name(std::string("kio:") + inName);
        SetMember(mRuntime, natives, inName,
                  JSObjectMakeFunctionWithCallback(context, name.Get(), inFunction));
    };
    add("construct", &OnConstruct);
    add("read", &OnRead);
    add("call", &OnCall);
    add("refuse", &OnRefuse);
    return natives;
}

void ClassTable::Update()
{
    const std::uint64_t version = kioscripting::ClassRegistry::Version();
    if (version == mVersion) {
        return;
    }
    for (const kioscripting::ClassDefinitionPtr& definition : kioscripting::ClassRegistry::AllClasses()) {
        if (!mBindings.contains(definition.get())) {
            Publish(Bind(definition));
        }
    }
    mVersion = version;
}

const Binding& ClassTable::Bind(const kioscripting::ClassDefinitionPtr& inDefinition)
{
    std::unique_ptr<Binding>& slot = mBindings[inDefinition.get()];
    if (!slot) {
        slot = std::make_unique<Binding>();
        slot->runtime = &mRuntime;
        slot->definition = inDefinition;
        Define(*slot);
    }
    return *slot;
}

void ClassTable::Define(Binding& ioBinding)
{
    const JSContextRef context = mRuntime.context;
    const ClassDefinition& definition = *ioBinding.definition;
    const auto newMember = [&]() -> Member& {
        Member& member = ioBinding.members.emplace_back();
        member.binding = &ioBinding;
        return member;
    };
    ScriptArray properties(context);
    for (const kioscripting::PropertyDefinition& property : definition.properties) {
        Member& member = newMember();
        member.property = &property;
        properties.Add(MakeText(context, property.name));
        properties.Add(JSObjectMake(context, DataClass(), &member));
    }
    ScriptArray methods(context);
    for (const kioscripting::MethodDefinition& method : definition.methods) {
        Member& member = newMember();
        member.method = &method;
        methods.Add(MakeText(context, method.name));
        methods.Add(JSValueMakeNumber(context, double(CountRequired(method.parameters))));
        methods.Add(JSObjectMake(context, DataClass(), &member));
    }
    const std::size_t length = definition.constructor ? CountRequired(definition.constructor->parameters) : 0;
    const JSValueRef made = mRuntime.Call(
        mRuntime.functions.defineClass,
        {MakeText(context, definition.name), MakeText(context, definition.QualifiedName()),
         JSValueMakeNumber(context, double(length)), JSObjectMake(context, DataClass(), &ioBinding),
         JSValueMakeBoolean(context, definition.constructor.has_value()), properties.Get(), methods.Get()});
    ioBinding.constructor = const_cast<JSObjectRef>(made);
    JSValueProtect(context, made); // until the context goes
    ioBinding.prototype = const_cast<JSObjectRef>(mRuntime.Get(ioBinding.constructor, "prototype"));
}

void ClassTable::Publish(const Binding& inBinding)
{
    const JSContextRef context = mRuntime.context;
    ScriptArray path(context);
    const std::string name = inBinding.definition->QualifiedName();
    for (std::size_t start = 0; start <= name.size();) {
        const std::size_t end = std::min(name.find('.', start), name.size());
        if (end > start) {
            path.Add(MakeText(context, std::string_view(name).substr(start, end - start)));
        }
        start = end + 1;
    }
    mRuntime.Call(mRuntime.functions.publish, {path.Get(), inBinding.constructor});
}

JSValueRef ClassTable::Wrap(const kioscripting::ScriptObjectPtr& inNative)
{
    if (const JSObjectRef known = mRuntime.handles.Find(*inNative)) {
        return known;
    }
    const kioscripting::ClassDefinitionPtr definition = kioscripting::ClassRegistry::ClassOf(*inNative);
    if (!definition) {
        throw kiocore::kio_exception(std::string("The class ") + inNative->GetClassname() +
                                         " is not registered, so scripts cannot have its objects",
                                     kiocore::kError_BadConversion);
    }
    const Binding& binding = Bind(definition);
    const JSObjectRef handle = mRuntime.handles.Make(binding, inNative);
    const JSValueRef object = mRuntime.Call(mRuntime.functions.wrap, {binding.prototype, handle});
    mRuntime.handles.SetObject(handle, const_cast<JSObjectRef>(object));
    return object;
}

} // namespace kioscripting_jsc
