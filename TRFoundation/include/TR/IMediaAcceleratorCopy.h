#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/UnknownBase.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

namespace TR {

/// Implemented by modules that know how their cache files follow media that is copied.
///
/// Threading: called on the thread that copies, without a lock of the library.
class KIO_EXPORT IMediaAcceleratorCopy : public virtual kiocore::classref::Unknown {
public:
    ~IMediaAcceleratorCopy() override;

    /// A cache file was copied.
    /// @param inNewPath  the copy.
    /// @param ioDocumentID, ioContentState  come in as those of the source; the copy is recorded under what
    ///     is left here. Change both to those of the copied media.
    /// @return not looked at.
    virtual int MediaAcceleratorCopied(const kiocore::UTF16String& inNewPath, kiocore::Guid& ioDocumentID,
                                       kiocore::Guid& ioContentState) = 0;
};

} // namespace TR
