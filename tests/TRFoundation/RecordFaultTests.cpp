#include "support/FaultyFileCalls.h"
#include "support/MediaCacheFixture.h"

#include <BE/Backend.h>
#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <random>
#include <thread>

namespace {

using kiocore::Guid;
using kiocore::UTF16String;
using support::NumberedGuid;

const Guid kState = NumberedGuid(100);
const Guid kDocument = NumberedGuid(1);

class RecordFaults : public support::MediaCacheFixture {
protected:
    /// Reads a damaged record: any answer is fine but a path that was never recorded.
    void ReadDamaged(const std::string& inBytes, const UTF16String& inFile)
    {
        support::WriteFile(RecordFile(kDocument), inBytes);
        ForgetMemory();
        UTF16String path;
        try {
            if (mDatabase->Find(kDocument, kState, 0, u"k", path) == 0) {
                EXPECT_EQ(path.substr(0, mFolder.UTF16().size()), inFile.substr(0, mFolder.UTF16().size()));
            }
        } catch (const kiocore::kio_exception& error) {
            EXPECT_STRNE(error.what(), "");
        }
    }
};

TEST_F(RecordFaults, ARecordCutOffAnywhereIsSurvived)
{
    const UTF16String file = MakeCacheFile("a.cfa");
    AddItem(kDocument, kState, 0, u"k", file);
    const std::string record = support::ReadFile(RecordFile(kDocument));
    for (std::size_t length = 0; length < record.size(); ++length) {
        SCOPED_TRACE(length);
        ReadDamaged(record.substr(0, length), file);
    }
}

TEST_F(RecordFaults, FlippedBitsAreSurvived)
{
    const UTF16String file = MakeCacheFile("a.cfa");
    AddItem(kDocument, kState, 0, u"k", file);
    const std::string record = support::ReadFile(RecordFile(kDocument));
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        std::string damaged = record;
        damaged[random() % damaged.size()] ^= static_cast<char>(1u << random() % 8);
        SCOPED_TRACE(i);
        ReadDamaged(damaged, file);
    }
}

TEST_F(RecordFaults, EachFailingStepOfASaveKeepsTheOldRecord)
{
    BE::GetBackend()->GetPreferences()->SetDurability(kiocore::filesupport::Durability::kFile);
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    const UTF16String second = MakeCacheFile("b.cfa");
    const std::string before = support::ReadFile(RecordFile(kDocument));
    for (const int error : {ENOSPC, EIO, EACCES, EROFS}) {
        int failures = 0;
        for (int call = 1;; ++call) {
            SCOPED_TRACE(std::string("call ") + std::to_string(call) + " fails with " +
                         std::to_string(error));
            int result = 0;
            std::size_t callsMade = 0;
            {
                support::FaultyFileCalls calls;
                calls.FailCall(call, error);
                result = AddItem(kDocument, kState, 1, u"k", second);
                callsMade = calls.Names().size();
            }
            if (result >= 0) { // past the last call, or one that does not matter
                EXPECT_NE(support::ReadFile(RecordFile(kDocument)), before);
                support::WriteFile(RecordFile(kDocument), before);
            }
            EXPECT_EQ(support::ReadFile(RecordFile(kDocument)), before);
            EXPECT_EQ(support::Listing(DatabaseFolder()).size(), 1u) << "a temporary file stays";
            ForgetMemory();
            if (callsMade < static_cast<std::size_t>(call)) {
                EXPECT_EQ(result, 0);
                EXPECT_GT(call, 5) << "a save takes more calls than that";
                break;
            }
            failures += result < 0;
        }
        EXPECT_GE(failures, 4);
    }
}

TEST_F(RecordFaults, AnEntryThatCouldNotBeSavedIsAnsweredFromMemory)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(0);
    const UTF16String second = MakeCacheFile("b.cfa");
    {
        support::FaultyFileCalls calls;
        calls.FailCall(1, ENOSPC);
        EXPECT_LT(AddItem(kDocument, kState, 1, u"k", second), 0);
    }
    UTF16String path;
    EXPECT_EQ(mDatabase->Find(kDocument, kState, 1, u"k", path), 0);
    EXPECT_EQ(AddItem(kDocument, kState, 2, u"k", second), 0); // and is saved with the next one
    ForgetMemory();
    EXPECT_EQ(mDatabase->Find(kDocument, kState, 1, u"k", path), 0);
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(64 << 20);
}

TEST_F(RecordFaults, OperationsOfAllKindsMayOverlap)
{
    BE::GetBackend()->GetPreferences()->SetDurability(kiocore::filesupport::Durability::kNone);
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(4000); // a few records: eviction takes part
    const UTF16String file = MakeCacheFile("a.cfa");
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(t);
            for (int i = 0; i < 150; ++i) {
                const Guid document = NumberedGuid(random() % 6);
                UTF16String path;
                switch (random() % 6) {
                case 0:
                case 1:
                    failures += mDatabase->Add(document, kState, u"/m", random() % 5ul, u"k", file, true) < 0;
                    break;
                case 2:
                    mDatabase->Invalidate(document, kState, random() % 5);
                    break;
                case 3:
                    mDatabase->FindUpToDate(document, kState, random() % 5ul, u"k", path);
                    break;
                case 4:
                    if (const auto entry = TR::MediaAcceleratorDatabase::ReadEntry(document, kState)) {
                        entry->AddItem(99u, {u"/mine", {}, u"mine", false}, true);
                    }
                    break;
                default:
                    mDatabase->Find(document, kState, random() % 5ul, u"k", path);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(64 << 20);
}

} // namespace
