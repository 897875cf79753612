#include "CopyHandler.h"

#include "DocumentIdentity.h"

#include <TR/MediaAcceleratorDatabase.h>
#include <ZOL/PathUtils.h>

namespace trhost {

namespace {

class CopyHandler final : public TR::IMediaAcceleratorCopy, public virtual kiocore::classref::UnknownBase {
public:
    int MediaAcceleratorCopied(const kiocore::UTF16String& inNewPath, kiocore::Guid& ioDocumentID,
                               kiocore::Guid& ioContentState) override
    {
        const auto source = TR::MediaAcceleratorDatabase::ReadEntry(ioDocumentID, ioContentState);
        if (!source) {
            return -1;
        }
        const kiocore::UTF16String media = ZOL::PathUtils::GetFullDirectoryPart(inNewPath) +
                                           ZOL::PathUtils::GetFullFilePart(source->GetOriginal());
        // Never those of the source: its own record would then name the copies.
        const DocumentIdentity copy = IdentifyDocument(media);
        ioDocumentID = copy.documentID;
        ioContentState = copy.isReadable ? copy.contentState : kiocore::Guid::CreateUnique();
        return copy.isReadable ? 0 : -1;
    }

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override { return UnknownBase::QueryMap(inInterfaceID); }
};

} // namespace

kiocore::InterfaceRef<TR::IMediaAcceleratorCopy> CreateCopyHandler()
{
    return kiocore::classref::MakeObject<CopyHandler>();
}

} // namespace trhost
