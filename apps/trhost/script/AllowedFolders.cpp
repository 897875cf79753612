#include "AllowedFolders.h"

#include "../support/Failure.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>

namespace trhost::script {
namespace {

namespace fs = std::filesystem;
using kiocore::filesupport::FromNative;

fs::path Resolved(const std::string& inFolder)
{
    std::error_code error;
    fs::path folder = fs::canonical(inFolder, error);
    if (error || !fs::is_directory(folder, error)) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/ScriptNoFolder=@0 is no folder that scripts could use",
                           {FromNative(inFolder)}));
    }
    return folder;
}

bool IsBelow(const fs::path& inPath, const fs::path& inFolder)
{
    return std::mismatch(inFolder.begin(), inFolder.end(), inPath.begin(), inPath.end()).first ==
           inFolder.end();
}

/// A path without links and dots; what does not exist at its end is taken as it is.
fs::path Meant(const kiocore::UTF16String& inPath)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(kiocore::filesupport::ToNative(inPath), error);
    const fs::path meant = error ? fs::path() : fs::weakly_canonical(absolute, error);
    if (error || inPath.empty() || inPath.find(u'\0') != kiocore::UTF16String::npos) {
        throw kiocore::kio_exception(Text("$$$/Halcyon/TrHost/ScriptNoPath=\"@0\" names no file", {inPath}),
                                     kiocore::kError_BadArgument);
    }
    return meant;
}

std::string Checked(const kiocore::UTF16String& inPath, const std::vector<fs::path>& inFolders,
                    std::string_view inRefusal)
{
    const fs::path meant = Meant(inPath);
    if (std::none_of(inFolders.begin(), inFolders.end(),
                     [&](const fs::path& inFolder) { return IsBelow(meant, inFolder); })) {
        kiocore::UTF16String folders;
        for (const fs::path& folder : inFolders) {
            folders += (folders.empty() ? u"" : u", ") + FromNative(folder.native());
        }
        throw kiocore::kio_exception(Text(inRefusal, {FromNative(meant.native()), folders}),
                                     kiocore::kError_BadArgument);
    }
    return meant.native();
}

} // namespace

AllowedFolders::AllowedFolders(const std::vector<std::string>& inReadable,
                               const std::vector<std::string>& inWritable)
{
    for (const std::string& folder : inWritable) {
        mWritable.push_back(Resolved(folder));
    }
    mReadable = mWritable;
    for (const std::string& folder : inReadable) {
        mReadable.push_back(Resolved(folder));
    }
}

std::string AllowedFolders::ToRead(const kiocore::UTF16String& inPath) const
{
    return Checked(inPath, mReadable,
                   "$$$/Halcyon/TrHost/ScriptMayNotRead=@0 lies outside of what this script may read: @1");
}

std::string AllowedFolders::ToWrite(const kiocore::UTF16String& inPath) const
{
    return Checked(inPath, mWritable,
                   "$$$/Halcyon/TrHost/ScriptMayNotWrite=@0 lies outside of what this script may write: @1");
}

} // namespace trhost::script
