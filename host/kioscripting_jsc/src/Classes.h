#pragma once

#include "Handles.h"

#include <kioscripting/ClassDefinition.h>

#include <deque>
#include <map>
#include <memory>
#include <string>

namespace kioscripting_jsc {

/// A property or method of a class, as the engine's functions find it.
struct Member : Private {
    Member() : Private(PrivateKind::kMember) {}
    const Binding* binding = nullptr;
    const kioscripting::PropertyDefinition* property = nullptr;
    const kioscripting::MethodDefinition* method = nullptr;
    std::string lastText;           ///< that the property was read with
    JSValueRef lastValue = nullptr; ///< made of it when it came a second time; protected
};

/// A class in one engine.
struct Binding : Private {
    Binding() : Private(PrivateKind::kBinding) {}
    Runtime* runtime = nullptr;
    kioscripting::ClassDefinitionPtr definition;
    std::deque<Member> members;
    JSObjectRef constructor = nullptr; ///< reached from the global object or protected
    JSObjectRef prototype = nullptr;
};

/// The registered classes as an engine's scripts see them.
///
/// Threading: the engine's thread.
class ClassTable {
public:
    explicit ClassTable(Runtime& inRuntime) : mRuntime(inRuntime) {}

    /// The natives that Classes.js wants.
    JSObjectRef Natives();
    /// Publishes what was registered since the last time.
    void Update();
    /// The script's object for a native: always the same while it lives.
    /// @throws kio_exception (kError_BadConversion) when its class is not registered.
    JSValueRef Wrap(const kioscripting::ScriptObjectPtr& inNative);

private:
    const Binding& Bind(const kioscripting::ClassDefinitionPtr& inDefinition);
    void Define(Binding& ioBinding);
    void Publish(const Binding& inBinding);

    Runtime& mRuntime;
    std::uint64_t mVersion = 0; // of the registry
    std::map<const kioscripting::ClassDefinition*, std::unique_ptr<Binding>> mBindings;
};

} // namespace kioscripting_jsc
