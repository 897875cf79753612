#pragma once

#include <BE/Serialization.h>
#include <kiomediatypes/TickTime.h>

#include <cstddef>
#include <vector>

namespace BE {

using kiomediatypes::TickTime;

/// One media file.
///
/// Threading: this and all below: one thread at a time for a project and what is in it.
class KIO_EXPORT IMedia : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IMedia() override;
    virtual UTF16String GetFilePath() const = 0;
};

/// What clips are made from: one media file or several that belong together. Clips may share one.
class KIO_EXPORT IMasterClip : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IMasterClip() override;
    virtual std::size_t GetMediaCount() const = 0;
    /// Empty for an index that there is not.
    virtual InterfaceRef<IMedia> GetMedia(std::size_t inIndex) const = 0;
};

/// What a project lists: a clip or a bin. Each also offers BE::IProperties.
class KIO_EXPORT IProjectItem : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IProjectItem() override;
    /// Its own for ever, also in the project's file.
    virtual Guid GetID() const = 0;
    virtual UTF16String GetName() const = 0;
    virtual void SetName(const UTF16String& inName) = 0;
};

/// A clip, with the part of it that is to be used.
class KIO_EXPORT IClipProjectItem : public virtual IProjectItem {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IClipProjectItem() override;
    virtual InterfaceRef<IMasterClip> GetMasterClip() const = 0;
    /// The unset time when there is none: the clip then begins, or ends, where its media does.
    virtual TickTime GetInPoint() const = 0;
    virtual TickTime GetOutPoint() const = 0;
    /// @return false, nothing changed, when both are set and the out point lies before the in point.
    virtual bool SetInOutPoints(TickTime inInPoint, TickTime inOutPoint) = 0;
};

/// A folder of items.
class KIO_EXPORT IBinProjectItem : public virtual IProjectItem {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IBinProjectItem() override;
    /// In the order in which they were added.
    virtual std::vector<InterfaceRef<IProjectItem>> GetItems() const = 0;
    /// @throws kio_exception (kError_BadArgument), nothing changed, for an item that is empty, not made by
    /// this
    ///     library, in a bin already or would come to lie within itself, and for more than kMaxBinLevels.
    virtual void AddItem(const InterfaceRef<IProjectItem>& inItem) = 0;
};

/// How many bins may lie within each other, the root bin included.
inline constexpr std::size_t kMaxBinLevels = 200;

/// Text property of an item: the path under which its asset was known first. Counts before the path of its
/// media, which may have moved since.
extern KIO_EXPORT const ImmutableString
    kProjectItemOriginalAssetNamePathPropertyKey; // "BE.ProjectItem.OriginalAssetNamePath"

namespace MasterClipUtils {

/// The media at an index; empty when there is none, or no master clip.
KIO_EXPORT InterfaceRef<IMedia> GetMedia(const InterfaceRef<IMasterClip>& inMasterClip, std::size_t inIndex);

} // namespace MasterClipUtils

namespace ProjectItemUtils {

/// Sets a clip's points; the unset time takes a point away.
/// @param inKeepExisting  a point that the clip has already stays.
/// @return 0; -1 when the item is no clip, -2 when the out point would lie before the in point: nothing
///     changed then.
KIO_EXPORT int UpdateProjectItemWithInOutPoints(const InterfaceRef<IProjectItem>& inItem, TickTime inInPoint,
                                                TickTime inOutPoint, bool inKeepExisting);

} // namespace ProjectItemUtils
} // namespace BE
