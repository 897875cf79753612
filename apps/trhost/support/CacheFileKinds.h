#pragma once

#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

#include <vector>

namespace trhost {

using kiocore::UTF16String;

/// Item keys of the cache files that trhost makes.
inline constexpr const char16_t* kKey_ConformedAudio = u"ConformedAudio"; // ".cfa", of an audio stream
inline constexpr const char16_t* kKey_PeakFile = u"PeakFile";             // ".pek", of an audio stream
inline constexpr const char16_t* kKey_VideoIndex = u"VideoIndex";     // ".mcvideoindex", of a video stream
inline constexpr const char16_t* kKey_MediaSummary = u"MediaSummary"; // ".ccjson", of the media as a whole
/// Stream ID of what belongs to no single stream.
inline constexpr const char16_t* kStream_Media = u"Media";

/// Extensions, with their dot, of what lies in the folders of the media cache. The library's delete-all
/// operation removes files of these kinds and no others.
const std::vector<UTF16String>& RecordExtensions();
const std::vector<UTF16String>& CacheExtensions();
const std::vector<UTF16String>& MetadataExtensions();
const std::vector<UTF16String>& PeakExtensions();

/// Extensions of media that are looked for in folders.
const std::vector<UTF16String>& MediaExtensions();

/// Where a cache file of the media goes: "<folder>/<media name>.<12 digits of the document
/// ID>.<stream><ext>", so that media of one name in different folders do not meet. Long media names are cut.
/// @param inStream  decimal, or empty for what belongs to the media as a whole.
UTF16String CacheFilePath(const UTF16String& inFolder, const UTF16String& inMediaPath,
                          const kiocore::Guid& inDocumentID, const UTF16String& inStream,
                          const UTF16String& inExtension);

} // namespace trhost
