#pragma once

#include "XMLDocument.h"

#include <kiocore/filesupport/AtomicFile.h>

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace BE {

/// The paths among the preferences, in the order of kPathKeys.
enum class PathPreference {
    kMediaCacheDatabase,
    kMediaCacheFiles,
    kFirstMetadataCache,
    kSecondMetadataCache,
    kPeakFiles,
    kDocumentLock,
};
inline constexpr std::size_t kPathPreferences = 6;

/// All preferences and properties, and the file that keeps them. One for the process.
///
/// Threading: any thread. Reading and changing never waits for a file; Load and Save do, one at a time.
class PreferenceStore {
public:
    /// Never destroyed: objects that go at exit may still ask.
    static PreferenceStore& Get();

    int GetPath(PathPreference inWhich, UTF16String& outPath) const;
    /// Empty is back to the default.
    void SetPath(PathPreference inWhich, const UTF16String& inPath);
    void SetDefaultPaths(const std::array<UTF16String, kPathPreferences>& inPaths);

    kiocore::filesupport::Durability GetDurability() const;
    void SetDurability(kiocore::filesupport::Durability inDurability);
    std::uint64_t GetRecordMemoryBudget() const;
    void SetRecordMemoryBudget(std::uint64_t inBytes);

    /// Empty when it is not set, or set as another type.
    std::optional<bool> FindBool(std::string_view inKey) const;
    void SetBool(std::string_view inKey, bool inValue);
    std::optional<UTF16String> FindText(std::string_view inKey) const;
    void SetText(std::string_view inKey, const UTF16String& inValue);
    void Remove(std::string_view inKey);

    int Load(const UTF16String& inFile);
    int Save();

    void CountChange() { Changed(); }
    std::uint32_t ChangeCount() const { return mChangeCount.load(std::memory_order_acquire); }

private:
    /// A value as a file holds it, so that what this build does not know stays as it is.
    struct Stored {
        StoredType type;
        UTF16String text;

        friend bool operator==(const Stored&, const Stored&) = default;
    };
    using StoredMap = std::map<std::string, Stored, std::less<>>;

    /// What the user set. Empty where he did not.
    struct Settings {
        std::array<UTF16String, kPathPreferences> paths;
        std::optional<kiocore::filesupport::Durability> durability;
        std::optional<std::uint64_t> recordMemoryBudget;
        StoredMap otherPreferences;
        StoredMap properties;
    };

    static bool ReadObject(const XMLDocument& inDocument, const char* inKey, StoredMap& outValues);
    static bool TakeKnown(StoredMap& ioValues, Settings& outSettings);
    static std::string AsDocument(const Settings& inSettings);
    void SetProperty(std::string_view inKey, Stored inValue);
    /// After a change, before its lock is released.
    void Changed() { mChangeCount.fetch_add(1, std::memory_order_release); }

    mutable std::mutex mLock; // guards the settings and the default paths; never held across a file
    Settings mSettings;
    std::array<UTF16String, kPathPreferences> mDefaultPaths;
    std::atomic<std::uint32_t> mChangeCount{1};

    std::mutex mFileLock; // held by Load and Save, so that an older state is never saved over a newer one
    UTF16String mFile;    // empty: nothing loaded, or what is there could not be read
};

} // namespace BE
