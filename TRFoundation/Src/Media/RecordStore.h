#pragma once

#include "DatabasePaths.h"
#include "PackedEntry.h"

#include <BE/XMLFile.h>
#include <kiocore/filesupport/DocumentLock.h>
#include <kiocore/filesupport/FileTime.h>

namespace TR {

/// Records on disk and in memory: the process-wide state behind every instance of the database.
///
/// Threading: any thread. The cache lock is held around look-ups only, never around files.
namespace RecordStore {

/// Finds a document's record, newest tag first. Memory is trusted while the file's time is unchanged.
/// @return false when there is none. Exceptions of reading a well-formed file pass through.
bool Read(const Guid& inDocumentID, EntrySnapshot& outEntry);

/// Saves an entry under the current tag and keeps it in memory with the file's time, also when saving
/// failed. The caller holds the document's lock.
/// @return 0, or negative: the file is as it was.
int Write(const Guid& inDocumentID, const MediaAcceleratorDatabaseEntry& inEntry);

/// Reads the entry that a record file holds, without memory.
/// @return empty when the file does not open or holds no entry.
InterfaceRef<MediaAcceleratorDatabaseEntry> ReadFile(BE::IXMLFileReader& inReader, const UTF16String& inPath);
InterfaceRef<BE::IXMLFileReader> CreateReader();

/// The file's time, 0 when it cannot be asked.
kiocore::filesupport::FileTime TimeOf(const UTF16String& inPath);

void ForgetAll();

} // namespace RecordStore

/// Holds a document for a writer: nobody else in any process changes its record meanwhile. Readers do not
/// wait for it.
class ScWritingDocument {
public:
    /// @throws kio_exception when the preferences name no lock file; file_exception when it cannot be used.
    explicit ScWritingDocument(const Guid& inDocumentID);

private:
    kiocore::filesupport::ScDocumentLock mLock;
};

} // namespace TR
