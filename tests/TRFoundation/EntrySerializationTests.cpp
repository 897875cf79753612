#include "support/MediaCacheFixture.h"

#include <TR/TRFoundation.h>

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/filesupport/FileTime.h>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;
using kiocore::classref::ClassFactory;
using support::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;
using TR::MediaAcceleratorDatabaseEntry;
using TR::MediaAcceleratorItem;
using EntryRef = InterfaceRef<MediaAcceleratorDatabaseEntry>;

const Guid kState("11111111-2222-3333-4444-555555555555");

/// The form of an 8-byte file time in a record.
std::string HexTime(const std::filesystem::path& inPath)
{
    struct stat status {};
    stat(inPath.c_str(), &status);
    const kiocore::filesupport::FileTime time = kiocore::filesupport::ToFileTime(status.st_mtim);
    unsigned char bytes[8];
    std::memcpy(bytes, &time, 8);
    std::string hex;
    for (unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        hex += digits;
    }
    return hex;
}

std::string Document(int inVersion, const std::string& inValues)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<BackEndDocument Version=\"1\">\n"
           "<Object Key=\"MediaAcceleratorDatabaseEntry\" ClassID=\"e727e14d-731c-47f8-9d24-2cb69e8c5323\" "
           "ClassName=\"MediaAcceleratorDatabaseEntry\" Version=\"" +
           std::to_string(inVersion) + "\">\n" + inValues + "</Object>\n</BackEndDocument>\n";
}

class EntrySerialization : public support::MediaCacheFixture {
protected:
    static EntryRef Read(const std::string& inDocument)
    {
        const InterfaceRef<BE::IXMLFileReader> reader =
            ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
        EXPECT_GE(reader->OpenBytes(inDocument), 0) << reader->GetOpenError();
        InterfaceRef<BE::ISerializeable> object;
        EXPECT_TRUE(reader->GetDataReader().ReadObject("MediaAcceleratorDatabaseEntry", object));
        return object;
    }
    static std::string Written(const EntryRef& inEntry)
    {
        const InterfaceRef<BE::IXMLFileWriter> writer =
            ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID);
        writer->GetDataWriter().WriteObject("MediaAcceleratorDatabaseEntry", inEntry);
        return writer->GetBytes();
    }
    static std::vector<std::string> StoredKeys(const EntryRef& inEntry)
    {
        const InterfaceRef<BE::IXMLFileReader> reader =
            ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
        reader->OpenBytes(Written(inEntry));
        std::vector<std::string> keys;
        reader->VisitStored(
            "MediaAcceleratorDatabaseEntry",
            [&](std::string_view, std::string_view key, const UTF16String&) { keys.emplace_back(key); });
        return keys;
    }
    static std::vector<MediaAcceleratorItem> ItemsOf(const EntryRef& inEntry, const UTF16String& inStream)
    {
        std::vector<MediaAcceleratorItem> items;
        inEntry->GetItems(inStream, items);
        return items;
    }
};

struct KeySink final : BE::IDictionarySink {
    void Put(const BE::ImmutableString& inKey, const UTF16String&) override
    {
        keys.push_back(inKey.AsString());
    }
    void Put(const BE::ImmutableString& inKey, const MF::BinaryData&) override
    {
        keys.push_back(inKey.AsString());
    }
    void Put(const BE::ImmutableString& inKey, const BE::ISerializeableValue&) override
    {
        keys.push_back(inKey.AsString());
    }
    void PutMap(const BE::ImmutableString& inKey, const BE::ImmutableString&, const BE::ValueMap&) override
    {
        keys.push_back(inKey.AsString());
    }
    std::vector<std::string> keys;
};

TEST_F(EntrySerialization, WritesKeysInTheirOrderAndIndexBlocks)
{
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(0u, {MakeCacheFile("a.cfa"), {}, u"a", true}, true);
    entry->AddItem(1u, {MakeCacheFile("b.cfa"), {}, u"b", false}, true);
    const std::vector<std::string> expected = {
        "OriginalPath",     "OriginalMacPath", "OriginalWinPath",  "Item.ContentState",
        "Stream.Count",     "Stream.ID.1",     "Item.Path.1",      "Item.MacPath.1",
        "Item.WinPath.1",   "Item.Key.1",      "Item.ModDate.1",   "Item.CanBeCopied.1",
        "Item.Count.1",     "Stream.ID.2",     "Item.Path.257",    "Item.MacPath.257",
        "Item.WinPath.257", "Item.Key.257",    "Item.ModDate.257", "Item.CanBeCopied.257",
        "Item.Count.2"};
    EXPECT_EQ(StoredKeys(entry), expected);
    KeySink sink;
    entry->SerializeToSink(sink);
    EXPECT_EQ(sink.keys, expected);
    EXPECT_EQ(Written(entry), Written(entry)); // nothing changed in between
}

TEST_F(EntrySerialization, AnInvalidatedUnmodifiedEntryKeepsFourValuesOnly)
{
    const Guid document = support::NumberedGuid(1);
    AddItem(document, kState, 0, u"k", MakeCacheFile("a.cfa"));
    ForgetMemory();
    mDatabase->Invalidate(document, kState, 0);
    ForgetMemory();
    const EntryRef entry = TR::MediaAcceleratorDatabase::ReadEntry(document, kState);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->GetStreamCount(), 0u);
    EXPECT_EQ(StoredKeys(entry).size(), 5u); // up to date again: a count of no streams is written
    const std::string record = support::ReadFile(RecordFile(document));
    EXPECT_EQ(record.find("Stream.Count"), std::string::npos) << record;
}

TEST_F(EntrySerialization, ReadsEveryVersion)
{
    const auto file = CacheFolder() / "a.cfa";
    const UTF16String path = MakeCacheFile("a.cfa");
    const std::string pathText = file.string();
    const std::string common =
        "<UInt32 Key=\"Stream.Count\" Value=\"1\"/><String Key=\"Stream.ID.1\" Value=\"7\"/>"
        "<String Key=\"Item.Key.1\" Value=\"k\"/><Binary Key=\"Item.ModDate.1\" Value=\"" +
        HexTime(file) +
        "\"/><Bool Key=\"Item.CanBeCopied.1\" Value=\"true\"/><UInt32 Key=\"Item.Count.1\" Value=\"1\"/>";
    const std::string oldPaths =
        "<String Key=\"OriginalPath\" Value=\"/old\"/><String Key=\"OriginalMacPath\" Value=\"/new\"/>"
        "<String Key=\"OriginalWinPath\" Value=\"C:\\\\win\"/><String Key=\"Item.Path.1\" Value=\"" +
        pathText + "\"/>";
    const std::string state =
        "<Guid Key=\"Item.ContentState\" Value=\"11111111-2222-3333-4444-555555555555\"/>";
    const std::string newPath = "<String Key=\"Item.MacPath.1\" Value=\"" + pathText + "\"/>";
    const struct {
        const char* name;
        int version;
        std::string values;
        UTF16String expectedOriginal;
        Guid expectedState;
    } kCases[] = {
        {"1 has no content state", 1, oldPaths + state + common, u"/old", Guid()},
        {"2 has no content state", 2, oldPaths + state + common, u"/old", Guid()},
        {"3 has one, and one path", 3, oldPaths + state + common, u"/old", kState},
        {"4 has a path for each platform", 4, oldPaths + state + common + newPath, u"/new", kState},
        {"a newer one is read as 4", 9, oldPaths + state + common + newPath, u"/new", kState},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const EntryRef entry = Read(Document(test.version, test.values));
        EXPECT_EQ(entry->GetOriginal(), test.expectedOriginal);
        EXPECT_EQ(entry->GetContentState(), test.expectedState);
        EXPECT_FALSE(entry->IsModified());
        const auto items = ItemsOf(entry, u"7");
        ASSERT_EQ(items.size(), 1u);
        EXPECT_EQ(items[0].path, path);
        EXPECT_EQ(items[0].key, u"k");
        EXPECT_TRUE(items[0].canBeCopied);
    }
}

TEST_F(EntrySerialization, DropsItemsWhoseFileChangedOrVanished)
{
    const struct {
        const char* name;
        void (*change)(const std::filesystem::path&);
        bool expectedKept;
    } kCases[] = {
        {"untouched", [](const std::filesystem::path&) {}, true},
        {"read only", [](const std::filesystem::path& path) { support::ReadFile(path); }, true},
        {"one nanosecond later",
         [](const std::filesystem::path& path) {
             struct stat status {};
             stat(path.c_str(), &status);
             timespec times[2] = {status.st_atim, status.st_mtim};
             times[1].tv_nsec = times[1].tv_nsec == 0 ? 1 : times[1].tv_nsec - 1;
             utimensat(AT_FDCWD, path.c_str(), times, 0);
         },
         false},
        {"gone", [](const std::filesystem::path& path) { std::filesystem::remove(path); }, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
        entry->AddItem(0u, {MakeCacheFile("kept.cfa"), {}, u"kept", true}, true);
        entry->AddItem(0u, {MakeCacheFile("x.cfa"), {}, u"x", true}, true);
        const std::string document = Written(entry);
        test.change(CacheFolder() / "x.cfa");
        const EntryRef read = Read(document);
        EXPECT_EQ(ItemsOf(read, u"0").size(), test.expectedKept ? 2u : 1u);
        EXPECT_EQ(read->IsModified(), !test.expectedKept);
        EXPECT_TRUE(read->IsUpToDate());
        EXPECT_TRUE(std::filesystem::exists(CacheFolder() / "kept.cfa"));
    }
}

TEST_F(EntrySerialization, FileTimesBefore1970AndAfter2038RoundTrip)
{
    for (const time_t seconds : {time_t(-1000), time_t(0), time_t(3000000000)}) {
        SCOPED_TRACE(seconds);
        const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
        const UTF16String file = MakeCacheFile("t.cfa");
        const timespec times[2] = {{seconds, 5}, {seconds, 999999999}};
        ASSERT_EQ(utimensat(AT_FDCWD, (CacheFolder() / "t.cfa").c_str(), times, 0), 0);
        entry->AddItem(0u, {file, {}, u"k", true}, true);
        EXPECT_FALSE(Read(Written(entry))->IsModified());
    }
}

TEST_F(EntrySerialization, RebuildsPathsOfTheOtherPlatform)
{
    const UTF16String media = WriteFile(mFolder / "media" / "a.mov", "m");
    const std::string values =
        "<String Key=\"OriginalMacPath\" Value=\"" + (mFolder / "media" / "a.mov").string() +
        "\"/><UInt32 Key=\"Stream.Count\" Value=\"1\"/><UInt32 Key=\"Item.Count.1\" Value=\"1\"/>"
        "<String Key=\"Item.WinPath.1\" Value=\"D:\\\\cache\\\\a 48000.cfa\"/>";
    const struct {
        const char* name;
        bool sideBySide;
        std::filesystem::path expected;
    } kCases[] = {
        {"in the cache folder", false, CacheFolder() / "a 48000.cfa"},
        {"beside the media", true, mFolder / "media" / "a 48000.cfa"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        BE::GetBackend()->GetProperties()->SetBool(BE::kPrefsMediaCacheFilesSideBySide, test.sideBySide);
        const EntryRef entry = Read(Document(4, values));
        EXPECT_TRUE(entry->IsModified());
        const auto items = ItemsOf(entry, u"0"); // the stream's number, as no ID is stored
        ASSERT_EQ(items.size(), 1u);
        EXPECT_EQ(items[0].path, support::UTF16(test.expected));
        EXPECT_EQ(items[0].winPath, u"D:\\cache\\a 48000.cfa");
    }
}

TEST_F(EntrySerialization, MissingKeysLeaveDefaultsButCanBeCopiedCarriesOver)
{
    const auto winItem = [](int index, const std::string& more) {
        const std::string n = std::to_string(index);
        return "<String Key=\"Item.WinPath." + n + "\" Value=\"C:\\\\" + n + "\"/><String Key=\"Item.Key." +
               n + "\" Value=\"k" + n + "\"/>" + more;
    };
    const EntryRef entry = Read(Document(
        4, "<UInt32 Key=\"Stream.Count\" Value=\"2\"/><UInt32 Key=\"Item.Count.1\" Value=\"4\"/>"
           "<UInt32 Key=\"Item.Count.2\" Value=\"1\"/>" +
               winItem(1, "") + winItem(2, "<Bool Key=\"Item.CanBeCopied.2\" Value=\"true\"/>") +
               winItem(3, "") + "<String Key=\"Item.Key.4\" Value=\"no path\"/>" + winItem(257, "")));
    const auto first = ItemsOf(entry, u"0");
    ASSERT_EQ(first.size(), 3u); // the one without any path did not survive
    EXPECT_FALSE(first[0].canBeCopied);
    EXPECT_TRUE(first[1].canBeCopied);
    EXPECT_TRUE(first[2].canBeCopied);
    EXPECT_TRUE(ItemsOf(entry, u"1").at(0).canBeCopied);
}

TEST_F(EntrySerialization, DuplicateStreamsAndKeysKeepTheFirst)
{
    const EntryRef entry =
        Read(Document(4, "<UInt32 Key=\"Stream.Count\" Value=\"2\"/><String Key=\"Stream.ID.1\" Value=\"s\"/>"
                         "<String Key=\"Stream.ID.2\" Value=\"s\"/><UInt32 Key=\"Item.Count.1\" Value=\"2\"/>"
                         "<UInt32 Key=\"Item.Count.2\" Value=\"1\"/>"
                         "<String Key=\"Item.WinPath.1\" Value=\"C:\\\\first\"/><String "
                         "Key=\"Item.WinPath.2\" Value=\"C:\\\\second\"/>"
                         "<String Key=\"Item.WinPath.257\" Value=\"C:\\\\third\"/>"));
    const auto items = ItemsOf(entry, u"s");
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].winPath, u"C:\\first");
    EXPECT_EQ(entry->GetStreamCount(), 1u);
}

TEST_F(EntrySerialization, StreamsAndItemsInAnyOrderAreFound)
{
    const auto item = [](int inNumber, const std::string& inKey, const std::string& inFile) {
        const std::string n = std::to_string(inNumber);
        return "<String Key=\"Item.WinPath." + n + "\" Value=\"C:\\\\" + inFile +
               "\"/><String Key=\"Item.Key." + n + "\" Value=\"" + inKey + "\"/>";
    };
    const EntryRef entry = Read(
        Document(4, "<UInt32 Key=\"Stream.Count\" Value=\"3\"/><String Key=\"Stream.ID.1\" Value=\"7\"/>" +
                        item(1, "z", "first") + item(2, "y", "second") + item(3, "z", "third") +
                        item(4, "x", "fourth") +
                        "<UInt32 Key=\"Item.Count.1\" Value=\"4\"/>"
                        "<String Key=\"Stream.ID.2\" Value=\"10\"/>" +
                        item(257, "k", "fifth") +
                        "<UInt32 Key=\"Item.Count.2\" Value=\"1\"/>"
                        "<String Key=\"Stream.ID.3\" Value=\"7\"/>" +
                        item(513, "k", "sixth") + "<UInt32 Key=\"Item.Count.3\" Value=\"1\"/>"));
    // As it is read first, then with its items spread out for being looked at.
    for (const char* state : {"packed", "spread out"}) {
        SCOPED_TRACE(state);
        EXPECT_EQ(entry->GetStreamCount(), 2u);
        EXPECT_EQ(entry->GetItemCount(), 4u);
        const struct {
            const char16_t* stream;
            const char16_t* key;
            const char16_t* file;
        } kItems[] = {{u"7", u"x", u"fourth"},
                      {u"7", u"y", u"second"},
                      {u"7", u"z", u"first"},
                      {u"10", u"k", u"fifth"}};
        for (const auto& test : kItems) {
            UTF16String path;
            EXPECT_EQ(entry->FindItem(test.stream, test.key, path), 0);
            EXPECT_TRUE(path.ends_with(test.file)) << kiocore::utility::ToUTF8(path);
        }
        std::vector<UTF16String> streams;
        entry->GetStreamIDs(streams);
        EXPECT_THAT(streams, ElementsAre(u"10", u"7"));
    }
}

TEST_F(EntrySerialization, AStreamOf256ItemsIsSafe)
{
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    for (unsigned i = 0; i < 256; ++i) {
        const std::string name = std::to_string(1000 + i);
        entry->AddItem(0u, {MakeCacheFile(name), {}, kiocore::utility::ToUTF16(name), true}, true);
    }
    const EntryRef read = Read(Written(entry));
    EXPECT_EQ(read->GetItemCount(), 256u);
    EXPECT_FALSE(read->IsModified());
}

/// The most memory that this process had since the last time that this was begun anew, in bytes.
class PeakMemory {
public:
    PeakMemory()
    {
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak begins at what is in use now
        mBefore = Read();
    }
    std::size_t Growth() const { return Read() - mBefore; }

private:
    static std::size_t Read()
    {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            if (std::size_t kilobytes = 0; word == "VmHWM:" && status >> kilobytes) {
                return kilobytes * 1024;
            }
        }
        throw std::runtime_error("/proc/self/status has no VmHWM");
    }

    std::size_t mBefore = 0;
};

TEST_F(EntrySerialization, MoreThan256ItemsRunIntoTheNextStreamsBlock)
{
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    for (unsigned i = 0; i < 257; ++i) {
        entry->AddItem(0u, {u"/a", {}, kiocore::utility::DecimalText(1000 + i), true}, true);
    }
    entry->AddItem(1u, {u"/b", {}, u"k", true}, true);
    const std::vector<std::string> keys = StoredKeys(entry);
    EXPECT_EQ(std::count(keys.begin(), keys.end(), "Item.Key.256"), 1);
    EXPECT_EQ(std::count(keys.begin(), keys.end(), "Item.Key.257"), 2);
}

TEST_F(EntrySerialization, CountsBeyondTheValuesHeldAreDamageAndCheap)
{
    const std::string most = "\" Value=\"4294967295\"/>";
    const std::string oneStream = "<UInt32 Key=\"Stream.Count\" Value=\"1\"/>";
    std::string eachAsManyAsValues = "<UInt32 Key=\"Stream.Count\" Value=\"16\"/>";
    for (int i = 1; i <= 16; ++i) {
        eachAsManyAsValues += "<UInt32 Key=\"Item.Count." + std::to_string(i) + "\" Value=\"17\"/>";
    }
    const struct {
        const char* name;
        std::string values;
        bool expectedDamaged;
    } kCases[] = {
        {"streams", "<UInt32 Key=\"Stream.Count" + most, true},
        {"items of a stream", oneStream + "<UInt32 Key=\"Item.Count.1" + most, true},
        {"one stream too many", "<UInt32 Key=\"Stream.Count\" Value=\"2\"/>", true},
        {"as much as the values allow", eachAsManyAsValues, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::string document = Document(4, test.values);
        document.append(document.size() < 1024 ? 1024 - document.size() : 0, ' ');
        const auto start = std::chrono::steady_clock::now();
        const PeakMemory peak;
        const auto read = [&] { EXPECT_EQ(Read(document)->GetItemCount(), 0u); };
        if (test.expectedDamaged) {
            EXPECT_THROW(read(), BE::exDamagedData);
        } else {
            EXPECT_NO_THROW(read());
        }
        EXPECT_LE(peak.Growth(), 32u << 20);
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
        std::printf("%s: %.3f ms, %zu KiB\n", test.name, took.count(), peak.Growth() >> 10);
    }
}

TEST_F(EntrySerialization, OddTextsSurviveFileAndMemory)
{
    const UTF16String long32k(32768, u'ü');
    const UTF16String kTexts[] = {u"plain",
                                  u"  spaces ",
                                  u"\t\r\n",
                                  u"quote\" & <tag> 'x'",
                                  u"back\\slash \\u0041",
                                  UTF16String(u"zero\0unit", 9),
                                  u"\u65e5\u672c\u8a9e",
                                  u"\U0001F3AC",
                                  UTF16String(1, u'\xD800'),
                                  UTF16String(u"\xDC00\xD800", 2),
                                  UTF16String(1, u'\xFFFF'),
                                  u"\x0001\x001F\x007F\x0085",
                                  long32k};
    const Guid document = support::NumberedGuid(2);
    const UTF16String file = MakeCacheFile("odd.cfa");
    for (const UTF16String& text : kTexts) {
        SCOPED_TRACE(kiocore::utility::ToUTF8(text.substr(0, 40)));
        ASSERT_EQ(mDatabase->Add(document, kState, u"/m/" + text, u"s" + text, u"k" + text, file, true), 0);
    }
    for (const bool fromMemory : {true, false}) {
        SCOPED_TRACE(fromMemory);
        if (!fromMemory) {
            ForgetMemory();
        }
        for (const UTF16String& text : kTexts) {
            UTF16String path;
            EXPECT_EQ(mDatabase->FindUpToDate(document, kState, u"s" + text, u"k" + text, path), 0);
            EXPECT_EQ(path, file);
        }
        const EntryRef entry = TR::MediaAcceleratorDatabase::ReadEntry(document, kState);
        EXPECT_EQ(entry->GetItemCount(), std::size(kTexts));
        EXPECT_EQ(entry->GetOriginal(), u"/m/" + kTexts[std::size(kTexts) - 1]);
    }
}

} // namespace
