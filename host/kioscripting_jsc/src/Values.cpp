#include "Values.h"

#include "Runtime.h"
#include "Text.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace kioscripting_jsc {
namespace {

using kioscripting::Bytes;
using kioscripting::Foreign;
using kioscripting::Value;

constexpr std::size_t kMostDepth = 200;

[[noreturn]] void ThrowBadConversion(const std::string& inText)
{
    throw kiocore::kio_exception(inText, kiocore::kError_BadConversion);
}

/// @param inArray  a Uint8Array.
Bytes BytesOf(JSContextRef inContext, JSObjectRef inArray)
{
    // What the engine points to is where the buffer starts, not the view on it.
    const auto* const buffer =
        static_cast<const std::byte*>(JSObjectGetTypedArrayBytesPtr(inContext, inArray, nullptr));
    Bytes bytes;
    if (buffer) {
        const std::byte* const start = buffer + JSObjectGetTypedArrayByteOffset(inContext, inArray, nullptr);
        bytes.bytes.assign(start, start + JSObjectGetTypedArrayByteLength(inContext, inArray, nullptr));
    }
    return bytes;
}

/// One conversion; knows the objects that it is in.
class Reading {
public:
    explicit Reading(Runtime& inRuntime) : mRuntime(inRuntime), mContext(inRuntime.context) {}

    Value Read(JSValueRef inValue)
    {
        switch (JSValueGetType(mContext, inValue)) {
        case kJSTypeUndefined:
            return kioscripting::Undefined();
        case kJSTypeNull:
            return kioscripting::Null();
        case kJSTypeBoolean:
            return JSValueToBoolean(mContext, inValue);
        case kJSTypeNumber:
            return JSValueToNumber(mContext, inValue, nullptr);
        case kJSTypeString:
            return TextOf(mContext, inValue);
        case kJSTypeSymbol:
            return Foreign{"symbol"};
        case kJSTypeBigInt:
            return Foreign{"bigint"};
        case kJSTypeObject:
            break;
        }
        return ReadObject(const_cast<JSObjectRef>(inValue));
    }

private:
    Value ReadObject(JSObjectRef inObject)
    {
        mRuntime.limits.Check();
        const JSValueRef carried = mRuntime.Call(mRuntime.functions.handleOf, {inObject});
        if (const auto* const handle = PrivateOf<Handle>(mContext, carried, PrivateKind::kHandle)) {
            return handle->native;
        }
        if (JSObjectIsFunction(mContext, inObject)) {
            return Foreign{"function"};
        }
        const std::string kind = TextOf(mContext, mRuntime.Call(mRuntime.functions.kindOf, {inObject}));
        if (kind == "bytes") {
            return BytesOf(mContext,
                           const_cast<JSObjectRef>(mRuntime.Call(mRuntime.functions.bytesOf, {inObject})));
        }
        if (kind == "date") {
            return mRuntime.Text(mRuntime.Call(mRuntime.functions.dateText, {inObject}));
        }
        if (kind == "promise") {
            return Foreign{"promise"};
        }
        if (std::find(mWithin.begin(), mWithin.end(), inObject) != mWithin.end()) {
            ThrowBadConversion("an object that contains itself cannot be given to a native");
        }
        if (mWithin.size() == kMostDepth) {
            ThrowBadConversion("objects nested deeper than " + std::to_string(kMostDepth) +
                               " cannot be given to a native");
        }
        mWithin.push_back(inObject);
        Value value = kind == "array" ? Value(ReadArray(inObject)) : Value(ReadMembers(inObject));
        mWithin.pop_back();
        return value;
    }

    Value::Array ReadArray(JSObjectRef inArray)
    {
        Value::Array values;
        const std::size_t count = mRuntime.Length(inArray);
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(Read(mRuntime.GetAt(inArray, static_cast<unsigned>(i))));
        }
        return values;
    }

    Value::Members ReadMembers(JSObjectRef inObject)
    {
        const auto keys = const_cast<JSObjectRef>(mRuntime.Call(mRuntime.functions.keys, {inObject}));
        const std::size_t count = mRuntime.Length(keys);
        Value::Members members;
        for (std::size_t i = 0; i < count; ++i) {
            const JSValueRef key = mRuntime.GetAt(keys, static_cast<unsigned>(i));
            JSValueRef thrown = nullptr;
            const JSValueRef value = JSObjectGetPropertyForKey(mContext, inObject, key, &thrown);
            if (!value || thrown) {
                throw ScriptThrown{Protected(mContext, thrown)};
            }
            members.emplace_back(TextOf(mContext, key), Read(value));
        }
        return members;
    }

    Runtime& mRuntime;
    const JSContextRef mContext;
    std::vector<JSObjectRef> mWithin; // each is on the stack of a call too
};

struct Writer {
    Runtime& runtime;
    JSContextRef context;

    JSValueRef operator()(kioscripting::Undefined) const { return JSValueMakeUndefined(context); }
    JSValueRef operator()(kioscripting::Null) const { return JSValueMakeNull(context); }
    JSValueRef operator()(bool inValue) const { return JSValueMakeBoolean(context, inValue); }
    JSValueRef operator()(double inValue) const { return JSValueMakeNumber(context, inValue); }
    JSValueRef operator()(const std::string& inText) const { return MakeText(context, inText); }
    JSValueRef operator()(const kioscripting::ScriptObjectPtr& inObject) const
    {
        return runtime.classes.Wrap(inObject);
    }
    JSValueRef operator()(const Bytes& inBytes) const
    {
        JSValueRef thrown = nullptr;
        const JSObjectRef array =
            JSObjectMakeTypedArray(context, kJSTypedArrayTypeUint8Array, inBytes.bytes.size(), &thrown);
        if (!array || thrown) {
            throw ScriptThrown{Protected(context, thrown)};
        }
        if (!inBytes.bytes.empty()) {
            std::memcpy(JSObjectGetTypedArrayBytesPtr(context, array, nullptr), inBytes.bytes.data(),
                        inBytes.bytes.size());
        }
        return array;
    }
    JSValueRef operator()(const Value::Array& inValues) const
    {
        const JSObjectRef array = JSObjectMakeArray(context, 0, nullptr, nullptr);
        for (std::size_t i = 0; i < inValues.size(); ++i) {
            JSObjectSetPropertyAtIndex(context, array, static_cast<unsigned>(i),
                                       ToScript(runtime, inValues[i]), nullptr);
        }
        return array;
    }
    JSValueRef operator()(const Value::Members& inMembers) const
    {
        const JSObjectRef object = JSObjectMake(context, nullptr, nullptr);
        for (const auto& [name, value] : inMembers) {
            const JSValueRef member = ToScript(runtime, value);
            JSObjectSetProperty(context, object, ScText(name).Get(), member, kJSPropertyAttributeNone,
                                nullptr);
        }
        return object;
    }
    JSValueRef operator()(const Foreign& inForeign) const
    {
        ThrowBadConversion("a " + inForeign.type + " cannot go back to a script through a native");
    }
};

} // namespace

Value ToNative(Runtime& inRuntime, JSValueRef inValue)
{
    return Reading(inRuntime).Read(inValue);
}

JSValueRef ToScript(Runtime& inRuntime, const Value& inValue)
{
    return std::visit(Writer{inRuntime, inRuntime.context}, inValue.AsVariant());
}

} // namespace kioscripting_jsc
