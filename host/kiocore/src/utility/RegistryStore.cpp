#include "RegistryStore.h"

#include "../platform/ConfigFolder.h"

#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/DocumentLock.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace kiocore::utility {
namespace {

constexpr Guid kRegistryLockID(Guid::Bytes{0x8e, 0x0f, 0x2d, 0x51, 0x3b, 0x96, 0x4c, 0x7a, 0xa5, 0x14, 0x60,
                                           0xc7, 0xf2, 0x89, 0x1d, 0x3e});

struct DefaultStore {
    std::mutex lock;
    std::shared_ptr<RegistryStore> store;
};

// Never destroyed: objects that go at exit may still ask.
DefaultStore& TheDefault()
{
    static auto* const theDefault = new DefaultStore;
    return *theDefault;
}

thread_local RegistryBatchState* tBatch = nullptr;

UTF16String DefaultFile()
{
    const std::string folder = platform::GetConfigFolder();
    if (folder.empty()) {
        return {};
    }
    UTF16String client = config::GetClientName();
    std::replace(client.begin(), client.end(), u'/', u'_');
    if (client.find_first_not_of(u'.') == UTF16String::npos) {
        client = u"Media Host"; // no name, or one that means a folder elsewhere
    }
    return filesupport::FromNative(folder) + u"/" + client + u"/registry.json";
}

std::string ReasonOf(int inError)
{
    return std::system_category().message(inError);
}

} // namespace

RegistryStore::RegistryStore(const UTF16String& inFile)
    : mFile(inFile), mLockFile(inFile + u".lock"), mNativeFile(filesupport::ToNative(inFile))
{}

std::shared_ptr<RegistryStore> RegistryStore::GetDefault()
{
    DefaultStore& theDefault = TheDefault();
    {
        std::lock_guard lock(theDefault.lock);
        if (theDefault.store) {
            return theDefault.store;
        }
    }
    auto store = std::make_shared<RegistryStore>(DefaultFile());
    std::lock_guard lock(theDefault.lock);
    if (!theDefault.store) {
        theDefault.store = std::move(store);
    }
    return theDefault.store;
}

void RegistryStore::SetDefault(const UTF16String& inFile)
{
    auto store = inFile.empty() ? nullptr : std::make_shared<RegistryStore>(inFile);
    DefaultStore& theDefault = TheDefault();
    std::lock_guard lock(theDefault.lock);
    theDefault.store.swap(store);
}

RegistrySnapshot RegistryStore::View()
{
    RegistryBatchState* const batch = RegistryBatchState::OfThisThread();
    return batch && batch->IsFor(*this) ? batch->View() : Current();
}

int RegistryStore::Change(RegistryChange inChange)
{
    if (!IsRegistryText(inChange.name) || (std::holds_alternative<std::string>(inChange.value) &&
                                           !IsRegistryText(std::get<std::string>(inChange.value)))) {
        Tell("cannot take a name or text under the key " + inChange.path + " that is no UTF-8");
        return -1;
    }
    RegistryBatchState* const batch = RegistryBatchState::OfThisThread();
    if (batch && batch->IsFor(*this)) {
        return batch->Add(std::move(inChange));
    }
    bool allThere = false;
    const int result = Save({std::move(inChange)}, filesupport::Durability::kNone, allThere);
    return result == 0 && allThere ? 0 : -1;
}

RegistrySnapshot RegistryStore::Current()
{
    platform::FileStamp stamp;
    if (mFile.empty()) {
        Tell("has no place: the user has no configuration folder, and the host has set no file");
        return {};
    }
    if (const int error = platform::GetFileStamp(mNativeFile, stamp); error != 0) {
        Tell("cannot be looked at: " + ReasonOf(error));
        return {};
    }
    {
        std::lock_guard lock(mLock);
        if (mKnown && mKnown->stamp == stamp) {
            return mKnown->tree;
        }
    }
    if (!stamp.exists) {
        return Keep(stamp, std::make_shared<RegistryTree>());
    }
    std::string text;
    if (const int error = platform::ReadStampedFile(mNativeFile, stamp, text); error != 0) {
        Tell("cannot be read: " + ReasonOf(error));
        return {};
    }
    try {
        return Keep(stamp, std::make_shared<RegistryTree>(ParseRegistry(text)));
    } catch (const std::bad_alloc&) {
        throw; // says nothing about the file
    } catch (const std::exception& error) {
        Tell(std::string("is left as it is and not used, because it is damaged; repair it or move it "
                         "away: ") +
             error.what());
        return Keep(stamp, nullptr);
    }
}

RegistrySnapshot RegistryStore::Keep(const platform::FileStamp& inStamp, RegistrySnapshot inTree)
{
    auto known = std::make_unique<const Known>(Known{inStamp, inTree});
    std::lock_guard lock(mLock);
    mKnown.swap(known);
    return inTree;
}

int RegistryStore::Save(const std::vector<RegistryChange>& inChanges, filesupport::Durability inDurability,
                        bool& outAllThere)
{
    using Outcome = RegistryChange::Outcome;
    const auto apply = [&](RegistryTree& ioTree) {
        bool changed = false;
        outAllThere = true;
        for (const RegistryChange& change : inChanges) {
            const Outcome outcome = ioTree.Apply(change);
            changed = changed || outcome == Outcome::kChanged;
            outAllThere = outAllThere && outcome != Outcome::kNotThere;
        }
        return changed;
    };
    // What changes nothing needs no lock, which a folder that cannot be written to would not give.
    const RegistrySnapshot before = Current();
    if (!before) {
        return -1;
    }
    auto changed = std::make_shared<RegistryTree>(*before);
    if (!apply(*changed)) {
        return 0;
    }
    try {
        const filesupport::ScDocumentLock lock(mLockFile, kRegistryLockID);
        const RegistrySnapshot current = Current();
        if (!current) {
            return -1;
        }
        if (current != before) {
            changed = std::make_shared<RegistryTree>(*current);
            if (!apply(*changed)) {
                return 0;
            }
        }
        return SaveTree(std::move(changed), inDurability);
    } catch (const file_exception& error) {
        Tell(std::string("cannot be changed: ") + error.what());
        return -1;
    }
}

int RegistryStore::SaveTree(std::shared_ptr<RegistryTree> inTree, filesupport::Durability inDurability)
{
    const std::string text = FormatRegistry(*inTree);
    const filesupport::SaveResult saved = filesupport::SaveFileAtomically(mFile, text, inDurability);
    if (saved.result != 0) {
        Tell(std::string("cannot be saved, at \"") + saved.failedStep + "\": " + ReasonOf(saved.errorNumber));
        return -1;
    }
    platform::FileStamp stamp;
    if (platform::GetFileStamp(mNativeFile, stamp) == 0 && stamp.modified == saved.modificationTime &&
        stamp.size == text.size()) {
        Keep(stamp, std::move(inTree)); // else an editor, which asks for no lock, was faster: read it again
    }
    return 0;
}

void RegistryStore::Tell(const std::string& inProblem) const
{
    debug::Trace(1, "Registry", "Registry file " + mNativeFile + " " + inProblem);
}

RegistryBatchState::RegistryBatchState(std::shared_ptr<RegistryStore> inStore,
                                       filesupport::Durability inDurability)
    : mStore(std::move(inStore)), mDurability(inDurability)
{
    tBatch = this;
}

RegistryBatchState::~RegistryBatchState()
{
    tBatch = nullptr;
}

RegistryBatchState* RegistryBatchState::OfThisThread()
{
    return tBatch;
}

RegistrySnapshot RegistryBatchState::View()
{
    RegistrySnapshot current = mStore->Current();
    if (!current || mChanges.empty()) {
        return current;
    }
    if (current != mBase) {
        auto view = std::make_shared<RegistryTree>(*current);
        for (const RegistryChange& change : mChanges) {
            view->Apply(change);
        }
        mView = std::move(view);
        mBase = std::move(current);
    }
    return mView;
}

int RegistryBatchState::Add(RegistryChange inChange)
{
    const RegistrySnapshot view = View();
    if (!view) {
        return -1;
    }
    if (mChanges.empty()) {
        mView = std::make_shared<RegistryTree>(*view);
        mBase = view;
    }
    const RegistryChange::Outcome outcome = mView->Apply(inChange);
    if (outcome == RegistryChange::Outcome::kNotThere) {
        return -1;
    }
    // Kept also when it changes nothing now: somebody else may change it before this is saved.
    mChanges.push_back(std::move(inChange));
    return 0;
}

int RegistryBatchState::Finish()
{
    const std::vector<RegistryChange> changes = std::exchange(mChanges, {});
    mView.reset();
    mBase.reset();
    bool allThere = false; // what somebody else deleted meanwhile counts as deleted after our change
    return changes.empty() ? 0 : mStore->Save(changes, mDurability, allThere);
}

} // namespace kiocore::utility
