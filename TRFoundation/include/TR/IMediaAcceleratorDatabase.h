#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/UnknownBase.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

namespace TR {

using kiocore::Guid;
using kiocore::UTF16String;

/// Records and finds the cache files that were made for media documents. One record file per document.
/// The numeric forms write the stream number in decimal.
///
/// Threading: any thread, any member. Two writers of one document, in this or another process, wait for
/// each other; readers wait for nobody.
///
/// Errors: 0 or positive is success, -1 is "not found"; a damaged record and refusing files are exceptions
/// (kio_exception) and leave nothing half-done in memory.
class KIO_EXPORT IMediaAcceleratorDatabase : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IMediaAcceleratorDatabase() override;

    /// Records a cache file that is complete. Replaces the one of the same stream and key. A document that
    /// has another content state by now starts a new record; the old one's files are left to whoever made
    /// them.
    /// @return 0 recorded; negative when the record could not be saved: the one on disk is as it was.
    virtual int Add(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inOriginalPath,
                    const UTF16String& inStreamID, const UTF16String& inKey,
                    const UTF16String& inCacheFilePath, bool inCanBeCopied) = 0;
    virtual int Add(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inOriginalPath,
                    unsigned long inStreamID, const UTF16String& inKey, const UTF16String& inCacheFilePath,
                    bool inCanBeCopied) = 0;

    /// Finds a cache file, whatever content state it was made for, and touches its access time.
    /// @param outPath  untouched when stream or key are unknown.
    /// @return 0 found, -1 not.
    virtual int Find(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inStreamID,
                     const UTF16String& inKey, UTF16String& outPath) = 0;
    virtual int Find(const Guid& inDocumentID, const Guid& inContentState, unsigned long inStreamID,
                     const UTF16String& inKey, UTF16String& outPath) = 0;

    /// The same, but -1 for a cache file that was made for another content state or was invalidated (its
    /// access time has been touched all the same).
    virtual int FindUpToDate(const Guid& inDocumentID, const Guid& inContentState,
                             const UTF16String& inStreamID, const UTF16String& inKey,
                             UTF16String& outPath) = 0;
    virtual int FindUpToDate(const Guid& inDocumentID, const Guid& inContentState, unsigned long inStreamID,
                             const UTF16String& inKey, UTF16String& outPath) = 0;

    /// Marks a document's record as not up to date if it has the stream.
    virtual void Invalidate(const Guid& inDocumentID, const Guid& inContentState,
                            unsigned long inStreamID) = 0;

    /// Lets cache files follow copied media: each that may be copied, and for whose key a handler is
    /// registered, is copied into the folder inDestination and recorded under the GUIDs that its handler
    /// gives, with inDestination and the media's file name as original path. Files that cannot be copied
    /// are passed over.
    virtual void Copy(const Guid& inDocumentID, const Guid& inContentState, const UTF16String& inSource,
                      const UTF16String& inDestination) = 0;

    /// Starts the cleaning operation, as IBatchOperation::Start does.
    virtual void Clean() = 0;
};

} // namespace TR
