#pragma once

#include <BE/Project.h>
#include <kiocore/serialization/JSON.h>

namespace BE {

// Names in a project file, see docs/project-format.md.
inline constexpr const char* kProjectFormat = "TRFoundation project";
inline constexpr unsigned kProjectVersion = 1;

namespace member {
inline constexpr const char* kFormat = "format";
inline constexpr const char* kVersion = "version";
inline constexpr const char* kMasterClips = "masterClips";
inline constexpr const char* kRoot = "root";
inline constexpr const char* kID = "id";
inline constexpr const char* kMedia = "media";
inline constexpr const char* kPath = "path";
inline constexpr const char* kKind = "kind";
inline constexpr const char* kName = "name";
inline constexpr const char* kProperties = "properties";
inline constexpr const char* kItems = "items";
inline constexpr const char* kMasterClip = "masterClip";
inline constexpr const char* kInPoint = "inPoint";
inline constexpr const char* kOutPoint = "outPoint";
} // namespace member

inline constexpr const char* kKind_Bin = "bin";
inline constexpr const char* kKind_Clip = "clip";

/// @param ioDocument  emptied on the way.
/// @throws bad_cast_exception naming the place; kio_exception (kError_BadArgument) for too many bins.
InterfaceRef<IProject> ProjectFromJSON(kiocore::serialization::JSON& ioDocument);
kiocore::serialization::JSON ProjectToJSON(const InterfaceRef<IProject>& inProject);

} // namespace BE
