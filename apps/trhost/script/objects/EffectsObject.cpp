#include "EffectsObject.h"

#include "../../commands/effects/Pictures.h"
#include "../../support/EffectCalls.h"
#include "../../support/Failure.h"
#include "../../support/Interrupt.h"

#include <TR/EffectEnablement.h>
#include <kiocore/config/Errors.h>
#include <kioscripting/ClassBuilder.h>

#include <array>
#include <charconv>

namespace trhost::script {
namespace {

using kiocore::utility::ToUTF16;
using kioscripting::kParameter_Optional;
using kioscripting::kParameter_Required;
using kioscripting::Value;

/// How many pictures an effect may swallow before it gives its first.
constexpr int kMostSwallowed = 64;

kioscripting::ClassDefinition DefineVideoEffect()
{
    return kioscripting::ClassBuilder<VideoEffectObject>("Halcyon.TrHost", "VideoEffect",
                                                         "A filter at work on pictures of one size.")
        .Property("matchName", "string", "Of the filter", &VideoEffectObject::GetMatchName)
        .Method("render", "Returns the filtered picture; null when the filter wants more pictures first",
                &VideoEffectObject::Render,
                {{"frame", "Frame", kParameter_Required, "of the size that the effect was opened for"},
                 {"seconds", "number", kParameter_Optional, "rises from call to call"}},
                {"frame", "Frame"})
        .Finish();
}

kioscripting::ClassDefinition DefineEffects()
{
    const kioscripting::ParameterDefinition effect{"effect", "string", kParameter_Required,
                                                   "a match name, or a FilterModule"};
    const kioscripting::ParameterDefinition frame{"frame", "Frame"};
    const kioscripting::ParameterDefinition parameters{"parameters", "object", kParameter_Optional,
                                                       "names and values, as trhost effects info lists them"};
    return kioscripting::ClassBuilder<EffectsObject>(
               "Halcyon.TrHost", "Effects", "The filters of this machine: the global object effects.")
        .Property("modules", "FilterModule[]", "The filters that are loaded now", &EffectsObject::GetModules,
                  kioscripting::kProperty_Object)
        .Method("list",
                "Returns what is there, loaded or not: objects with matchName, displayName, kind, technology "
                "and isEnabled",
                &EffectsObject::List, {}, {"effects", "object[]"})
        .Method("load", "Loads a filter; it stays loaded until unload", &EffectsObject::Load,
                {{"matchName", "string"}}, {"module", "FilterModule"})
        .Method("unload", "Lets a filter go; its FilterModule objects have nothing to show any more",
                &EffectsObject::Unload, {{"matchName", "string"}}, {"wasLoaded", "boolean"})
        .Method("open", "Sets a filter to work on pictures like the given one", &EffectsObject::Open,
                {effect, frame, parameters}, {"videoEffect", "VideoEffect"})
        .Method("run", "Returns a picture as a filter makes it", &EffectsObject::Run,
                {effect, frame, parameters}, {"frame", "Frame"})
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator sVideoEffectDefinition(&DefineVideoEffect);
const kioscripting::factory::ScriptObjectDefinitionInitiator sEffectsDefinition(&DefineEffects);

std::string NumberText(double inNumber)
{
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), inNumber).ptr};
}

[[noreturn]] void ThrowBadArgument(const kiocore::UTF16String& inText)
{
    throw kiocore::kio_exception(inText, kiocore::kError_BadArgument);
}

/// "NAME=VALUE", as the command line has it.
std::vector<std::string> ParametersOf(const Value& inParameters)
{
    std::vector<std::string> parameters;
    if (inParameters.IsNullOrUndefined()) {
        return parameters;
    }
    const Value::Members* const members = inParameters.As<Value::Members>();
    if (!members) {
        kioscripting::ThrowWrongType("an object of parameters", inParameters);
    }
    for (const auto& [name, value] : *members) {
        if (const std::string* const text = value.As<std::string>()) {
            parameters.push_back(name + "=" + *text);
        } else if (const double* const number = value.As<double>()) {
            parameters.push_back(name + "=" + NumberText(*number));
        } else if (const bool* const flag = value.As<bool>()) {
            parameters.push_back(name + (*flag ? "=true" : "=false"));
        } else {
            ThrowBadArgument(Text("$$$/Halcyon/TrHost/ScriptBadParameter=parameter @0: found a value of type "
                                  "@1; expected a string, a number or a boolean",
                                  {ToUTF16(name), ToUTF16(TypeNameOf(value))}));
        }
    }
    return parameters;
}

std::string MatchNameOf(const Value& inEffect)
{
    if (const std::string* const name = inEffect.As<std::string>()) {
        return *name;
    }
    return kioscripting::Convert<TR::IFilterModuleRef>::From(inEffect)->GetMatchName().AsString();
}

} // namespace

const char* VideoEffectObject::GetClassname() const
{
    return "VideoEffect";
}

const char* EffectsObject::GetClassname() const
{
    return "Effects";
}

void VideoEffectObject::Initialize(ScriptHostPtr inHost, std::string inMatchName,
                                   effects::VideoEffectForm inForm,
                                   std::unique_ptr<effects::IVideoEffect> inEffect)
{
    mHost = std::move(inHost);
    mMatchName = std::move(inMatchName);
    mForm = inForm;
    mEffect = std::move(inEffect);
}

FrameObjectPtr VideoEffectObject::Render(const MF::IVideoFrameRef& inFrame, double inSeconds)
{
    ThrowIfInterrupted();
    std::vector<MF::IVideoFrameRef> inputs;
    if (mEffect->InputCount() > 0) {
        inputs.push_back(ConvertPicture(inFrame, mEffect->Format(), mForm.width, mForm.height));
    }
    const MF::IVideoFrameRef rendered =
        mEffect->Render(inputs, kiomediatypes::TickTime::FromSeconds(inSeconds), 0);
    return rendered ? MakeFrameObject(mHost, rendered, GetContextHdl()) : FrameObjectPtr();
}

Value EffectsObject::List() const
{
    Value::Array list;
    for (const CatalogueEffect& effect : mHost->Effects().Effects()) {
        const effects::EffectDescription& description = effect.description;
        list.push_back(Value::Members{{"matchName", description.matchName},
                                      {"displayName", description.displayName},
                                      {"kind", NameOf(description.kind)},
                                      {"technology", description.technology},
                                      {"isEnabled", TR::IsEffectEnabled(description.matchName)}});
    }
    return list;
}

std::vector<TR::IFilterModuleRef> EffectsObject::GetModules() const
{
    std::vector<TR::IFilterModuleRef> modules;
    for (const auto& [name, module] : mHost->loadedFilters) {
        if (module) {
            modules.push_back(module);
        }
    }
    return modules;
}

TR::IFilterModuleRef EffectsObject::Load(const std::string& inMatchName) const
{
    return mHost->LoadFilter(inMatchName);
}

bool EffectsObject::Unload(const std::string& inMatchName) const
{
    return mHost->loadedFilters.erase(inMatchName) > 0;
}

boost::intrusive_ptr<VideoEffectObject>
EffectsObject::Open(const Value& inEffect, const MF::IVideoFrameRef& inFrame, const Value& inParameters) const
{
    const effects::EffectDescription& effect =
        mHost->Effects().FindRunnable(MatchNameOf(inEffect)).description;
    effects::VideoEffectForm form;
    form.width = inFrame->GetWidth();
    form.height = inFrame->GetHeight();
    form.format = BestFormatFor(inFrame, effect.formats);
    std::unique_ptr<effects::IVideoEffect> opened = OpenVideoEffect(effect, form, ParametersOf(inParameters));
    auto object = kioscripting::CreateScriptObject<VideoEffectObject>(GetContextHdl());
    if (object) {
        object->Initialize(mHost, effect.matchName, form, std::move(opened));
    }
    return object;
}

FrameObjectPtr EffectsObject::Run(const Value& inEffect, const MF::IVideoFrameRef& inFrame,
                                  const Value& inParameters) const
{
    const boost::intrusive_ptr<VideoEffectObject> effect = Open(inEffect, inFrame, inParameters);
    for (int given = 0; given < kMostSwallowed; ++given) {
        if (FrameObjectPtr frame = effect->Render(inFrame, given / 25.0)) {
            return frame;
        }
    }
    ThrowBadArgument(Text("$$$/Halcyon/TrHost/EffectGaveNothing=@0 was given @1 pictures and gave none",
                          {ToUTF16(effect->GetMatchName()), ToUTF16(std::to_string(kMostSwallowed))}));
}

} // namespace trhost::script
