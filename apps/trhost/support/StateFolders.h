#pragma once

#include <kiocore/utility/UTF16String.h>

#include <string>

namespace trhost {

/// Where trhost keeps what it keeps.
struct StateFolders {
    kiocore::UTF16String preferencesFile;
    kiocore::UTF16String cacheRoot; ///< records, cache, metadata, peak and lock files, unless set otherwise
    kiocore::UTF16String sharedDocuments; ///< what the suite's applications share
    kiocore::UTF16String registryFile;
    kiocore::UTF16String crashFolder; ///< what crashed and what runs now, with a trailing separator
};

/// Everything below one folder, or in the user's XDG folders when inStateFolder is empty.
/// @throws Failure (kExit_Failed) when the user has no home folder.
StateFolders FindStateFolders(const std::string& inStateFolder);

} // namespace trhost
