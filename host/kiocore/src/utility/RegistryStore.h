#pragma once

#include "../platform/StampedFile.h"
#include "RegistryTree.h"

#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/utility/UTF16String.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kiocore::utility {

using RegistrySnapshot = std::shared_ptr<const RegistryTree>;

/// The registry in one file.
///
/// Threading: any thread. Changes hold the file's lock while they read, change and save; reading takes none.
class RegistryStore {
public:
    explicit RegistryStore(const UTF16String& inFile);

    /// The one in use; made for the default file at the first use.
    static std::shared_ptr<RegistryStore> GetDefault();
    static void SetDefault(const UTF16String& inFile);

    const UTF16String& File() const { return mFile; }

    /// What the calling thread sees: what the file holds, and on top what a batch of this thread has
    /// gathered. Empty when the file cannot be read.
    RegistrySnapshot View();
    /// Saves one change, or adds it to this thread's batch. @return 0, or -1, also when what it changes is
    /// not there.
    int Change(RegistryChange inChange);

    /// What the file holds now; the same snapshot as long as the file stays as it is. Empty when it cannot be
    /// read.
    RegistrySnapshot Current();
    /// Applies the changes to what the file holds when the lock is had, and saves unless all was so already.
    /// @param outAllThere  whether each found what it changes.
    int Save(const std::vector<RegistryChange>& inChanges, filesupport::Durability inDurability,
             bool& outAllThere);

private:
    struct Known {
        platform::FileStamp stamp;
        RegistrySnapshot tree; // empty: the file with this stamp is damaged
    };

    RegistrySnapshot Keep(const platform::FileStamp& inStamp, RegistrySnapshot inTree);
    int SaveTree(std::shared_ptr<RegistryTree> inTree, filesupport::Durability inDurability);
    void Tell(const std::string& inProblem) const;

    const UTF16String mFile;
    const UTF16String mLockFile;
    const std::string mNativeFile;
    std::mutex mLock; // guards mKnown; never held across I/O
    std::unique_ptr<const Known> mKnown;
};

/// The changes that a thread gathers for one store.
///
/// Threading: its own thread only.
class RegistryBatchState {
public:
    RegistryBatchState(std::shared_ptr<RegistryStore> inStore, filesupport::Durability inDurability);
    ~RegistryBatchState();

    /// The calling thread's; null when it has none.
    static RegistryBatchState* OfThisThread();
    bool IsFor(const RegistryStore& inStore) const { return mStore.get() == &inStore; }

    RegistrySnapshot View();
    int Add(RegistryChange inChange);
    int Finish();

private:
    const std::shared_ptr<RegistryStore> mStore;
    const filesupport::Durability mDurability;
    std::vector<RegistryChange> mChanges;
    RegistrySnapshot mBase;              // on which mView stands
    std::shared_ptr<RegistryTree> mView; // with the changes; empty when there are none
};

} // namespace kiocore::utility
