#include "ScanCache.h"

#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/serialization/JSONConvert.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace trhost::effects {

using namespace kiocore::serialization;

namespace {

constexpr int kVersion = 1;

JSON PathToJSON(const std::string& inPath)
{
    return TextFromUTF16(kiocore::filesupport::FromNative(inPath));
}

std::string PathMember(const JSONObject& inObject)
{
    return kiocore::filesupport::ToNative(GetMember<kiocore::UTF16String>(inObject, "file"));
}

void AddStamp(JSONObject& ioObject, const FileStamp& inStamp)
{
    AddMember(ioObject, "size", inStamp.sizeBytes);
    AddMember(ioObject, "modified", inStamp.modified);
}

FileStamp StampMember(const JSONObject& inObject)
{
    return {GetMember<std::uint64_t>(inObject, "size"), GetMember<std::uint64_t>(inObject, "modified")};
}

void AddFailure(JSONObject& ioObject, const std::optional<WorkerFailure>& inFailure)
{
    if (inFailure) {
        ioObject["failure"] = ToJSON(*inFailure);
    }
}

std::optional<WorkerFailure> FailureMember(const JSONObject& inObject)
{
    const auto found = inObject.find("failure");
    return found == inObject.end() ? std::nullopt : std::optional(WorkerFailureFromJSON(found->second));
}

JSON PluginToJSON(const ScannedPlugin& inPlugin)
{
    JSONObject object;
    AddMember(object, "name", inPlugin.name);
    if (inPlugin.description) {
        object["description"] = ToJSON(*inPlugin.description);
    }
    AddFailure(object, inPlugin.failure);
    return object;
}

ScannedPlugin PluginFromJSON(const JSON& inValue)
{
    const JSONObject& object = AsObject(inValue);
    ScannedPlugin plugin;
    plugin.name = GetMember<std::string>(object, "name");
    if (const auto found = object.find("description"); found != object.end()) {
        plugin.description = FromJSON(found->second);
    }
    plugin.failure = FailureMember(object);
    if (plugin.description.has_value() == plugin.failure.has_value()) {
        throw bad_cast_exception(Describe(inValue), "a plug-in with either a description or a failure");
    }
    return plugin;
}

JSON FileToJSON(const std::string& inTechnology, const std::string& inFile, const ScannedFile& inScanned)
{
    JSONObject object;
    AddMember(object, "technology", inTechnology);
    object["file"] = PathToJSON(inFile);
    AddStamp(object, inScanned.stamp);
    JSONArray behind;
    for (const auto& [path, stamp] : inScanned.behind) {
        JSONObject file{{"file", PathToJSON(path)}};
        AddStamp(file, stamp);
        behind.push_back(std::move(file));
    }
    object["behind"] = std::move(behind);
    AddFailure(object, inScanned.failure);
    JSONArray plugins;
    for (const ScannedPlugin& plugin : inScanned.plugins) {
        plugins.push_back(PluginToJSON(plugin));
    }
    object["plugins"] = std::move(plugins);
    return object;
}

ScannedFile FileFromJSON(const JSONObject& inObject)
{
    ScannedFile scanned;
    scanned.stamp = StampMember(inObject);
    for (const JSON& value : GetMember<JSONArray>(inObject, "behind")) {
        const JSONObject& file = AsObject(value);
        scanned.behind.emplace_back(PathMember(file), StampMember(file));
    }
    scanned.failure = FailureMember(inObject);
    for (const JSON& plugin : GetMember<JSONArray>(inObject, "plugins")) {
        scanned.plugins.push_back(PluginFromJSON(plugin));
    }
    return scanned;
}

bool IsThere(const std::string& inFile)
{
    return StampOf(inFile).has_value();
}

} // namespace

ScanCache::ScanCache(std::string inFolder) : mFolder(std::move(inFolder))
{
    if (mFolder.empty()) {
        return;
    }
    try {
        Read();
        return;
    } catch (const not_well_formed_exception& problem) {
        kiocore::debug::Trace(1, "Effects",
                              PathOf(kFileName) + " is damaged and set aside: " + problem.what());
    } catch (const bad_cast_exception& problem) {
        kiocore::debug::Trace(1, "Effects",
                              PathOf(kFileName) + " is damaged and set aside: " + problem.what());
    }
    mFiles.clear();
    std::error_code ignored; // where it cannot be renamed the next save replaces it
    std::filesystem::rename(PathOf(kFileName), PathOf(kDamagedFileName), ignored);
}

void ScanCache::Read()
{
    std::ifstream file(PathOf(kFileName), std::ios::binary);
    if (!file) {
        return;
    }
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const JSON document = GetJSONFromUTF8String(text);
    const JSONObject& object = AsObject(document);
    if (GetMember<int>(object, "version") != kVersion) {
        return;
    }
    for (const JSON& value : GetMember<JSONArray>(object, "files")) {
        const JSONObject& scanned = AsObject(value);
        mFiles[{GetMember<std::string>(scanned, "technology"), PathMember(scanned)}] = FileFromJSON(scanned);
    }
}

const ScannedFile* ScanCache::FindFresh(const std::string& inTechnology, const std::string& inFile) const
{
    const auto found = mFiles.find({inTechnology, inFile});
    if (found == mFiles.end() || StampOf(inFile) != found->second.stamp) {
        return nullptr;
    }
    const auto& behind = found->second.behind;
    const bool isFresh = std::all_of(behind.begin(), behind.end(), [](const auto& inBehind) {
        return StampOf(inBehind.first).value_or(FileStamp()) == inBehind.second;
    });
    return isFresh ? &found->second : nullptr;
}

void ScanCache::Set(const std::string& inTechnology, const std::string& inFile, ScannedFile inScanned)
{
    mFiles[{inTechnology, inFile}] = std::move(inScanned);
    mIsChanged = true;
}

int ScanCache::Save()
{
    if (mFolder.empty()) {
        return 0;
    }
    const std::size_t gone =
        std::erase_if(mFiles, [](const auto& inFile) { return !IsThere(inFile.first.second); });
    if (!mIsChanged && gone == 0) {
        return 0;
    }
    JSONArray files;
    for (const auto& [key, scanned] : mFiles) {
        files.push_back(FileToJSON(key.first, key.second, scanned));
    }
    JSONObject document;
    AddMember(document, "version", kVersion);
    document["files"] = std::move(files);
    std::error_code ignored; // saving tells what is wrong with the folder
    std::filesystem::create_directories(mFolder, ignored);
    const auto saved = kiocore::filesupport::SaveFileAtomically(
        kiocore::filesupport::FromNative(PathOf(kFileName)), GetJSONUTF8String(document, false),
        kiocore::filesupport::Durability::kNone);
    if (saved.result < 0) {
        kiocore::debug::Trace(1, "Effects",
                              PathOf(kFileName) + " cannot be saved: " + saved.failedStep + ": " +
                                  std::system_category().message(saved.errorNumber));
        return -1;
    }
    mIsChanged = false;
    return 0;
}

} // namespace trhost::effects
