#pragma once

#include "support/Interleaved.h"

#include <TR/MediaAcceleratorDatabase.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/Guid.h>

#include <string>
#include <vector>

namespace bench {

using kiocore::Guid;
using kiocore::UTF16String;

/// A media cache on disk with many documents, and the same paths in the system's form for the floors.
class CacheSetup {
public:
    struct Document {
        Guid id;
        std::string record;             // native path
        std::vector<std::string> items; // native paths of the cache files
    };

    CacheSetup();
    ~CacheSetup();

    /// Records a document with inStreams x inItems cache files that exist.
    /// @param inShareFiles  one cache file for all its items: quicker to set up by the hundred thousand.
    const Document& AddDocument(unsigned inNumber, unsigned inStreams, unsigned inItems, bool inShareFiles);
    void AddDocuments(unsigned inCount, unsigned inStreams, unsigned inItems, bool inShareFiles);
    const std::vector<Document>& Documents() const { return mDocuments; }
    /// Deletes all records and cache files.
    void Clear();
    void SetMemoryBudget(std::uint64_t inBytes);

    const std::string& Root() const { return mFolder.Path(); }
    std::string DatabaseFolder() const { return Root() + "/Media Cache/"; }
    std::string CacheFolder() const { return Root() + "/Media Cache Files/"; }
    TR::IMediaAcceleratorDatabase& Database() { return *mDatabase; }

    static const Guid kState;

private:
    ScratchFolder mFolder;
    kiocore::InterfaceRef<TR::IMediaAcceleratorDatabase> mDatabase;
    std::vector<Document> mDocuments;
};

UTF16String StreamID(unsigned inStream);
UTF16String ItemKey(unsigned inItem);

/// The tables, in the order in which they are printed.
void BenchFind(CacheSetup& ioSetup);
void BenchFindUncached(CacheSetup& ioSetup);
void BenchAdd(CacheSetup& ioSetup);
void BenchMemory(CacheSetup& ioSetup);
void BenchClean(CacheSetup& ioSetup);
void BenchDeleteAll(CacheSetup& ioSetup);
void BenchIngest(CacheSetup& ioSetup);

} // namespace bench
