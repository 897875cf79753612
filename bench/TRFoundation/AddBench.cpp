#include "CacheSetup.h"

#include <BE/Backend.h>

#include <sqlite3.h>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace bench {
namespace {

constexpr int kAddsPerBatch = 20;

std::string BytesOf(const std::string& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A save of the same bytes at the same durability, and the stats that a record with these items needs.
void FloorAdd(const std::string& inRecord, const std::string& inBytes,
              const std::vector<std::string>& inItems, bool inSync)
{
    struct stat status {};
    for (const std::string& item : inItems) {
        stat(item.c_str(), &status);
    }
    const std::string temporary = inRecord + ".tmp";
    const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0 || write(file, inBytes.data(), inBytes.size()) != static_cast<ssize_t>(inBytes.size())) {
        std::abort();
    }
    if (inSync) {
        fsync(file);
    }
    close(file);
    rename(temporary.c_str(), inRecord.c_str());
}

/// The same record as a row of a table, for comparison with a database engine.
class SQLiteStore {
public:
    SQLiteStore(const std::string& inFolder, const char* inSynchronous)
    {
        const std::string path = inFolder + "/compare.sqlite";
        if (sqlite3_open(path.c_str(), &mDatabase) != SQLITE_OK) {
            throw std::runtime_error("SQLite cannot open " + path);
        }
        Run("PRAGMA journal_mode=WAL");
        Run((std::string("PRAGMA synchronous=") + inSynchronous).c_str());
        Run("CREATE TABLE IF NOT EXISTS records (id BLOB PRIMARY KEY, entry TEXT)");
        sqlite3_prepare_v2(mDatabase, "INSERT OR REPLACE INTO records VALUES (?, ?)", -1, &mInsert, nullptr);
    }
    ~SQLiteStore()
    {
        sqlite3_finalize(mInsert);
        sqlite3_close(mDatabase);
    }
    void Store(const Guid& inDocument, const std::string& inBytes)
    {
        sqlite3_bind_blob(mInsert, 1, inDocument.AsBytes().data(), 16, SQLITE_STATIC);
        sqlite3_bind_text(mInsert, 2, inBytes.data(), static_cast<int>(inBytes.size()), SQLITE_STATIC);
        if (sqlite3_step(mInsert) != SQLITE_DONE) {
            throw std::runtime_error(sqlite3_errmsg(mDatabase));
        }
        sqlite3_reset(mInsert);
    }

private:
    void Run(const char* inStatement) { sqlite3_exec(mDatabase, inStatement, nullptr, nullptr, nullptr); }
    sqlite3* mDatabase = nullptr;
    sqlite3_stmt* mInsert = nullptr;
};

} // namespace

void BenchAdd(CacheSetup& ioSetup)
{
    using kiocore::filesupport::Durability;
    PrintHeader("Add to a document of 3 items (floor: item stats, write temporary file, sync, rename)");
    ioSetup.Clear();
    ioSetup.AddDocuments(kAddsPerBatch, 1, 3, false);
    const std::string bytes = BytesOf(ioSetup.Documents()[0].record);
    const auto preferences = BE::GetBackend()->GetPreferences();
    const auto ours = [&] {
        static unsigned round = 0;
        ++round;
        return Timed(CLOCK_MONOTONIC, [&] {
            for (const auto& document : ioSetup.Documents()) {
                // Another path each time, of a file that exists, so that each Add saves.
                const UTF16String path = kiocore::utility::ToUTF16(document.items[round % 2]);
                if (ioSetup.Database().Add(document.id, CacheSetup::kState, u"/projects/a.mov", StreamID(0),
                                           ItemKey(2), path, true) < 0) {
                    std::abort();
                }
            }
        });
    };
    const auto floor = [&](bool sync) {
        return [&, sync] {
            return Timed(CLOCK_MONOTONIC, [&] {
                for (const auto& document : ioSetup.Documents()) {
                    FloorAdd(document.record + ".floor", bytes, document.items, sync);
                }
            });
        };
    };
    preferences->SetDurability(Durability::kFile);
    PrintRow("durability \"file\"", Compare(floor(true), ours, 15, kAddsPerBatch), 1.05);
    preferences->SetDurability(Durability::kNone);
    PrintRow("durability \"none\"", Compare(floor(false), ours, 15, kAddsPerBatch), 0);
    preferences->SetDurability(Durability::kFile);
    for (const char* mode : {"FULL", "NORMAL"}) {
        SQLiteStore store(ioSetup.Root(), mode);
        const auto theirs = [&] {
            return Timed(CLOCK_MONOTONIC, [&] {
                for (const auto& document : ioSetup.Documents()) {
                    store.Store(document.id, bytes);
                }
            });
        };
        PrintRow(std::string("against SQLite, WAL, synchronous=") + mode + "",
                 Compare(theirs, ours, 15, kAddsPerBatch), 0);
    }
}

void BenchMemory(CacheSetup& ioSetup)
{
    PrintHeader("Memory per entry in memory (floor: 0.5 x its UTF-16 text + 128 B)");
    for (const auto& [streams, items] : {std::pair(1u, 3u), std::pair(8u, 16u)}) {
        ioSetup.Clear();
        constexpr unsigned kDocuments = 1000;
        malloc_trim(0);
        ioSetup.AddDocuments(kDocuments, streams, items, true);
        for (const auto& document : ioSetup.Documents()) {
            UTF16String path;
            ioSetup.Database().Find(document.id, CacheSetup::kState, StreamID(0), ItemKey(0), path);
        }
        const struct mallinfo2 with = mallinfo2();
        TR::MediaAcceleratorDatabase::Shutdown();
        const struct mallinfo2 without = mallinfo2();
        const double perEntry = static_cast<double>(with.uordblks - without.uordblks) / kDocuments;
        std::size_t units = std::string("/projects/documentary/footage/day one/clip 123.mov").size();
        for (unsigned s = 0; s < streams; ++s) {
            units += StreamID(s).size();
            for (unsigned i = 0; i < items; ++i) {
                units += ItemKey(i).size() + ioSetup.Documents()[500].items[0].size();
            }
        }
        PrintNumbers(std::to_string(streams) + " x " + std::to_string(items) + " items, " +
                         std::to_string(units) + " units of text",
                     0.5 * 2 * static_cast<double>(units) + 128, perEntry, "B ", 1.0);
    }
}

} // namespace bench
