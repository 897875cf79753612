#pragma once

#include <kiocore/Export.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiocore::utility {

class RegistryStore;
class RegistryBatchState;

/// Where a key's path begins.
enum RegistryRootKey {
    kRegistryRoot_CurrentUser = 0, ///< what belongs to the user; the one root there is
};

/// The file that keeps the registry: JSON, as FormatRegistry in this library's sources writes it. Until a
/// host sets one (or after it set the empty path), it is registry.json in the folder named as the client
/// (kiocore/config/Client.h, asked at the first use) in the user's configuration folder: $XDG_CONFIG_HOME, or
/// ~/.config. The file and its folder come into being with the first change, beside it a lock file
/// (".lock" appended), which stays.
///
/// Keys that are open stay with the file that was set when they were opened.
///
/// Threading: any thread.
KIO_EXPORT void SetRegistryFile(const UTF16String& inFile);
KIO_EXPORT UTF16String GetRegistryFile();

/// One key of the registry: a folder for values and other keys that outlives the process.
///
/// Paths are UTF-8 names joined by single backslashes, and one more at the end changes nothing; the empty
/// path is the root. Names of keys and values are kept to the letter: they differ in case, and a slash is a
/// character like others. A value has the type it was set with last, and is not found as the other one.
///
/// Each operation works on the file as it is now: a change that another process has made is seen at once (the
/// file is read again when its state has changed, else not touched), and two changes at once lose nothing of
/// either, between processes too. Each change is saved before it returns, whole or not at all, but not synced
/// to the disk; ScRegistryBatch saves several changes at once. Setting what is there already writes
/// nothing. A file of size 0, as a power cut can leave it, is an empty registry. A file that holds anything
/// else than a registry of this or an older build is never changed: every operation fails until a person has
/// repaired it or moved it away.
///
/// All operations return 0, or -1: then nothing has changed, the key and out parameters included. Failures
/// other than a key or value that is not there are told on trace channel "Registry" at level 1.
///
/// Threading: any thread; several may use one key object at once, as long as none opens or assigns it.
/// A change waits for those of other threads and processes, and for the disk; reading never waits for them.
class KIO_EXPORT RegistryKey {
public:
    RegistryKey() = default; ///< not open: everything else fails

    /// @return -1 also when there is no such key.
    int Open(RegistryRootKey inRoot, std::string_view inPath);
    /// Opens the key; makes it first, and those above it, where they are missing.
    int Create(RegistryRootKey inRoot, std::string_view inPath);
    bool IsOpen() const { return mStore != nullptr; }

    int SetUInt32Value(std::string_view inName, std::uint32_t inValue);
    int GetUInt32Value(std::string_view inName, std::uint32_t& outValue) const;
    /// @param inValue  UTF-8.
    int SetStringValue(std::string_view inName, std::string_view inValue);
    int GetStringValue(std::string_view inName, std::string& outValue) const;

    /// @return -1 also when it is not there.
    int DeleteValue(std::string_view inName);
    /// Deletes a key below this one, with all that it holds. Objects that have it open fail from then on,
    /// until it is made again. @return -1 also when it is not there.
    int DeleteKey(std::string_view inPath);
    /// In the order of their bytes.
    int GetValueNames(std::vector<std::string>& outNames) const;
    /// Only those right below this key, in the order of their bytes.
    int GetSubKeyNames(std::vector<std::string>& outNames) const;

private:
    std::shared_ptr<RegistryStore> mStore;
    std::string mPath; // without a separator at its end
};

/// Gathers the changes of its thread and saves them in one go, so that others see all of them or none, and a
/// thousand changes cost one save. Its own thread sees them at once. A change whose key somebody else deletes
/// meanwhile counts as made before that. One within another joins it. What is gathered dies with the process.
/// Holds no lock.
///
/// Threading: made, used and destroyed on one thread; other threads' changes are not gathered.
class KIO_EXPORT ScRegistryBatch {
public:
    /// @param inDurability  of the one save; a batch in another follows the outer one.
    explicit ScRegistryBatch(filesupport::Durability inDurability = filesupport::Durability::kFile);
    ~ScRegistryBatch(); ///< as Finish, the result only traced
    ScRegistryBatch(const ScRegistryBatch&) = delete;
    ScRegistryBatch& operator=(const ScRegistryBatch&) = delete;

    /// Saves what was gathered; later changes are gathered anew.
    /// @return 0 saved, nothing to save, or left to the outer batch; -1 not saved: all of it is dropped.
    int Finish();

private:
    std::unique_ptr<RegistryBatchState> mState; // empty when this one joined another
};

} // namespace kiocore::utility
