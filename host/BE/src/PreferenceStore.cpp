#include "PreferenceStore.h"

#include "ScalarText.h"
#include "TextCoding.h"
#include "XMLDataWriter.h"

#include <kiocore/debug/Trace.h>

#include <utility>

namespace BE {
namespace {

using kiocore::filesupport::Durability;

constexpr std::uint64_t kDefaultRecordMemoryBudget = 64u << 20;
constexpr Durability kDefaultDurability = Durability::kFile;

constexpr std::uint32_t kSettingsVersion = 1;
constexpr const char* kPreferencesKey = "Preferences";
constexpr const char* kPropertiesKey = "Properties";
constexpr Guid kPreferencesClassID(Guid::Bytes{0x13, 0x86, 0x24, 0x18, 0x65, 0xb1, 0x4d, 0x0c, 0x8f, 0x8b,
                                               0x06, 0xee, 0xa9, 0x6c, 0x46, 0x10});
constexpr Guid kPropertiesClassID(Guid::Bytes{0x4f, 0x53, 0x12, 0x09, 0xbb, 0x41, 0x44, 0x7d, 0xb5, 0x59,
                                              0x8b, 0xa0, 0x3d, 0x7e, 0xbc, 0x93});

// Keys in the preferences file.
constexpr const char* kPathKeys[kPathPreferences] = {
    "MediaCacheDatabaseFolder",  "MediaCacheFilesFolder", "FirstMetadataCacheFolder",
    "SecondMetadataCacheFolder", "PeakFilesFolder",       "DocumentLockFile",
};
constexpr const char* kDurabilityKey = "Durability";
constexpr const char* kRecordMemoryBudgetKey = "RecordMemoryBudget";

constexpr struct {
    Durability durability;
    UTF16View name;
} kDurabilityNames[] = {
    {Durability::kFull, u"full"}, {Durability::kFile, u"file"}, {Durability::kNone, u"none"}};

template <typename T>
void Store(std::string_view inKey, const T& inValue, XMLDataWriter& ioWriter)
{
    ioWriter.WriteValue(ImmutableString(inKey), SerializeableValue<T>(inValue));
}

bool Refuse(const std::string& inWhat, const std::string& inFound, const std::string& inExpected)
{
    kiocore::debug::Trace(1, "Preferences", inWhat + " is " + inFound + "; expected " + inExpected);
    return false;
}

} // namespace

PreferenceStore& PreferenceStore::Get()
{
    static PreferenceStore* store = new PreferenceStore;
    return *store;
}

int PreferenceStore::GetPath(PathPreference inWhich, UTF16String& outPath) const
{
    const auto which = static_cast<std::size_t>(inWhich);
    std::lock_guard lock(mLock);
    const UTF16String& set = mSettings.paths[which];
    const UTF16String& path = set.empty() ? mDefaultPaths[which] : set;
    if (path.empty()) {
        return -1;
    }
    outPath.assign(path);
    return 0;
}

void PreferenceStore::SetPath(PathPreference inWhich, const UTF16String& inPath)
{
    std::lock_guard lock(mLock);
    UTF16String& path = mSettings.paths[static_cast<std::size_t>(inWhich)];
    if (path != inPath) {
        path = inPath;
        Changed();
    }
}

void PreferenceStore::SetDefaultPaths(const std::array<UTF16String, kPathPreferences>& inPaths)
{
    std::lock_guard lock(mLock);
    if (mDefaultPaths != inPaths) {
        mDefaultPaths = inPaths;
        Changed();
    }
}

Durability PreferenceStore::GetDurability() const
{
    std::lock_guard lock(mLock);
    return mSettings.durability.value_or(kDefaultDurability);
}

void PreferenceStore::SetDurability(Durability inDurability)
{
    std::lock_guard lock(mLock);
    if (std::exchange(mSettings.durability, inDurability) != inDurability) {
        Changed();
    }
}

std::uint64_t PreferenceStore::GetRecordMemoryBudget() const
{
    std::lock_guard lock(mLock);
    return mSettings.recordMemoryBudget.value_or(kDefaultRecordMemoryBudget);
}

void PreferenceStore::SetRecordMemoryBudget(std::uint64_t inBytes)
{
    std::lock_guard lock(mLock);
    if (std::exchange(mSettings.recordMemoryBudget, inBytes) != inBytes) {
        Changed();
    }
}

std::optional<bool> PreferenceStore::FindBool(std::string_view inKey) const
{
    std::lock_guard lock(mLock);
    const auto found = mSettings.properties.find(inKey);
    if (found == mSettings.properties.end() || found->second.type != StoredType::kBool) {
        return std::nullopt;
    }
    return found->second.text == u"true";
}

void PreferenceStore::SetBool(std::string_view inKey, bool inValue)
{
    SetProperty(inKey, {StoredType::kBool, inValue ? u"true" : u"false"});
}

std::optional<UTF16String> PreferenceStore::FindText(std::string_view inKey) const
{
    std::lock_guard lock(mLock);
    const auto found = mSettings.properties.find(inKey);
    if (found == mSettings.properties.end() || found->second.type != StoredType::kString) {
        return std::nullopt;
    }
    return found->second.text;
}

void PreferenceStore::SetText(std::string_view inKey, const UTF16String& inValue)
{
    SetProperty(inKey, {StoredType::kString, inValue});
}

void PreferenceStore::SetProperty(std::string_view inKey, Stored inValue)
{
    std::lock_guard lock(mLock);
    const auto found = mSettings.properties.find(inKey);
    if (found == mSettings.properties.end()) {
        mSettings.properties.emplace(inKey, std::move(inValue));
    } else if (found->second != inValue) {
        found->second = std::move(inValue);
    } else {
        return;
    }
    Changed();
}

void PreferenceStore::Remove(std::string_view inKey)
{
    std::lock_guard lock(mLock);
    if (const auto found = mSettings.properties.find(inKey); found != mSettings.properties.end()) {
        mSettings.properties.erase(found);
        Changed();
    }
}

int PreferenceStore::Load(const UTF16String& inFile)
{
    std::lock_guard fileLock(mFileLock);
    mFile.clear();
    XMLDocument document;
    Settings settings;
    if (document.OpenFile(inFile)) {
        StoredMap preferences;
        if (!ReadObject(document, kPreferencesKey, preferences) ||
            !ReadObject(document, kPropertiesKey, settings.properties) || !TakeKnown(preferences, settings)) {
            return -1;
        }
        settings.otherPreferences = std::move(preferences);
    } else if (!document.FileIsMissing()) {
        kiocore::debug::Trace(1, "Preferences", document.Error());
        return -1;
    }
    mFile = inFile;
    std::lock_guard lock(mLock);
    mSettings = std::move(settings);
    Changed();
    return 0;
}

/// @return false when it holds what Save could not write again.
bool PreferenceStore::ReadObject(const XMLDocument& inDocument, const char* inKey, StoredMap& outValues)
{
    const StoredValue* object = inDocument.Find(inDocument.Root(), inKey);
    if (!object) {
        return true;
    }
    if (object->type != StoredType::kObject) {
        return Refuse(inKey, NameOf(object->type), NameOf(StoredType::kObject));
    }
    const StoredGroup& group = inDocument.GroupOf(*object);
    if (group.version > kSettingsVersion) {
        return Refuse(inKey, "of version " + std::to_string(group.version),
                      "at most " + std::to_string(kSettingsVersion));
    }
    for (std::uint32_t at = group.first; at != group.end; at = inDocument.At(at).next) {
        const StoredValue& value = inDocument.At(at);
        const std::string key(value.Key());
        Stored stored{value.type, {}};
        if (value.type == StoredType::kObject || value.type == StoredType::kMap) {
            return Refuse(key, NameOf(value.type), "a single value");
        }
        if (const char* problem = DecodeText(value.Value(), stored.text)) {
            return Refuse(key, std::string("a value that ") + problem, "a readable text");
        }
        if (stored.type == StoredType::kBool && stored.text != u"true" && stored.text != u"false") {
            return Refuse(key, std::string(value.Value()), "true or false");
        }
        outValues.emplace(key, std::move(stored));
    }
    return true;
}

/// Moves the preferences that this build knows out of ioValues.
bool PreferenceStore::TakeKnown(StoredMap& ioValues, Settings& outSettings)
{
    const auto take = [&](const char* inKey, StoredType inType, UTF16String& outText) {
        const auto found = ioValues.find(inKey);
        if (found == ioValues.end()) {
            return true;
        }
        if (found->second.type != inType) {
            return Refuse(inKey, NameOf(found->second.type), NameOf(inType));
        }
        outText = std::move(found->second.text);
        ioValues.erase(found);
        return true;
    };
    for (std::size_t i = 0; i < kPathPreferences; ++i) {
        if (!take(kPathKeys[i], StoredType::kString, outSettings.paths[i])) {
            return false;
        }
    }
    UTF16String durability;
    UTF16String budget;
    if (!take(kDurabilityKey, StoredType::kString, durability) ||
        !take(kRecordMemoryBudgetKey, StoredType::kUInt64, budget)) {
        return false;
    }
    for (const auto& known : kDurabilityNames) {
        if (durability == known.name) {
            outSettings.durability = known.durability;
        }
    }
    if (!durability.empty() && !outSettings.durability) {
        return Refuse(kDurabilityKey, kiocore::utility::ToUTF8(durability), "full, file or none");
    }
    if (!budget.empty()) {
        SerializeableValue<std::uint64_t> bytes;
        const std::string text = kiocore::utility::ToUTF8(budget);
        if (!ParseScalar(text, bytes)) {
            return Refuse(kRecordMemoryBudgetKey, text, FormOf(bytes.GetType()));
        }
        outSettings.recordMemoryBudget = bytes.Get();
    }
    return true;
}

int PreferenceStore::Save()
{
    std::lock_guard fileLock(mFileLock);
    if (mFile.empty()) {
        return -1;
    }
    Settings settings;
    {
        std::lock_guard lock(mLock);
        settings = mSettings;
    }
    return kiocore::filesupport::SaveFileAtomically(mFile, AsDocument(settings),
                                                    settings.durability.value_or(kDefaultDurability))
        .result;
}

std::string PreferenceStore::AsDocument(const Settings& inSettings)
{
    XMLDataWriter writer;
    const auto writeAll = [&](const StoredMap& inValues) {
        for (const auto& [key, value] : inValues) {
            writer.WriteStored(value.type, key, value.text);
        }
    };
    writer.BeginObject(kPreferencesKey, kPreferencesClassID, "BackEndPreferences", kSettingsVersion);
    for (std::size_t i = 0; i < kPathPreferences; ++i) {
        if (!inSettings.paths[i].empty()) {
            writer.WriteValue(kPathKeys[i], inSettings.paths[i]);
        }
    }
    for (const auto& known : kDurabilityNames) {
        if (inSettings.durability == known.durability) {
            writer.WriteValue(kDurabilityKey, UTF16String(known.name));
        }
    }
    if (inSettings.recordMemoryBudget) {
        Store(kRecordMemoryBudgetKey, *inSettings.recordMemoryBudget, writer);
    }
    writeAll(inSettings.otherPreferences);
    writer.EndObject();
    writer.BeginObject(kPropertiesKey, kPropertiesClassID, "BackEndProperties", kSettingsVersion);
    writeAll(inSettings.properties);
    writer.EndObject();
    return writer.GetBytes();
}

} // namespace BE
