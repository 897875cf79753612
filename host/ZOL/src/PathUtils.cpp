#include <ZOL/PathUtils.h>

#include <kiocore/debug/Trace.h>

#include <vector>

namespace ZOL {
namespace {

constexpr char16_t kSeparator = PathUtils::kPathSeparator;

UTF16View DirectoryPart(UTF16View inPath)
{
    const std::size_t separator = inPath.rfind(kSeparator);
    return separator == UTF16View::npos ? UTF16View() : inPath.substr(0, separator + 1);
}

UTF16View FilePart(UTF16View inPath)
{
    return inPath.substr(DirectoryPart(inPath).size());
}

/// Most paths are; a part that merely starts with a dot is looked at the long way.
bool IsNormalized(UTF16View inPath)
{
    return !inPath.starts_with(u'.') && inPath.find(u"//") == UTF16View::npos &&
           inPath.find(u"/.") == UTF16View::npos;
}

} // namespace

UTF16String PathUtils::GetDrivePart(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::PathUtils::GetDrivePart", inPath);
    static_cast<void>(inPath); // there are no drives here
    return {};
}

UTF16String PathUtils::GetDirectoryPart(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::PathUtils::GetDirectoryPart", inPath);
    return UTF16String(DirectoryPart(inPath));
}

UTF16String PathUtils::GetFullDirectoryPart(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::PathUtils::GetFullDirectoryPart", inPath);
    return UTF16String(DirectoryPart(inPath));
}

UTF16String PathUtils::GetFullFilePart(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::PathUtils::GetFullFilePart", inPath);
    return UTF16String(FilePart(inPath));
}

UTF16String PathUtils::ToNormalizedPath(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::PathUtils::ToNormalizedPath", inPath);
    if (IsNormalized(inPath)) {
        return UTF16String(inPath);
    }
    const bool absolute = inPath.starts_with(kSeparator);
    std::vector<UTF16View> parts;
    for (std::size_t start = 0; start < inPath.size();) {
        const std::size_t end = std::min(inPath.find(kSeparator, start), inPath.size());
        const UTF16View part = inPath.substr(start, end - start);
        start = end + 1;
        if (part.empty() || part == u".") {
            continue;
        }
        if (part == u"..") {
            if (!parts.empty() && parts.back() != u"..") {
                parts.pop_back();
                continue;
            }
            if (absolute) {
                continue;
            }
        }
        parts.push_back(part);
    }
    UTF16String path;
    path.reserve(inPath.size() + 1);
    if (absolute) {
        path += kSeparator;
    } else if (parts.empty()) {
        path += u'.';
    }
    for (const UTF16View part : parts) {
        path.append(part);
        path += kSeparator;
    }
    const bool wantsSeparator = inPath.ends_with(kSeparator);
    if (!parts.empty() && !wantsSeparator) {
        path.pop_back();
    } else if (parts.empty() && !absolute && wantsSeparator) {
        path += kSeparator;
    }
    return path;
}

UTF16String PathUtils::GetExtension(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::PathUtils::GetExtension", inPath);
    const UTF16View file = FilePart(inPath);
    const std::size_t dot = file.rfind(u'.');
    return dot == UTF16View::npos || dot == 0 ? UTF16String() : UTF16String(file.substr(dot));
}

} // namespace ZOL
