#include "CatalogueScan.h"

#include "support/LocalText.h"

#include <kiocore/filesupport/NativePath.h>
#include <kiocore/serialization/JSONConvert.h>

#include <filesystem>
#include <map>
#include <utility>

namespace trhost::effects {

using namespace kiocore::serialization;

namespace {

std::string StemOf(const std::string& inFile)
{
    return std::filesystem::path(inFile).stem().native();
}

JSONObject Request(const char* inWhat, const PluginFile& inCandidate)
{
    JSONObject request;
    AddMember(request, "do", std::string(inWhat));
    AddMember(request, "engine", kiocore::filesupport::FromNative(inCandidate.module));
    AddMember(request, "file", kiocore::filesupport::FromNative(inCandidate.file));
    return request;
}

/// What is listed of a plug-in that nothing could be found out about.
EffectDescription Placeholder(const PluginFile& inCandidate, const std::string& inPluginName)
{
    EffectDescription description;
    description.technology = inCandidate.technology;
    description.file = inCandidate.file;
    description.pluginName = inPluginName;
    description.displayName = inPluginName.empty() ? StemOf(inCandidate.file) : inPluginName;
    description.matchName = inCandidate.technology + "." + description.displayName;
    return description;
}

FileStamp StampOrNone(const std::string& inFile)
{
    return StampOf(inFile).value_or(FileStamp());
}

} // namespace

CatalogueScan::CatalogueScan(const CatalogueSettings& inSettings, StepProgress inProgress)
    : mSettings(inSettings), mProgress(std::move(inProgress)), mCache(inSettings.cacheFolder)
{}

bool CatalogueScan::Run(const Interruption& inInterruption)
{
    for (const PluginFile& candidate : mSettings.files) {
        mFiles.emplace_back().candidate = candidate;
        LookAt(mFiles.back());
    }
    const bool isComplete = !mPool || mPool->Run(inInterruption);
    mStatistics.workersStarted = mPool ? mPool->StartedCount() : 0;
    mPool.reset();
    Keep();
    return isComplete;
}

void CatalogueScan::LookAt(File& ioFile)
{
    const auto stamp = StampOf(ioFile.candidate.file);
    if (!stamp) {
        return; // gone since it was found
    }
    ++mStatistics.filesSeen;
    const ScannedFile* const known =
        mSettings.isRescan ? nullptr : mCache.FindFresh(ioFile.candidate.technology, ioFile.candidate.file);
    if (!known) {
        ioFile.scanned.stamp = *stamp; // before the scan, so that a change during it is noticed
        AskNames(ioFile);
        return;
    }
    ioFile.scanned = *known;
    ioFile.isKnown = true;
    for (std::size_t plugin = 0; plugin < ioFile.scanned.plugins.size(); ++plugin) {
        if (!HasTypes(ioFile.scanned.plugins[plugin])) {
            AskDescription(ioFile, plugin);
        }
    }
}

bool CatalogueScan::HasTypes(const ScannedPlugin& inPlugin) const
{
    EffectTypes types;
    return !inPlugin.description || ReadEffectTypes(inPlugin.description->matchName, types);
}

void CatalogueScan::AskNames(File& ioFile)
{
    if (!mPool) {
        mPool.emplace(mSettings.worker);
    }
    ++mAsked;
    ++mStatistics.filesScanned;
    ioFile.isChanged = true;
    mPool->Ask(Request("names", ioFile.candidate), WorkerTask::kNames,
               [this, &ioFile](WorkerAnswer&& ioAnswer) { HearNames(ioFile, std::move(ioAnswer)); });
}

void CatalogueScan::HearNames(File& ioFile, WorkerAnswer&& inAnswer)
{
    ioFile.scanned.behind.emplace_back(ioFile.candidate.module, StampOrNone(ioFile.candidate.module));
    ioFile.scanned.failure = inAnswer.failure;
    std::vector<std::string> names;
    try {
        if (!inAnswer.failure) {
            names = GetMember<std::vector<std::string>>(inAnswer.value, "names");
            for (const auto& path : GetMember<std::vector<kiocore::UTF16String>>(inAnswer.value, "behind")) {
                const std::string file = kiocore::filesupport::ToNative(path);
                ioFile.scanned.behind.emplace_back(file, StampOrNone(file));
            }
        }
    } catch (const bad_cast_exception& problem) {
        ioFile.scanned.failure =
            WorkerFailure{WorkerFailure::Kind::kGarbled, WorkerTask::kNames, problem.what(), {}, 0};
        names.clear();
    }
    for (const std::string& name : names) {
        ioFile.scanned.plugins.push_back({name, {}, {}});
        AskDescription(ioFile, ioFile.scanned.plugins.size() - 1);
    }
    ioFile.isKnown = names.empty();
    Done(StemOf(ioFile.candidate.file));
}

void CatalogueScan::AskDescription(File& ioFile, std::size_t inPlugin)
{
    if (!mPool) {
        mPool.emplace(mSettings.worker);
    }
    ++mAsked;
    ++mStatistics.pluginsLoaded;
    ++ioFile.unanswered;
    ioFile.isChanged = true;
    ioFile.isKnown = false;
    JSONObject request = Request("describe", ioFile.candidate);
    AddMember(request, "name", ioFile.scanned.plugins[inPlugin].name);
    mPool->Ask(std::move(request), WorkerTask::kDescribe, [this, &ioFile, inPlugin](WorkerAnswer&& ioAnswer) {
        HearDescription(ioFile, inPlugin, std::move(ioAnswer));
    });
}

void CatalogueScan::HearDescription(File& ioFile, std::size_t inPlugin, WorkerAnswer&& inAnswer)
{
    ScannedPlugin& plugin = ioFile.scanned.plugins[inPlugin];
    plugin.description.reset();
    plugin.failure = inAnswer.failure;
    try {
        if (!plugin.failure) {
            plugin.description = FromJSON(GetMember<JSON>(inAnswer.value, "description"));
        }
    } catch (const bad_cast_exception& problem) {
        plugin.failure =
            WorkerFailure{WorkerFailure::Kind::kGarbled, WorkerTask::kDescribe, problem.what(), {}, 0};
    }
    ioFile.isKnown = --ioFile.unanswered == 0;
    Done(plugin.name);
}

void CatalogueScan::Done(const std::string& inName)
{
    ++mDone;
    if (mProgress) {
        mProgress(mDone, mAsked, inName);
    }
}

void CatalogueScan::Keep()
{
    if (mSettings.keepsNothing) {
        return;
    }
    for (const File& file : mFiles) {
        if (file.isKnown && file.isChanged) {
            mCache.Set(file.candidate.technology, file.candidate.file, file.scanned);
        }
    }
    mCache.Save();
}

std::vector<EffectCatalogue::Effect> CatalogueScan::TakeEffects()
{
    std::vector<EffectCatalogue::Effect> effects;
    std::vector<std::pair<std::string, EffectTypes>> newTypes;
    std::map<std::string, std::string> fileOfName;
    for (const File& file : mFiles) {
        if (file.isKnown && file.scanned.failure) {
            effects.push_back({Placeholder(file.candidate, {}), {}, TextOf(*file.scanned.failure)});
        }
        for (const ScannedPlugin& plugin : file.scanned.plugins) {
            if (!file.isKnown) {
                break;
            }
            if (!plugin.description) {
                effects.push_back({Placeholder(file.candidate, plugin.name), {}, TextOf(*plugin.failure)});
                continue;
            }
            EffectCatalogue::Effect effect{*plugin.description, {}, {}};
            const std::string& name = effect.description.matchName;
            const auto [first, isFirst] = fileOfName.emplace(name, file.candidate.file);
            if (!isFirst) {
                effect.description.refusal = LocalText("$$$/Halcyon/TrHost/SameMatchName=has the same match "
                                                       "name as the one in @0, which comes first",
                                                       {first->second});
            } else if (file.isChanged || !ReadEffectTypes(name, effect.types)) {
                effect.types = EffectTypesOf(effect.description);
                newTypes.emplace_back(name, effect.types);
            }
            effects.push_back(std::move(effect));
        }
    }
    if (!mSettings.keepsNothing) {
        KeepEffectTypes(newTypes);
    }
    return effects;
}

} // namespace trhost::effects
