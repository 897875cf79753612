#include "support/HoldingExecutor.h"
#include "support/MediaCacheFixture.h"
#include "support/ScMainThread.h"
#include "support/TraceRecorder.h"

#include <TR/DeleteAllMediaCacheEntriesOperation.h>

#include <BE/Backend.h>
#include <BE/Serialization.h>
#include <MF/FileManager.h>
#include <ZOL/BatchOperation.h>
#include <ZOL/DirectoryRegistry.h>
#include <kiocore/config/Errors.h>
#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/MainThread.h>

#include <gmock/gmock.h>

#include <thread>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;
using kiocore::threads::ScReplaceExecutor;
using support::NumberedGuid;
using support::WriteFile;
using testing::ElementsAre;
using testing::FloatEq;
using testing::IsEmpty;

const Guid kState = NumberedGuid(100);

/// Batch operations driven by hand: work is held until the test runs it, messages arrive on the test's
/// thread.
class BatchOperation : public support::MediaCacheFixture {
protected:
    struct Heard {
        std::vector<float> progress;
        int completions = 0;
    };

    InterfaceRef<ZOL::IBatchOperation> Cleaning() { return mDatabase; }
    static InterfaceRef<ZOL::IBatchOperation> DeleteAll()
    {
        return TR::CreateDeleteAllMediaCacheEntriesOperation();
    }

    Heard Run(const InterfaceRef<ZOL::IBatchOperation>& inOperation)
    {
        Heard heard;
        const kiocore::messaging::ScListener listener(
            inOperation->GetStationID(), [&](const kiocore::messaging::Message& message) {
                if (const auto* progress =
                        dynamic_cast<const ZOL::UpdateOperationProgressMessage*>(&message)) {
                    heard.progress.push_back(progress->GetProgress());
                } else if (dynamic_cast<const ZOL::OperationCompleteMessage*>(&message)) {
                    ++heard.completions;
                }
            });
        EXPECT_GE(inOperation->Start(), 0);
        mExecutor->RunAll();
        mMainThread->RunPosted();
        return heard;
    }

    /// A recorded document whose media has its state, or another one.
    Guid MakeDocument(unsigned inNumber, bool inIsUpToDate)
    {
        const Guid document = NumberedGuid(inNumber);
        AddItem(document, kState, 0, u"k", MakeCacheFile(std::to_string(inNumber) + ".cfa"));
        SetMedia(u"/media/" + document.AsString() + u".wav", document,
                 inIsUpToDate ? kState : NumberedGuid(101));
        return document;
    }

    support::ScMainThread mMainThread;
    std::shared_ptr<support::HoldingExecutor> mExecutor = std::make_shared<support::HoldingExecutor>();
    ScReplaceExecutor mReplaced{ScReplaceExecutor::Pool::kCPUBound, mExecutor};
};

TEST_F(BatchOperation, CleaningDeletesWhatChangedOrVanishedAndNothingElse)
{
    const Guid kept = MakeDocument(1, true);
    const Guid changed = MakeDocument(2, false);
    const Guid vanished = NumberedGuid(3); // the resolver does not know its media
    AddItem(vanished, kState, 0, u"k", MakeCacheFile("3.cfa"));
    support::WriteFile(DatabaseFolder() / "notes.txt", "the user's own");
    support::WriteFile(DatabaseFolder() / "broken.mcdb", "no record at all");
    support::WriteFile(CacheFolder() / "orphan.cfa", "nobody's");
    auto expected = support::Listing(mFolder.Path());
    for (const auto& gone :
         {RecordFile(changed), RecordFile(vanished), CacheFolder() / "2.cfa", CacheFolder() / "3.cfa"}) {
        ASSERT_EQ(expected.erase(gone.string()), 1u) << gone;
    }

    const Heard heard = Run(Cleaning());

    EXPECT_EQ(heard.completions, 1);
    EXPECT_EQ(support::Listing(mFolder.Path()), expected);
    UTF16String path;
    EXPECT_EQ(mDatabase->FindUpToDate(kept, kState, 0, u"k", path), 0);
    EXPECT_EQ(mDatabase->Find(changed, kState, 0, u"k", path), -1);
}

TEST_F(BatchOperation, CleaningDropsRecordsThatAreLeftWithoutItems)
{
    const Guid document = MakeDocument(1, true);
    std::filesystem::remove(CacheFolder() / "1.cfa");
    Run(Cleaning());
    EXPECT_FALSE(std::filesystem::exists(RecordFile(document)));
}

TEST_F(BatchOperation, CleaningDoesNotRewriteRecordsThatStay)
{
    const Guid document = MakeDocument(1, true);
    AddItem(document, kState, 1, u"k", MakeCacheFile("second.cfa"));
    std::filesystem::remove(CacheFolder() / "second.cfa");
    const std::string before = support::ReadFile(RecordFile(document));
    Run(Cleaning());
    EXPECT_EQ(support::ReadFile(RecordFile(document)), before);
}

TEST_F(BatchOperation, CleaningReportsEachFileOneBehind)
{
    for (unsigned i = 0; i < 10; ++i) {
        MakeDocument(i, true);
    }
    EXPECT_THAT(Run(Cleaning()).progress,
                ElementsAre(FloatEq(0.1f), FloatEq(0.2f), FloatEq(0.3f), FloatEq(0.4f), FloatEq(0.5f),
                            FloatEq(0.6f), FloatEq(0.7f), FloatEq(0.8f), FloatEq(0.9f)));
    EXPECT_EQ(Run(Cleaning()).progress.size(), 9u); // a second run starts over
}

TEST_F(BatchOperation, ProgressIsComparedInSinglePrecision)
{
    for (unsigned i = 0; i < 60; ++i) { // 3/60 is a hair above 0.05 in single precision's eyes or not at all
        MakeDocument(i, true);
    }
    std::vector<float> expected;
    float last = 0;
    for (int k = 0; k < 60; ++k) {
        const float p = static_cast<float>(k) / 60.0f;
        if (p - last > 0.05f) {
            last = p;
            expected.push_back(p);
        }
    }
    EXPECT_EQ(Run(Cleaning()).progress, expected);
}

TEST_F(BatchOperation, CleaningWithoutItsFolderOnlyCompletes)
{
    std::filesystem::remove_all(DatabaseFolder());
    const Heard heard = Run(Cleaning());
    EXPECT_EQ(heard.completions, 1);
    EXPECT_THAT(heard.progress, IsEmpty());
}

TEST_F(BatchOperation, AnAbortBeforeTheRunEndsItAfterOneFile)
{
    for (unsigned i = 0; i < 3; ++i) {
        MakeDocument(i, false);
    }
    EXPECT_EQ(Cleaning()->Abort(), 1); // nothing runs: returns at once, the request stays
    const Heard heard = Run(Cleaning());
    EXPECT_EQ(heard.completions, 1);
    int records = 0;
    for (const auto& file : std::filesystem::directory_iterator(DatabaseFolder())) {
        records += file.path().extension() == ".mcdb";
    }
    EXPECT_EQ(records, 2);
    EXPECT_EQ(Run(Cleaning()).completions, 1); // and is used up
    EXPECT_TRUE(std::filesystem::is_empty(DatabaseFolder()));
}

TEST_F(BatchOperation, AnAbortWaitsUntilTheRunIsOver)
{
    for (unsigned i = 0; i < 3; ++i) {
        MakeDocument(i, false);
    }
    Cleaning()->Start();
    std::atomic<int> answer{0};
    std::thread user([&] { answer = Cleaning()->Abort(); });
    while (mExecutor->HeldCount() != 0) {
        EXPECT_EQ(answer, 0);
        mExecutor->RunAll();
    }
    user.join();
    EXPECT_EQ(answer, 1);
}

TEST_F(BatchOperation, ADamagedRecordEndsTheRunWithoutCompletion)
{
    const Guid document = MakeDocument(1, true);
    std::string bad = support::ReadFile(RecordFile(document));
    bad.replace(bad.find("UInt32 Key=\"Stream.Count\""), 6, "Int32 ");
    support::WriteFile(RecordFile(document), bad);
    EXPECT_GE(Cleaning()->Start(), 0);
    const support::TraceRecorder trace("Host");
    EXPECT_THROW(mExecutor->RunAll(), BE::exSerializeableTypeMismatch); // a real executor reports it
    EXPECT_EQ(trace.CountContaining("kiocore::messaging::PostMessageToUIThread"), 0);
    EXPECT_EQ(Cleaning()->Abort(), 1); // finished all the same
}

TEST_F(BatchOperation, ARunThatCannotKeepItsObjectDoesNotBegin)
{
    TR::MediaAcceleratorDatabase onTheStack;
    EXPECT_THROW(onTheStack.Start(), kiocore::null_reference_exception);
    EXPECT_EQ(mExecutor->HeldCount(), 0u);
    EXPECT_EQ(onTheStack.Abort(), 1); // nothing runs: returns at once
}

TEST_F(BatchOperation, DescriptionsComeFromTheLocaliser)
{
    EXPECT_EQ(Cleaning()->GetDescription(), u"Cleaning Media Cache Database...");
    EXPECT_EQ(DeleteAll()->GetDescription(), u"Cleaning Media Cache Database...");
}

TEST_F(BatchOperation, DeleteAllTakesCacheFilesOfEachFolderAndNothingElse)
{
    const auto& at = mFolder;
    const char* const kGone[] = {"Media Cache/a.mcdb",
                                 "Media Cache/sub/b.MCDB",
                                 "Media Cache Files/a.ims",
                                 "Media Cache Files/a.mcvideoindex",
                                 "Media Cache Files/a.mcaudioindex",
                                 "Media Cache Files/a.mpgindex",
                                 "Media Cache Files/a.mxfindex",
                                 "Media Cache Files/a.mxfassoc",
                                 "Media Cache Files/a.prqdc2",
                                 "Media Cache Files/a.ccxml",
                                 "Media Cache Files/a.ccjson",
                                 "Media Cache Files/deep/er/a.CFA",
                                 "Shared/Media Cache Files/a.cfa",
                                 "Metadata Cache/a.mfdc",
                                 "Metadata Cache 2/a.mfdc",
                                 "Peak Files/x/y/a.pek",
                                 "Peak Files/a.cfa",
                                 "Shared/Peak Files/z/a.pek"};
    const char* const kCanaries[] = {"Media Cache/a.cfa",
                                     "Media Cache/notes.txt",
                                     "Media Cache Files/a.pek",
                                     "Media Cache Files/a.mcdb",
                                     "Media Cache Files/cfa",
                                     "Media Cache Files/a.cfa.bak",
                                     "Shared/a.cfa",
                                     "Shared/Media Cache Files/project.prj",
                                     "Metadata Cache/a.cfa",
                                     "Peak Files/x/keep.txt",
                                     "a.mcdb",
                                     "a.cfa",
                                     "outside/a.cfa"};
    for (const char* name : kGone) {
        WriteFile(at / name, "gone");
    }
    for (const char* name : kCanaries) {
        WriteFile(at / name, "canary");
    }
    std::filesystem::create_symlink(at / "outside", at / "Media Cache Files/linked folder");
    std::filesystem::create_symlink(at / "outside/a.cfa", at / "Media Cache Files/linked.cfa");
    std::filesystem::create_directories(at / "Peak Files/empty/chain/of/folders");
    auto expected = support::Listing(at.Path());
    for (const char* name : kGone) {
        expected.erase((at / name).string());
    }

    const Heard heard = Run(DeleteAll());

    EXPECT_EQ(heard.completions, 1);
    EXPECT_EQ(support::Listing(at.Path()), expected);
    EXPECT_FALSE(std::filesystem::exists(at / "Peak Files/empty"));
    EXPECT_FALSE(std::filesystem::exists(at / "Peak Files/x/y"));
    EXPECT_TRUE(std::filesystem::exists(at / "Peak Files/x"));
    EXPECT_TRUE(std::filesystem::is_directory(at / "Peak Files"));
    EXPECT_TRUE(
        std::filesystem::is_directory(at / "Media Cache Files/deep/er")); // only peak folders are removed
    EXPECT_TRUE(std::is_sorted(heard.progress.begin(), heard.progress.end()));
    EXPECT_LE(heard.progress.back(), 1.0f);
}

TEST_F(BatchOperation, DeleteAllWipesAFolderUnderTwoNamesOnce)
{
    // The preferences' folders, written in another way: the shared ones.
    ZOL::DirectoryRegistry::RegisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments,
                                              mFolder.UTF16() + u"/./");
    for (int i = 0; i < 2; ++i) {
        WriteFile(mFolder / ("Media Cache Files/" + std::to_string(i) + ".cfa"), "x");
        WriteFile(mFolder / ("Metadata Cache/" + std::to_string(i) + ".mfdc"), "x");
    }
    // Halves of phases 1 and 2: with the second cache folder skipped, metadata moves up.
    EXPECT_THAT(Run(DeleteAll()).progress, ElementsAre(FloatEq(1.5f / 7), FloatEq(2.5f / 7)));
}

TEST_F(BatchOperation, AnAbortEndsOneFolderOnly)
{
    for (int i = 0; i < 3; ++i) {
        WriteFile(mFolder / ("Media Cache/" + std::to_string(i) + ".mcdb"), "x");
        WriteFile(mFolder / ("Media Cache Files/" + std::to_string(i) + ".cfa"), "x");
        WriteFile(mFolder / ("Peak Files/" + std::to_string(i) + ".pek"), "x");
    }
    const auto operation = DeleteAll();
    operation->Abort();
    EXPECT_EQ(Run(operation).completions, 1);
    EXPECT_EQ(support::Listing(mFolder / "Media Cache").size(), 2u);
    EXPECT_TRUE(std::filesystem::is_empty(mFolder / "Media Cache Files"));
    EXPECT_TRUE(std::filesystem::is_empty(mFolder / "Peak Files"));
}

TEST_F(BatchOperation, DeleteAllAsksForOpenFilesToBeClosed)
{
    const UTF16String file = WriteFile(mFolder / "Media Cache Files/open.cfa", "x");
    bool closed = false;
    const MF::FileManager::ScOpenFile open(file, [&] { return closed = true; });
    Run(DeleteAll());
    EXPECT_TRUE(closed);
    EXPECT_FALSE(std::filesystem::exists(mFolder / "Media Cache Files/open.cfa"));
}

TEST_F(BatchOperation, NoFolderNamedMeansNothingDeleted)
{
    // A host that registered no shared documents must not have the file system's root searched.
    ZOL::DirectoryRegistry::UnregisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments);
    WriteFile(mFolder / "Shared/Media Cache Files/a.cfa", "canary");
    EXPECT_EQ(Run(DeleteAll()).completions, 1);
    EXPECT_TRUE(std::filesystem::exists(mFolder / "Shared/Media Cache Files/a.cfa"));
}

} // namespace
