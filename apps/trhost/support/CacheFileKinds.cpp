#include "CacheFileKinds.h"

#include <ZOL/PathUtils.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/FileUtils.h>

#include <string>

namespace trhost {

namespace {

// The file system allows 255 bytes for a name; the rest is for our own part and for temporary files.
constexpr std::size_t kMaxMediaNameBytes = 160;
constexpr std::size_t kIdentifierDigits = 12;

} // namespace

const std::vector<UTF16String>& RecordExtensions()
{
    static const std::vector<UTF16String> sExtensions{u".mcdb"};
    return sExtensions;
}

const std::vector<UTF16String>& CacheExtensions()
{
    static const std::vector<UTF16String> sExtensions{
        u".ims",      u".mcvideoindex", u".mcaudioindex", u".mpgindex", u".mxfindex",
        u".mxfassoc", u".prqdc2",       u".ccxml",        u".ccjson",   u".cfa"};
    return sExtensions;
}

const std::vector<UTF16String>& MetadataExtensions()
{
    static const std::vector<UTF16String> sExtensions{u".mfdc"};
    return sExtensions;
}

const std::vector<UTF16String>& PeakExtensions()
{
    static const std::vector<UTF16String> sExtensions{u".cfa", u".pek"};
    return sExtensions;
}

const std::vector<UTF16String>& MediaExtensions()
{
    static const std::vector<UTF16String> sExtensions{
        u".3gp",  u".aac",  u".aif", u".aiff", u".avi", u".caf",  u".dv",   u".flac", u".flv",
        u".m2t",  u".m2ts", u".m2v", u".m4a",  u".m4v", u".mka",  u".mkv",  u".mov",  u".mp3",
        u".mp4",  u".mpeg", u".mpg", u".mts",  u".mxf", u".oga",  u".ogg",  u".ogv",  u".opus",
        u".rf64", u".ts",   u".vob", u".w64",  u".wav", u".wave", u".webm", u".wma",  u".wmv"};
    return sExtensions;
}

UTF16String CacheFilePath(const UTF16String& inFolder, const UTF16String& inMediaPath,
                          const kiocore::Guid& inDocumentID, const UTF16String& inStream,
                          const UTF16String& inExtension)
{
    std::string name = kiocore::filesupport::ToNative(ZOL::PathUtils::GetFullFilePart(inMediaPath));
    if (name.size() > kMaxMediaNameBytes) {
        std::size_t end = kMaxMediaNameBytes;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) {
            --end; // not within a character
        }
        name.resize(end);
    }
    std::string identifier;
    for (char digit : inDocumentID.AsUTF8()) {
        if (digit != '-' && identifier.size() < kIdentifierDigits) {
            identifier += digit;
        }
    }
    UTF16String path = kiocore::utility::FileUtils::AddTrailingSlash(inFolder);
    path += kiocore::filesupport::FromNative(name + "." + identifier);
    if (!inStream.empty()) {
        path += u"." + inStream;
    }
    return path + inExtension;
}

} // namespace trhost
