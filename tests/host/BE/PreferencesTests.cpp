#include "Documents.h"

#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace BE::test {
namespace {

using kiocore::filesupport::Durability;

const ImmutableString kKey("BE.Test.Key");

class PreferencesTest : public ::testing::Test {
protected:
    // Preferences are the process's: each test begins and ends with none.
    void SetUp() override { Reset(); }
    void TearDown() override { Reset(); }
    void Reset()
    {
        ASSERT_EQ(mPreferences->Load(mFolder.UTF16("no such file")), 0);
        std::filesystem::remove(mFolder / "no such file");
    }

    UTF16String Folder(int (IPreferences::*inGetter)(UTF16String&) const) const
    {
        UTF16String folder = u"none";
        const int result = (mPreferences.Get()->*inGetter)(folder);
        EXPECT_EQ(result < 0, folder == u"none");
        return folder;
    }

    support::TemporaryFolder mFolder;
    const InterfaceRef<IPreferences> mPreferences = GetBackend()->GetPreferences();
    const InterfaceRef<IProperties> mProperties = GetBackend()->GetProperties();
};

// The defaults below a root stay for the process's life, so one test sees them come.
TEST_F(PreferencesTest, FoldersAreTheUsersOrBelowTheRootOrNone)
{
    EXPECT_EQ(Folder(&IPreferences::GetMediaCacheDatabaseFolder), u"none");
    EXPECT_EQ(Folder(&IPreferences::GetDocumentLockFile), u"none");
    mPreferences->SetFirstMetadataCacheFolder(u"/mine/");
    mPreferences->SetDefaultsBelow(u"/root");
    EXPECT_EQ(Folder(&IPreferences::GetMediaCacheDatabaseFolder), u"/root/Media Cache");
    EXPECT_EQ(Folder(&IPreferences::GetMediaCacheFilesFolder), u"/root/Media Cache Files");
    EXPECT_EQ(Folder(&IPreferences::GetFirstMetadataCacheFolder), u"/mine/");
    EXPECT_EQ(Folder(&IPreferences::GetSecondMetadataCacheFolder), u"/root/Metadata Cache 2");
    EXPECT_EQ(Folder(&IPreferences::GetPeakFilesFolder), u"/root");
    EXPECT_EQ(Folder(&IPreferences::GetDocumentLockFile), u"/root/Locks/documents.lock");
    mPreferences->SetFirstMetadataCacheFolder(u"");
    EXPECT_EQ(Folder(&IPreferences::GetFirstMetadataCacheFolder), u"/root/Metadata Cache");
}

TEST_F(PreferencesTest, EveryChangeIsCountedAndNothingElse)
{
    const auto changes = [&](const auto& inCall) {
        const std::uint32_t before = GetPreferencesChangeCount();
        inCall();
        return GetPreferencesChangeCount() != before;
    };
    EXPECT_TRUE(changes([&] { mPreferences->SetPeakFilesFolder(u"/peaks"); }));
    EXPECT_FALSE(changes([&] { mPreferences->SetPeakFilesFolder(u"/peaks"); }));
    EXPECT_TRUE(changes([&] { mPreferences->SetDurability(Durability::kFull); }));
    EXPECT_FALSE(changes([&] { mPreferences->SetDurability(Durability::kFull); }));
    EXPECT_TRUE(changes([&] { mPreferences->SetRecordMemoryBudget(5); }));
    EXPECT_TRUE(changes([&] { mProperties->SetBool(kKey, true); }));
    EXPECT_FALSE(changes([&] { mProperties->SetBool(kKey, true); }));
    EXPECT_TRUE(changes([&] { mProperties->SetText(kKey, u"true"); }));
    EXPECT_TRUE(changes([&] { mProperties->Remove(kKey); }));
    EXPECT_FALSE(changes([&] { mProperties->Remove(kKey); }));
    EXPECT_TRUE(changes([&] { Reset(); }));
}

TEST_F(PreferencesTest, PropertiesReadTheirDefaultUnlessSetAsThatType)
{
    EXPECT_FALSE(mProperties->GetBool(kPrefsMediaCacheFilesSideBySide, false));
    EXPECT_TRUE(mProperties->GetBool(kKey, true));
    mProperties->SetBool(kKey, false);
    EXPECT_FALSE(mProperties->GetBool(kKey, true));
    EXPECT_EQ(mProperties->GetText(kKey, u"default"), u"default");
    mProperties->SetText(kKey, u"text");
    EXPECT_EQ(mProperties->GetText(kKey, u"default"), u"text");
    EXPECT_TRUE(mProperties->GetBool(kKey, true));
    mProperties->Remove(kKey);
    EXPECT_EQ(mProperties->GetText(kKey, u"default"), u"default");
}

TEST_F(PreferencesTest, ValuesTellWhetherTheyAreSet)
{
    SerializeableValue<bool> value(true);
    std::string text = "untouched";
    EXPECT_LT(mPreferences->GetValue(kKey, value), 0);
    EXPECT_LT(mProperties->GetValue(kKey, text), 0);
    mProperties->SetBool(kKey, false);
    EXPECT_EQ(mPreferences->GetValue(kKey, value), 0);
    EXPECT_FALSE(value.Get());
    EXPECT_LT(mProperties->GetValue(kKey, text), 0);
    EXPECT_EQ(text, "untouched");
    value.Set(true);
    mProperties->SetText(kKey, u"/\u4E2D\xDCFF");
    EXPECT_LT(mPreferences->GetValue(kKey, value), 0);
    EXPECT_TRUE(value.Get());
    EXPECT_EQ(mProperties->GetValue(kKey, text), 0);
    EXPECT_EQ(text, "/\xE4\xB8\xAD\xFF");
}

TEST_F(PreferencesTest, AnotherBackEndStandsInForAsLongAsItLives)
{
    const auto usual = GetBackend();
    const std::uint32_t before = GetPreferencesChangeCount();
    {
        const ScReplaceBackend none({});
        EXPECT_FALSE(GetBackend());
        {
            const ScReplaceBackend again(usual);
            EXPECT_EQ(GetBackend(), usual);
        }
        EXPECT_FALSE(GetBackend());
        EXPECT_NE(GetPreferencesChangeCount(), before);
    }
    EXPECT_EQ(GetBackend(), usual);
}

TEST_F(PreferencesTest, SavedAndLoadedWithWhatThisBuildDoesNotKnow)
{
    EXPECT_EQ(mPreferences->GetDurability(), Durability::kFile);
    EXPECT_EQ(mPreferences->GetRecordMemoryBudget(), 64u << 20);
    const UTF16String file = support::WriteFile(
        mFolder / "preferences.xml",
        Document("<Object Key='Preferences' ClassID='13862418-65b1-4d0c-8f8b-06eea96c4610' Version='1'>"
                 "<Double Key='Zoom' Value='0.25'/><String Key='PeakFilesFolder' Value='/peaks'/></Object>"
                 "<Object Key='Properties' ClassID='4f531209-bb41-447d-b559-8ba03d7ebc93' Version='1'>"
                 "<Int64 Key='Later' Value='-5'/><Bool Key='BE.Test.Key' Value='true'/></Object>"));
    ASSERT_EQ(mPreferences->Load(file), 0);
    EXPECT_EQ(Folder(&IPreferences::GetPeakFilesFolder), u"/peaks");
    EXPECT_TRUE(mProperties->GetBool(kKey, false));
    mPreferences->SetMediaCacheDatabaseFolder(u"/odd \\ & \u4E2D \xDC80");
    mPreferences->SetDurability(Durability::kNone);
    mPreferences->SetRecordMemoryBudget(UINT64_MAX);
    mProperties->SetText("text", UTF16String(u"line\nline"));
    mProperties->Remove(kKey);
    ASSERT_EQ(mPreferences->Save(), 0);

    const std::string saved = support::ReadFile(mFolder / "preferences.xml");
    EXPECT_THAT(saved, ::testing::HasSubstr("<Double Key=\"Zoom\" Value=\"0.25\"/>"));
    EXPECT_THAT(saved, ::testing::HasSubstr("<Int64 Key=\"Later\" Value=\"-5\"/>"));
    Reset();
    EXPECT_EQ(mPreferences->GetDurability(), Durability::kFile);
    ASSERT_EQ(mPreferences->Load(file), 0);
    EXPECT_EQ(Folder(&IPreferences::GetMediaCacheDatabaseFolder), u"/odd \\ & \u4E2D \xDC80");
    EXPECT_EQ(Folder(&IPreferences::GetPeakFilesFolder), u"/peaks");
    EXPECT_EQ(mPreferences->GetDurability(), Durability::kNone);
    EXPECT_EQ(mPreferences->GetRecordMemoryBudget(), UINT64_MAX);
    EXPECT_EQ(mProperties->GetText("text", u""), u"line\nline");
    EXPECT_FALSE(mProperties->GetBool(kKey, false));
    ASSERT_EQ(mPreferences->Save(), 0);
    EXPECT_EQ(support::ReadFile(mFolder / "preferences.xml"), saved);
}

TEST_F(PreferencesTest, AFileThatCannotBeKeptWholeIsNeitherLoadedNorOverwritten)
{
    const std::string start =
        "<Object Key='Preferences' ClassID='13862418-65b1-4d0c-8f8b-06eea96c4610' Version='1'>";
    const struct {
        const char* name;
        std::string bytes;
    } kCases[] = {
        {"damaged", "<BackEndDocument Version='1'>"},
        {"empty", ""},
        {"of a later dialect", "<BackEndDocument Version='2'/>"},
        {"of a later version",
         Document("<Object Key='Preferences' ClassID='13862418-65b1-4d0c-8f8b-06eea96c4610' Version='2'/>")},
        {"a value of another type", Document(start + "<Bool Key='PeakFilesFolder' Value='true'/></Object>")},
        {"an unknown durability", Document(start + "<String Key='Durability' Value='some'/></Object>")},
        {"no number", Document(start + "<UInt64 Key='RecordMemoryBudget' Value='1k'/></Object>")},
        {"a map", Document(start + "<Map Key='Later'/></Object>")},
        {"a text that is none", Document(start + "<String Key='Later' Value='\\'/></Object>")},
    };
    mProperties->SetBool(kKey, true);
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const UTF16String file = support::WriteFile(mFolder / "preferences.xml", test.bytes);
        const std::uint32_t count = GetPreferencesChangeCount();
        EXPECT_LT(mPreferences->Load(file), 0);
        EXPECT_EQ(GetPreferencesChangeCount(), count);
        EXPECT_TRUE(mProperties->GetBool(kKey, false));
        EXPECT_LT(mPreferences->Save(), 0);
        EXPECT_EQ(support::ReadFile(mFolder / "preferences.xml"), test.bytes);
    }
}

TEST_F(PreferencesTest, ReadWhileTheyChange)
{
    mPreferences->SetPeakFilesFolder(UTF16String(100, u'0'));
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            mPreferences->SetPeakFilesFolder(UTF16String(100, static_cast<char16_t>(u'0' + i % 10)));
            mProperties->SetText(kKey, UTF16String(100, static_cast<char16_t>(u'0' + i % 10)));
        }
    });
    for (int i = 0; i < 2000; ++i) {
        UTF16String folder;
        EXPECT_EQ(mPreferences->GetPeakFilesFolder(folder), 0);
        EXPECT_EQ(folder, UTF16String(100, folder.front()));
        const UTF16String text = mProperties->GetText(kKey, u"0");
        EXPECT_EQ(text, UTF16String(text.size(), text.front()));
    }
    writer.join();
}

TEST_F(PreferencesTest, CallsAreTraced)
{
    support::TraceRecorder trace("Host");
    BE::Initialize();
    UTF16String folder;
    mPreferences->GetMediaCacheFilesFolder(folder);
    mProperties->GetBool(kPrefsMediaCacheFilesSideBySide, false);
    BE::Shutdown();
    EXPECT_THAT(trace.Order({"BE::"}).size(), 4u);
    EXPECT_THAT(trace.Lines(),
                ::testing::IsSupersetOf({"BE::Initialize()", "BE::IPreferences::GetMediaCacheFilesFolder()",
                                         "BE::IProperties::GetBool(\"BE.Prefs.MediaCacheFilesSideBySide\")",
                                         "BE::Shutdown()"}));
}

} // namespace
} // namespace BE::test
