#include "support/MediaCacheFixture.h"
#include "support/TraceRecorder.h"

#include <TR/TRFoundation.h>

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;
using support::NumberedGuid;
using testing::ElementsAre;
using TR::MediaAcceleratorDatabase;

const Guid kState = NumberedGuid(100);
const Guid kOtherState = NumberedGuid(101);
const Guid kDocument = NumberedGuid(1);

class Database : public support::MediaCacheFixture {
protected:
    int Find(const Guid& inDocument, unsigned long inStream = 0, const UTF16String& inKey = u"k")
    {
        UTF16String path;
        return mDatabase->Find(inDocument, kState, inStream, inKey, path);
    }
};

TEST_F(Database, KeepsARecordUnderTheVersionsTag)
{
    const UTF16String file = MakeCacheFile("a.cfa");
    ASSERT_EQ(AddItem(kDocument, kState, 0, u"k", file), 0);
    EXPECT_TRUE(std::filesystem::exists(RecordFile(kDocument, "3584")));
    for (const bool fromMemory : {true, false}) {
        SCOPED_TRACE(fromMemory);
        if (!fromMemory) {
            ForgetMemory();
        }
        UTF16String path;
        EXPECT_EQ(mDatabase->Find(kDocument, kState, u"0", u"k", path), 0);
        EXPECT_EQ(path, file);
        EXPECT_EQ(mDatabase->Find(kDocument, kState, 1, u"k", path), -1);
        EXPECT_EQ(mDatabase->Find(NumberedGuid(2), kState, 0, u"k", path), -1);
        // The content state matters to one of the two only.
        EXPECT_EQ(mDatabase->Find(kDocument, kOtherState, 0, u"k", path), 0);
        EXPECT_EQ(mDatabase->FindUpToDate(kDocument, kState, 0, u"k", path), 0);
        EXPECT_EQ(mDatabase->FindUpToDate(kDocument, kOtherState, 0, u"k", path), -1);
        EXPECT_EQ(path, file);
    }
}

TEST_F(Database, LooksForOlderTagsNewestFirst)
{
    EXPECT_THAT(MediaAcceleratorDatabase::GetVersionTags(),
                ElementsAre(3584, 3408, 3328, 3152, 3072, 2896, 2816, 2640, 2560, 2384, 2304, 2128, 2048,
                            1872, 1792, 1616, 1536));
    const struct {
        const char* name;
        const char* suffix;
        int expected;
    } kCases[] = {
        {"13.5", "3408", 0}, {"6.0", "1536", 0},  {"5.5", "1360", -1},
        {"5.0", "1280", -1}, {"untagged", "", 0}, {"a newer version", "3840", -1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
        std::filesystem::rename(RecordFile(kDocument), RecordFile(kDocument, test.suffix));
        EXPECT_EQ(Find(kDocument), test.expected);
        std::filesystem::remove(RecordFile(kDocument, test.suffix));
    }
}

TEST_F(Database, TheTagFollowsTheSuiteVersion)
{
    const struct {
        const char16_t* version;
        std::vector<int> expectedFirst;
    } kCases[] = {{u"15.2.1", {3840, 3664, 3584}}, {u"6.0", {1536}}, {u"5", {1280}}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(kiocore::utility::ToUTF8(test.version));
        kiocore::config::SetSuiteClientVersion(test.version);
        auto tags = MediaAcceleratorDatabase::GetVersionTags();
        ASSERT_GE(tags.size(), test.expectedFirst.size());
        tags.resize(test.expectedFirst.size());
        EXPECT_EQ(tags, test.expectedFirst);
    }
}

TEST_F(Database, AFileThatDoesNotOpenLeavesTheSearchToOlderOnes)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    std::filesystem::rename(RecordFile(kDocument), RecordFile(kDocument, "3408"));
    support::WriteFile(RecordFile(kDocument), "<truncated");
    EXPECT_EQ(Find(kDocument), 0);
    support::WriteFile(RecordFile(kDocument),
                       "<BackEndDocument Version=\"1\"></BackEndDocument>"); // well formed, no entry
    EXPECT_EQ(Find(kDocument), 0);
}

TEST_F(Database, ADamagedRecordThrowsAndLeavesNothingBehind)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    const std::string good = support::ReadFile(RecordFile(kDocument));
    std::string bad = good;
    bad.replace(bad.find("UInt32 Key=\"Stream.Count\""), 6, "Int32 ");
    ForgetMemory();
    support::WriteFile(RecordFile(kDocument), bad);
    UTF16String path = u"before";
    EXPECT_THROW(mDatabase->Find(kDocument, kState, 0, u"k", path), BE::exSerializeableTypeMismatch);
    EXPECT_THROW(AddItem(kDocument, kState, 0, u"k", MakeCacheFile("b.cfa")),
                 BE::exSerializeableTypeMismatch);
    EXPECT_EQ(path, u"before");
    EXPECT_EQ(support::ReadFile(RecordFile(kDocument)), bad);
    // No lock stayed held and nothing was cached.
    support::WriteFile(RecordFile(kDocument), good);
    EXPECT_EQ(AddItem(kDocument, kState, 1, u"k", MakeCacheFile("c.cfa")), 0);
    EXPECT_EQ(Find(kDocument, 1), 0);
}

TEST_F(Database, AddToAnOutdatedEntryStartsAfreshAndDeletesNothing)
{
    const UTF16String oldFile = MakeCacheFile("old.cfa");
    AddItem(kDocument, kState, 0, u"old", oldFile);
    AddItem(kDocument, kOtherState, 0, u"new", MakeCacheFile("new.cfa"));
    const auto entry = MediaAcceleratorDatabase::ReadEntry(kDocument, kOtherState);
    EXPECT_EQ(entry->GetItemCount(), 1u);
    EXPECT_TRUE(entry->IsUpToDate());
    EXPECT_TRUE(std::filesystem::exists(CacheFolder() / "old.cfa"));
}

TEST_F(Database, WhatACallerDoesToItsEntryShowsNowhereElse)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    for (const bool fromMemory : {true, false}) {
        SCOPED_TRACE(fromMemory);
        if (!fromMemory) {
            ForgetMemory();
        }
        const auto mine = MediaAcceleratorDatabase::ReadEntry(kDocument, kState);
        mine->AddItem(5u, {u"/mine", {}, u"mine", true}, true);
        mine->SetOriginal(u"/elsewhere");
        mine->Invalidate(0);
        const auto other = MediaAcceleratorDatabase::ReadEntry(kDocument, kState);
        EXPECT_EQ(other->GetItemCount(), 1u);
        EXPECT_TRUE(other->IsUpToDate());
        EXPECT_NE(other->GetOriginal(), u"/elsewhere");
        UTF16String path;
        EXPECT_EQ(mDatabase->FindUpToDate(kDocument, kOtherState, 0, u"k", path), -1);
        EXPECT_EQ(mDatabase->FindUpToDate(kDocument, kState, 0, u"k", path), 0);
    }
}

TEST_F(Database, ARecordRewrittenElsewhereIsReadAgain)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    const std::string before = support::ReadFile(RecordFile(kDocument));
    AddItem(kDocument, kState, 1, u"k", MakeCacheFile("b.cfa"));
    EXPECT_EQ(Find(kDocument, 1), 0);
    support::WriteFile(RecordFile(kDocument), before); // what another process would do, in place
    EXPECT_EQ(Find(kDocument, 1), -1);
    EXPECT_EQ(Find(kDocument, 0), 0);
    std::filesystem::remove(RecordFile(kDocument));
    EXPECT_EQ(Find(kDocument, 0), -1);
}

TEST_F(Database, AFailedSaveIsAnswered)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    const std::string before = support::ReadFile(RecordFile(kDocument));
    // A folder in the record's place makes every save fail, for root too.
    const Guid document = NumberedGuid(7);
    std::filesystem::create_directories(RecordFile(document) / "x");
    EXPECT_LT(AddItem(document, kState, 0, u"k", MakeCacheFile("b.cfa")), 0);
    for (const auto& file : std::filesystem::directory_iterator(DatabaseFolder())) {
        EXPECT_EQ(file.path().string().find(".kiotmp"), std::string::npos) << file.path();
    }
    EXPECT_EQ(support::ReadFile(RecordFile(kDocument)), before);
}

TEST_F(Database, MemoryStaysWithinItsBudgetButKeepsWhatIsNotOnDisk)
{
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(0);
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    const auto opened = [&](const Guid& document) {
        const support::TraceRecorder trace("Host");
        Find(document);
        return trace.CountContaining("BE::IXMLFileReader::Open");
    };
    EXPECT_EQ(opened(kDocument), 1); // nothing is kept
    mDatabase->Invalidate(kDocument, kState, 0);
    EXPECT_EQ(opened(kDocument), 0); // its streams are in memory only
    BE::GetBackend()->GetPreferences()->SetRecordMemoryBudget(64 << 20);
    const Guid document = NumberedGuid(3);
    AddItem(document, kState, 0, u"k", MakeCacheFile("b.cfa"));
    EXPECT_EQ(opened(document), 0);
}

TEST_F(Database, InvalidateKeepsFindButNotFindUpToDate)
{
    AddItem(kDocument, kState, 0, u"k", MakeCacheFile("a.cfa"));
    mDatabase->Invalidate(kDocument, kState, 9);
    UTF16String path;
    EXPECT_EQ(mDatabase->FindUpToDate(kDocument, kState, 0, u"k", path), 0);
    mDatabase->Invalidate(kDocument, kState, 0);
    EXPECT_EQ(mDatabase->Find(kDocument, kState, 0, u"k", path), 0);
    EXPECT_EQ(mDatabase->FindUpToDate(kDocument, kState, 0, u"k", path), -1);
    mDatabase->Invalidate(NumberedGuid(55), kState, 0); // unknown: nothing happens
    EXPECT_FALSE(std::filesystem::exists(RecordFile(NumberedGuid(55))));
}

struct CopyHandler final : TR::IMediaAcceleratorCopy, virtual kiocore::classref::UnknownBase {
    int MediaAcceleratorCopied(const UTF16String& inNewPath, Guid& ioDocument, Guid& ioState) override
    {
        paths.push_back(inNewPath);
        sawDocument = ioDocument;
        sawState = ioState;
        ioDocument = newDocument;
        ioState = newState;
        return -7; // not looked at
    }
    void* QueryMap(const CFUUIDBytes& inID) override { return UnknownBase::QueryMap(inID); }
    std::vector<UTF16String> paths;
    Guid sawDocument, sawState;
    Guid newDocument = NumberedGuid(70), newState = NumberedGuid(71);
};

TEST_F(Database, CopiesWhatAHandlerKnowsAndRecordsItUnderTheHandlersGuids)
{
    const auto handler = kiocore::classref::MakeObject<CopyHandler>();
    const auto second = kiocore::classref::MakeObject<CopyHandler>();
    MediaAcceleratorDatabase::RegisterAcceleratorHandler(u"k", handler);
    MediaAcceleratorDatabase::RegisterAcceleratorHandler(u"k", second); // ignored
    MediaAcceleratorDatabase::RegisterAcceleratorHandler(u"stays", second);
    AddItem(kDocument, kState, 4, u"k", MakeCacheFile("a.cfa", "the sound"));
    AddItem(kDocument, kState, 4, u"no handler", MakeCacheFile("b.cfa"));
    mDatabase->Add(kDocument, kState, u"/media/x.wav", 4ul, u"stays", MakeCacheFile("c.cfa"), false);
    AddItem(kDocument, kState, 5, u"k", u"/gone.cfa"); // cannot be copied: passed over

    mDatabase->Copy(kDocument, kState, u"", mFolder.UTF16("copies/deep"));

    const auto copy = mFolder / "copies/deep/a.cfa";
    EXPECT_THAT(handler->paths, ElementsAre(support::UTF16(copy)));
    EXPECT_TRUE(second->paths.empty());
    EXPECT_EQ(handler->sawDocument, kDocument);
    EXPECT_EQ(handler->sawState, kState);
    EXPECT_EQ(support::ReadFile(copy), "the sound");
    UTF16String path;
    EXPECT_EQ(mDatabase->FindUpToDate(handler->newDocument, handler->newState, 4, u"k", path), 0);
    EXPECT_EQ(path, support::UTF16(copy));
    EXPECT_EQ(MediaAcceleratorDatabase::ReadEntry(handler->newDocument, handler->newState)->GetOriginal(),
              mFolder.UTF16("copies/deep/") + kDocument.AsString() + u".wav");
    EXPECT_TRUE(std::filesystem::exists(CacheFolder() / "a.cfa"));
}

TEST_F(Database, CacheFilesGoBesideTheMediaOnlyWhereTheyCan)
{
    const UTF16String media = support::WriteFile(mFolder / "media/a.mov", "m");
    const struct {
        const char* name;
        bool sideBySide;
        UTF16String media;
        std::string expected;
    } kCases[] = {
        {"not wanted", false, media, CacheFolder().string()},
        {"wanted", true, media, (mFolder / "media").string() + "/"},
        {"media missing", true, mFolder.UTF16("media/b.mov"), CacheFolder().string()},
        {"folder read only", true, u"/proc/self/status", CacheFolder().string()},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        BE::GetBackend()->GetProperties()->SetBool(BE::kPrefsMediaCacheFilesSideBySide, test.sideBySide);
        UTF16String folder;
        EXPECT_EQ(TR::GetMediaAcceleratorDirectoryPath(test.media, folder), 0);
        EXPECT_EQ(kiocore::utility::ToUTF8(folder), test.expected);
    }
}

} // namespace
