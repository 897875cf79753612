#include "CompareOutputs.h"

#include "Report.h"

#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/TemporaryFile.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace trhost::compare {

namespace {

namespace fs = std::filesystem;

using kiocore::filesupport::FromNative;

/// Absolute, without a separator at the end; links stay.
fs::path Absolute(const std::string& inPath)
{
    std::error_code error;
    fs::path path = fs::absolute(inPath, error).lexically_normal();
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

/// Where a path leads in the end, also one that is not there yet.
fs::path Resolved(const std::string& inPath)
{
    std::error_code error;
    fs::path path = fs::weakly_canonical(Absolute(inPath), error);
    return error ? Absolute(inPath) : path;
}

bool IsWithin(const fs::path& inPath, const fs::path& inFolder)
{
    return std::mismatch(inPath.begin(), inPath.end(), inFolder.begin(), inFolder.end()).second ==
           inFolder.end();
}

void ThrowIfParentIsMissing(const char* inOption, const fs::path& inPath)
{
    std::error_code error;
    if (!fs::is_directory(inPath.parent_path(), error)) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/Compare/NoParent=@0 @1: there is no folder @2; make it first",
                           {kiocore::utility::ToUTF16(inOption), FromNative(inPath.native()),
                            FromNative(inPath.parent_path().native())}));
    }
}

[[noreturn]] void ThrowNoFolder(const char* inOption, const fs::path& inPath)
{
    throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/Compare/NoFolder=@0 @1: is a file; expected a folder",
                                    {kiocore::utility::ToUTF16(inOption), FromNative(inPath.native())}));
}

bool Exists(const fs::path& inPath)
{
    std::error_code error;
    return fs::exists(inPath, error);
}

bool IsFolder(const fs::path& inPath)
{
    std::error_code error;
    return fs::is_directory(inPath, error);
}

bool IsReport(const fs::path& inFile)
{
    std::ifstream file(inFile, std::ios::binary);
    std::string start(1024, '\0');
    file.read(start.data(), std::streamsize(start.size()));
    start.resize(std::size_t(file.gcount()));
    return start.find(kReportMark) != std::string::npos;
}

/// Empty but for what a run that was killed while it wrote a report has left.
bool HoldsNothing(const fs::path& inFolder)
{
    std::error_code error;
    fs::directory_iterator entries(inFolder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        if (!entries->path().filename().native().starts_with(
                "index.html" + std::string(kiocore::filesupport::kTemporaryFileMark))) {
            return false;
        }
    }
    return !error;
}

} // namespace

UTF16String CheckDifferenceFile(const std::string& inPath, const std::string& inA, const std::string& inB)
{
    const fs::path path = Absolute(inPath);
    if (IsFolder(path)) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/Compare/DiffIsFolder=--diff @0: is a folder; expected a file, as A and "
                 "B are files",
                 {FromNative(path.native())}));
    }
    for (const std::string& input : {inA, inB}) {
        std::error_code error;
        if (fs::equivalent(path, input, error)) {
            throw Failure(kExit_Usage,
                          Text("$$$/Halcyon/TrHost/Compare/DiffIsInput=--diff @0: is one of the pictures "
                               "that are compared; expected another file",
                               {FromNative(path.native())}));
        }
    }
    ThrowIfParentIsMissing("--diff", path);
    return FromNative(path.native());
}

std::string CheckDifferenceFolder(const std::string& inPath, const std::string& inA, const std::string& inB)
{
    const fs::path path = Absolute(inPath);
    if (Exists(path) && !IsFolder(path)) {
        ThrowNoFolder("--diff", path);
    }
    const fs::path resolved = Resolved(inPath);
    for (const std::string& input : {inA, inB}) {
        const fs::path folder = Resolved(input);
        if (IsWithin(resolved, folder) || IsWithin(folder, resolved)) {
            throw Failure(
                kExit_Usage,
                Text("$$$/Halcyon/TrHost/Compare/DiffNearInput=--diff @0: is, lies in or holds the folder @1 "
                     "that is compared, so pictures in it could be replaced; expected a folder apart",
                     {FromNative(path.native()), FromNative(input)}));
        }
    }
    ThrowIfParentIsMissing("--diff", path);
    return path.native();
}

std::string CheckReportFolder(const std::string& inPath)
{
    const fs::path path = Absolute(inPath);
    const fs::path file = path / "index.html";
    if (Exists(path) && !IsFolder(path)) {
        ThrowNoFolder("--report", path);
    }
    ThrowIfParentIsMissing("--report", path);
    if (IsFolder(path) && !HoldsNothing(path) && !IsReport(file)) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/Report/FolderInUse=--report @0: the folder holds other things than an "
                 "earlier report; name an empty or a new folder",
                 {FromNative(path.native())}));
    }
    return file.native();
}

} // namespace trhost::compare
