#pragma once

#include <kiocore/utility/UTF16String.h>

#include <filesystem>
#include <string>
#include <vector>

namespace trhost::script {

/// The folders that a script may read and write below. A guard against mistakes and surprises, not against
/// programs that mean harm: effects are programs of their own.
///
/// Threading: any thread; never changes.
class AllowedFolders {
public:
    /// @param inReadable  native paths; nothing is written below these.
    /// @param inWritable  may be read too.
    /// @throws Failure (kExit_Usage) for one that is no folder.
    AllowedFolders(const std::vector<std::string>& inReadable, const std::vector<std::string>& inWritable);

    /// What a script's path means: relative ones are below the current folder. Symbolic links are followed
    /// first, so none leads outside.
    /// @return native, absolute.
    /// @throws kio_exception (kError_BadArgument) naming the path and the folders that are allowed.
    std::string ToRead(const kiocore::UTF16String& inPath) const;
    /// The same for a file that need not exist, in a folder that does.
    std::string ToWrite(const kiocore::UTF16String& inPath) const;

private:
    std::vector<std::filesystem::path> mReadable; // the writable ones too
    std::vector<std::filesystem::path> mWritable;
};

} // namespace trhost::script
