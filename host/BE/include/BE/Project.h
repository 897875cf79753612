#pragma once

#include <BE/ProjectItem.h>

namespace BE {

/// Bins and clips, with what they are made from.
///
/// Threading: one thread at a time.
class KIO_EXPORT IProject : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IProject() override;
    /// Never empty. It is not listed itself.
    virtual InterfaceRef<IBinProjectItem> GetRootBin() const = 0;
    /// Everything in the root bin, each bin before what is in it.
    virtual std::vector<InterfaceRef<IProjectItem>> GetAllItems() const = 0;
};

/// Makers of a project's parts, each with an identifier of its own.
KIO_EXPORT InterfaceRef<IProject> CreateProject();
KIO_EXPORT InterfaceRef<IMedia> CreateMedia(const UTF16String& inFilePath);
/// @throws kio_exception (kError_BadArgument) when one of the media is empty.
KIO_EXPORT InterfaceRef<IMasterClip> CreateMasterClip(const std::vector<InterfaceRef<IMedia>>& inMedia);
/// @throws kio_exception (kError_BadArgument) when the master clip is empty.
KIO_EXPORT InterfaceRef<IClipProjectItem>
CreateClipProjectItem(const UTF16String& inName, const InterfaceRef<IMasterClip>& inMasterClip);
KIO_EXPORT InterfaceRef<IBinProjectItem> CreateBinProjectItem(const UTF16String& inName);

/// Largest project file that is read.
inline constexpr std::size_t kMaxProjectFileBytes = 64u << 20;

/// Reads a project file (docs/project-format.md).
/// @throws file_exception when it cannot be read; exDamagedData, naming file and place, when it is not well
///     formed, of a newer version, or holds an item of a kind that this build does not know.
KIO_EXPORT InterfaceRef<IProject> ReadProjectFile(const UTF16String& inPath);
/// Saves in one step, as durably as the preferences say. Members that the file had and this build does not
/// know are written again.
/// @throws file_exception when it fails: the old file is as it was; kio_exception (kError_BadArgument) when
///     something in the project was not made by this library.
KIO_EXPORT void WriteProjectFile(const InterfaceRef<IProject>& inProject, const UTF16String& inPath);

} // namespace BE
