#pragma once

#include <TR/IMediaAcceleratorCopy.h>
#include <TR/IMediaAcceleratorDatabase.h>
#include <TR/MediaAcceleratorDatabaseEntry.h>
#include <ZOL/BatchOperation.h>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/threads/RecursiveMutex.h>

#include <map>
#include <memory>
#include <vector>

namespace TR {

class BatchRun;

/// The media cache database. What it stores is the process's, so any instance serves; each instance is
/// also one cleaning operation, which asks the host (see TRFoundation.h) for the present content state of
/// every recorded document, deletes the cache files of those that changed or cannot be resolved, and the
/// records that are left without items.
///
/// Threading: any thread, any member.
class KIO_EXPORT MediaAcceleratorDatabase final : public IMediaAcceleratorDatabase,
                                                  public ZOL::IBatchOperation,
                                                  public virtual kiocore::classref::UnknownBase {
public:
    MediaAcceleratorDatabase();
    ~MediaAcceleratorDatabase() override;
    static void CreateInstanceRef(InterfaceRef<kiocore::classref::UnknownBase>& outObject);

    int Add(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inOriginalPath,
            const UTF16String& inStreamID, const UTF16String& inKey, const UTF16String& inCacheFilePath,
            bool inCanBeCopied) override;
    int Add(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inOriginalPath,
            unsigned long inStreamID, const UTF16String& inKey, const UTF16String& inCacheFilePath,
            bool inCanBeCopied) override;
    int Find(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inStreamID,
             const UTF16String& inKey, UTF16String& outPath) override;
    int Find(const Guid& inDocumentID, const Guid& inContentState, unsigned long inStreamID,
             const UTF16String& inKey, UTF16String& outPath) override;
    int FindUpToDate(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inStreamID,
                     const UTF16String& inKey, UTF16String& outPath) override;
    int FindUpToDate(const Guid& inDocumentID, const Guid& inContentState, unsigned long inStreamID,
                     const UTF16String& inKey, UTF16String& outPath) override;
    void Invalidate(const Guid& inDocumentID, const Guid& inContentState, unsigned long inStreamID) override;
    void Copy(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inSource,
              const UTF16String& inDestination) override;
    void Clean() override;

    /// @throws null_reference_exception for an instance that was not made by the class factory or MakeObject:
    ///     the run must be able to keep its object alive.
    int Start() override;
    int Abort() override;
    ZOL::StationID GetStationID() const override;
    UTF16String GetDescription() const override;
    /// The cleaning itself; runs on an executor thread.
    void Process();

    /// The document's whole record as it is now, with the content state set as by SetContentState; empty
    /// when there is none. The caller's own.
    static InterfaceRef<MediaAcceleratorDatabaseEntry> ReadEntry(const Guid& inDocumentID,
                                                                 const Guid& inContentState);

    /// Where a document's record lies, or would lie.
    /// @param inSuffix  the version tag in decimal; empty for records without one.
    static UTF16String GetAcceleratorDatabasePath(const UTF16String& inSuffix, const Guid& inDocumentID);
    /// The tags that are looked for, newest first: that of the suite's present version (the one written)
    /// down to version 6.0. After these the untagged name is tried.
    static std::vector<int> GetVersionTags();

    /// The first handler of a key stays; later ones are ignored.
    static void RegisterAcceleratorHandler(const UTF16String& inKey,
                                           InterfaceRef<IMediaAcceleratorCopy> inHandler);
    static void Startup();
    /// Lets handlers and records in memory go.
    static void Shutdown();

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

private:
    static InterfaceRef<IMediaAcceleratorCopy> FindHandler(const UTF16String& inKey);

    static kiocore::threads::RecursiveMutex sAcceleratorHandlerMapCriticalSection;
    static std::map<UTF16String, InterfaceRef<IMediaAcceleratorCopy>> sAcceleratorHandlerMap; // by item key

    const std::unique_ptr<BatchRun> mRun;
};

/// Extension of record files, ".mcdb".
extern KIO_EXPORT const UTF16String kMediaAcceleratorFileExtension;

/// The folder in which cache files for the media belong: beside the media where the user wants that and
/// the folder can be written, else the media cache files folder.
/// @return 0; negative when the preferences have no such folder.
KIO_EXPORT int GetMediaAcceleratorDirectoryPath(const UTF16String& inMediaPath, UTF16String& outFolder);

} // namespace TR
