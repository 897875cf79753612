#include "EffectHost.h"

#include "EffectCalls.h"
#include "Failure.h"
#include "Interrupt.h"
#include "KeptText.h"
#include "ModuleLoader.h"

#include <TR/EffectEnablement.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <set>

namespace trhost {

namespace {

using effects::EffectDescription;
using effects::EffectKind;
using kiocore::utility::ToUTF16;

effects::PluginPlaces Places(const EffectSearch& inSearch)
{
    effects::PluginPlaces places;
    places.frei0rModule = ModulePath(effects::kFrei0rModuleFileName);
    places.avfilterModule = ModulePath(effects::kAvfilterModuleFileName);
    places.ladspaModule = ModulePath(effects::kLadspaModuleFileName);
    places.moreFrei0rFolders = inSearch.folders;
    places.moreLadspaFolders = inSearch.folders;
    return places;
}

std::string Lower(std::string inText)
{
    for (char& letter : inText) {
        letter = letter >= 'A' && letter <= 'Z' ? char(letter - 'A' + 'a') : letter;
    }
    return inText;
}

bool IsNamedBy(const std::string& inMatchName, const std::string& inPattern)
{
    if (!inPattern.empty() && inPattern.back() == '*') {
        return inMatchName.compare(0, inPattern.size() - 1, inPattern, 0, inPattern.size() - 1) == 0;
    }
    return inMatchName == inPattern;
}

template <typename Effect>
void SetParameters(Effect& ioEffect, const std::vector<std::string>& inParameters)
{
    for (const std::string& parameter : inParameters) {
        const std::size_t equals = parameter.find('=');
        if (equals == 0 || equals == std::string::npos) {
            throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/BadParam=--param @0: expected NAME=VALUE",
                                            {ToUTF16(parameter)}));
        }
        try {
            ioEffect.SetParameter(parameter.substr(0, equals), parameter.substr(equals + 1));
        } catch (const kiocore::kio_exception& error) {
            if (error.Code() != effects::kEffectError_BadParameter) {
                throw;
            }
            throw Failure(kExit_Usage, Told(error));
        }
    }
}

[[noreturn]] void ThrowWrongKind(const EffectDescription& inEffect, std::string_view inWanted)
{
    throw Failure(kExit_Negative,
                  Text("$$$/Halcyon/TrHost/WrongEffectKind=@0 is a @1; expected a @2",
                       {ToUTF16(inEffect.matchName), Text(TextOf(inEffect.kind)), Text(inWanted)}));
}

} // namespace

effects::WorkerSettings EffectWorkers()
{
    effects::WorkerSettings settings;
    settings.program = ModulePath("trhost-effect-worker");
    return settings;
}

effects::Interruption EffectInterruption()
{
    return {[] { return IsInterrupted(); }, GetInterruptFile()};
}

EffectHost::EffectHost(Context& ioContext, const EffectSearch& inSearch)
    : mIsSafeMode(ioContext.options.safeMode)
{
    effects::CatalogueSettings settings;
    settings.worker = EffectWorkers();
    settings.files = effects::FindPluginFiles(Places(inSearch));
    settings.cacheFolder = kiocore::filesupport::ToNative(ioContext.folders.cacheRoot);
    settings.isRescan = inSearch.rescan;
    settings.keepsNothing = mIsSafeMode;
    ProgressBar bar(ioContext.output, Text("$$$/Halcyon/TrHost/LookingAtEffects=Looking at plug-ins"));
    const auto progress = [&](int inDone, int inTotal, const std::string& inName) {
        bar.Show(inTotal > 0 ? double(inDone) / inTotal : 0, ToUTF16(inName));
    };
    const auto catalogue = effects::EffectCatalogue::Load(settings, progress, EffectInterruption());
    bar.Hide();
    ThrowIfInterrupted();
    mEffects = catalogue.Effects();
    std::stable_sort(mEffects.begin(), mEffects.end(), [](const auto& a, const auto& b) {
        return a.description.matchName < b.description.matchName;
    });
}

const CatalogueEffect& EffectHost::Find(const std::string& inMatchName) const
{
    return *FindAll({inMatchName}).front();
}

std::vector<const CatalogueEffect*> EffectHost::FindAll(const std::vector<std::string>& inNames) const
{
    std::vector<const CatalogueEffect*> found;
    std::set<const CatalogueEffect*> taken;
    const auto take = [&](const CatalogueEffect& inEffect) {
        if (taken.insert(&inEffect).second) {
            found.push_back(&inEffect);
        }
    };
    for (const std::string& name : inNames) {
        bool isKnown = false;
        for (const CatalogueEffect& effect : mEffects) {
            if (IsNamedBy(effect.description.matchName, name)) {
                isKnown = true;
                take(effect);
            }
        }
        if (!isKnown) {
            const std::string similar = SimilarNames(name);
            throw Failure(
                kExit_Negative,
                similar.empty()
                    ? Text("$$$/Halcyon/TrHost/NoSuchEffect=there is no effect @0; trhost effects list "
                           "prints all",
                           {ToUTF16(name)})
                    : Text("$$$/Halcyon/TrHost/NoSuchEffectBut=there is no effect @0, but @1; trhost "
                           "effects list prints all#{@1: similar names}",
                           {ToUTF16(name), ToUTF16(similar)}));
        }
    }
    if (inNames.empty()) {
        std::for_each(mEffects.begin(), mEffects.end(), take);
    }
    return found;
}

std::string EffectHost::SimilarNames(const std::string& inName) const
{
    constexpr int kMostNames = 5;
    const std::string wanted = Lower(inName.substr(inName.find('.') + 1)); // all of it when there is no dot
    std::string names;
    int count = 0;
    for (const CatalogueEffect& effect : mEffects) {
        const bool isSimilar = Lower(effect.description.matchName).find(wanted) != std::string::npos ||
                               Lower(effect.description.displayName).find(wanted) != std::string::npos;
        if (!wanted.empty() && isSimilar && count++ < kMostNames) {
            names += (names.empty() ? "" : ", ") + effect.description.matchName;
        }
    }
    return names;
}

const CatalogueEffect& EffectHost::FindRunnable(const std::string& inMatchName) const
{
    const CatalogueEffect& effect = Find(inMatchName);
    const UTF16String name = ToUTF16(effect.description.matchName);
    if (!effect.failure.empty()) {
        throw Failure(kExit_Negative,
                      Text("$$$/Halcyon/TrHost/EffectUnknown=@0 cannot run: @1; trhost effects info @0 "
                           "--rescan tries again",
                           {name, ToUTF16(ToldText(effect.failure))}));
    }
    if (!effect.description.refusal.empty()) {
        throw Failure(kExit_Negative, Text("$$$/Halcyon/TrHost/EffectRefused=@0 cannot run: @1",
                                           {name, ToUTF16(ToldText(effect.description.refusal))}));
    }
    if (!TR::IsEffectEnabled(effect.description.matchName)) {
        throw Failure(
            kExit_Negative,
            mIsSafeMode
                ? Text("$$$/Halcyon/TrHost/EffectSafeMode=@0 does not run in safe mode; run trhost without "
                       "--safe-mode",
                       {name})
                : Text("$$$/Halcyon/TrHost/EffectDisabled=@0 is switched off; trhost effects enable @0 lets "
                       "it run again",
                       {name}));
    }
    return effect;
}

std::unique_ptr<effects::IVideoEffect> OpenVideoEffect(const EffectDescription& inEffect,
                                                       const effects::VideoEffectForm& inForm,
                                                       const std::vector<std::string>& inParameters)
{
    if (inEffect.kind == EffectKind::kAudioFilter) {
        ThrowWrongKind(inEffect, "$$$/Halcyon/TrHost/VideoKinds=video filter, transition or generator");
    }
    effects::IEffectEngine& engine = LoadEffectEngine(inEffect.technology);
    kiocore::InterfaceRef<effects::IVideoEffectModule> module;
    if (inEffect.kind == EffectKind::kTransition) {
        module = engine.OpenTransition(inEffect);
    } else {
        module = engine.OpenFilter(inEffect);
    }
    std::unique_ptr<effects::IVideoEffect> effect = module->Open(inForm);
    SetParameters(*effect, inParameters);
    return effect;
}

std::unique_ptr<effects::IAudioEffect> OpenAudioEffect(const EffectDescription& inEffect, int inSampleRate,
                                                       int inChannels,
                                                       const std::vector<std::string>& inParameters)
{
    if (inEffect.kind != EffectKind::kAudioFilter) {
        ThrowWrongKind(inEffect, TextOf(EffectKind::kAudioFilter));
    }
    const kiocore::InterfaceRef<effects::IAudioEffectModule> module =
        LoadEffectEngine(inEffect.technology).OpenFilter(inEffect);
    std::unique_ptr<effects::IAudioEffect> effect = module->Open(inSampleRate, inChannels);
    SetParameters(*effect, inParameters);
    return effect;
}

} // namespace trhost
