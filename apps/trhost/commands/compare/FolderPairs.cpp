#include "FolderPairs.h"

#include "../../support/Interrupt.h"
#include "../../support/PictureFile.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <map>
#include <system_error>

namespace trhost::compare {

namespace {

namespace fs = std::filesystem;

using Names = std::map<std::string, FolderPair>;

[[noreturn]] void ThrowNotRead(const fs::path& inFolder, const std::error_code& inError)
{
    throw Failure(kExit_Failed,
                  Text("$$$/Halcyon/TrHost/Compare/FolderNotRead=the folder @0 cannot be read: @1",
                       {kiocore::filesupport::FromNative(inFolder.native()),
                        kiocore::SystemErrorText(inError.value())}));
}

/// @param inPrefix  of the names in this folder: "" or "shots/".
void List(const fs::path& inFolder, const std::string& inPrefix, bool FolderPair::*inSide, Names& ioNames)
{
    ThrowIfInterrupted();
    std::error_code error;
    fs::directory_iterator entries(inFolder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const std::string name = inPrefix + entries->path().filename().native();
        std::error_code unknown; // what cannot be asked is listed as a file, to be told when it is opened
        if (entries->is_directory(unknown) && !entries->is_symlink(unknown)) {
            List(entries->path(), name + "/", inSide, ioNames);
        } else if (!entries->is_directory(unknown) && !entries->is_other(unknown)) {
            FolderPair& pair = ioNames[name];
            pair.name = name;
            pair.*inSide = true;
        }
    }
    if (error) {
        ThrowNotRead(inFolder, error);
    }
}

bool EndsLikeAPicture(const std::string& inName)
{
    std::string end = inName.size() >= 4 ? inName.substr(inName.size() - 4) : std::string();
    for (char& letter : end) {
        letter = letter >= 'A' && letter <= 'Z' ? char(letter - 'A' + 'a') : letter;
    }
    return end == ".png" || end == ".raw";
}

bool IsPicture(const std::string& inFolder, const std::string& inName)
{
    try {
        return KindOfPicture(kiocore::filesupport::FromNative(inFolder + inName)) != PictureKind::kOther;
    } catch (const kiocore::file_exception&) {
        return false; // nothing says that it is one
    }
}

} // namespace

FolderPairs FindPairs(const std::string& inA, const std::string& inB)
{
    Names names;
    List(inA, {}, &FolderPair::isInA, names);
    List(inB, {}, &FolderPair::isInB, names);
    FolderPairs found;
    for (auto& [name, pair] : names) {
        ThrowIfInterrupted();
        if (EndsLikeAPicture(name) || (pair.isInA && IsPicture(inA, name)) ||
            (pair.isInB && IsPicture(inB, name))) {
            found.pairs.push_back(std::move(pair));
        } else {
            ++found.leftOut;
        }
    }
    return found;
}

} // namespace trhost::compare
