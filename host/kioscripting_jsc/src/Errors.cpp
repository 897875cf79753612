#include "Errors.h"

#include "Runtime.h"
#include "Text.h"

#include <kiocore/config/Errors.h>

#include <boost/exception/diagnostic_information.hpp>

#include <new>

namespace kioscripting_jsc {
namespace {

JSValueRef MakeError(Runtime& inRuntime, const char* inKind, const std::string& inText,
                     std::optional<std::uint32_t> inCode)
{
    const JSContextRef context = inRuntime.context;
    return inRuntime.Call(inRuntime.functions.makeError,
                          {MakeText(context, inKind), MakeText(context, inText),
                           inCode ? JSValueMakeNumber(context, *inCode) : JSValueMakeUndefined(context)});
}

/// What the host wants to be told of a native's exception.
std::string Told(const Runtime& inRuntime, const std::exception& inError)
{
    return inRuntime.settings.tellError ? inRuntime.settings.tellError(inError) : inError.what();
}

JSValueRef Translated(Runtime& inRuntime)
{
    try {
        throw;
    } catch (const ScriptThrown& thrown) {
        return thrown.value.Get();
    } catch (const RunEnded&) {
        return MakeError(inRuntime, "Error", "The run was ended", std::nullopt);
    } catch (const WrongUse& error) {
        return MakeError(inRuntime, "TypeError", error.what(), std::nullopt);
    } catch (const kiocore::kio_exception& error) {
        return MakeError(inRuntime, "Error", Told(inRuntime, error), error.Code());
    } catch (const std::bad_alloc&) {
        return MakeError(inRuntime, "Error", "Out of memory", kiocore::kError_Generic);
    } catch (const std::exception& error) {
        return MakeError(inRuntime, "Error", Told(inRuntime, error), kiocore::kError_Generic);
    } catch (const boost::exception& error) {
        return MakeError(inRuntime, "Error", boost::diagnostic_information(error), kiocore::kError_Generic);
    } catch (...) {
        return MakeError(inRuntime, "Error", "Unknown exception", kiocore::kError_Generic);
    }
}

struct Facts {
    std::string text;
    std::uint32_t code = kioscripting::kError_Script;
    kioscripting::ScriptPlace place;
};

Facts FactsOf(Runtime& inRuntime, JSValueRef inThrown)
{
    const JSContextRef context = inRuntime.context;
    auto* const list = const_cast<JSObjectRef>(inRuntime.Call(inRuntime.functions.facts, {inThrown}));
    const auto at = [&](unsigned inIndex) { return inRuntime.GetAt(list, inIndex); };
    const auto text = [&](unsigned inIndex) {
        const JSValueRef value = at(inIndex);
        return JSValueIsString(context, value) ? TextOf(context, value) : std::string();
    };
    const auto number = [&](unsigned inIndex) {
        const JSValueRef value = at(inIndex);
        return JSValueIsNumber(context, value) ? JSValueToNumber(context, value, nullptr) : 0.0;
    };
    Facts facts;
    facts.text = text(0);
    if (JSValueIsNumber(context, at(1))) {
        facts.code = static_cast<std::uint32_t>(number(1));
    }
    facts.place = {text(2), static_cast<int>(number(3)), static_cast<int>(number(4)), text(5)};
    facts.place.column =
        inRuntime.modules.ColumnInFile(facts.place.file, facts.place.line, facts.place.column);
    if (!JSValueIsString(context, at(0))) {
        facts.text = "uncaught " + inRuntime.Text(inRuntime.Call(inRuntime.functions.inspect, {inThrown}));
    }
    return facts;
}

} // namespace

Protected::Protected(JSContextRef inContext, JSValueRef inValue) : mContext(inContext), mValue(inValue)
{
    if (mValue) {
        JSValueProtect(mContext, mValue);
    }
}

Protected::Protected(const Protected& inOther) : Protected(inOther.mContext, inOther.mValue) {}

Protected::~Protected()
{
    if (mValue) {
        JSValueUnprotect(mContext, mValue);
    }
}

JSValueRef ErrorOfCurrentException(Runtime& inRuntime) noexcept
{
    try {
        return Translated(inRuntime);
    } catch (const ScriptThrown& thrown) { // there is no room left for an error of ours
        if (const JSValueRef value = thrown.value.Get()) {
            return value;
        }
    } catch (...) { // nor for its text
    }
    return JSValueMakeUndefined(inRuntime.context);
}

void ThrowScriptException(Runtime& inRuntime, JSValueRef inThrown)
{
    inRuntime.limits.ThrowIfEnded();
    Facts facts;
    try {
        facts = FactsOf(inRuntime, inThrown);
    } catch (const ScriptThrown&) {
        inRuntime.limits.ThrowIfEnded();
        facts.text = "The script failed, and too little of the stack is left to say why";
    }
    throw kioscripting::script_exception(std::move(facts.text), facts.code, std::move(facts.place));
}

} // namespace kioscripting_jsc
