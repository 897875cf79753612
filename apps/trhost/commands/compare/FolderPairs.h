#pragma once

#include "../../support/Failure.h"

#include <cstddef>
#include <string>
#include <vector>

namespace trhost::compare {

/// A file that lies in one or both of two folders, under one name.
struct FolderPair {
    std::string name; ///< below the folders, in the system's bytes
    bool isInA = false;
    bool isInB = false;
};

/// What there is to compare in two folders and those below them.
struct FolderPairs {
    std::vector<FolderPair> pairs; ///< by name
    std::size_t leftOut = 0;       ///< names of files that are no pictures, on either side
};

/// Lists names that on some side are a picture: by the first bytes, or by ".png" or ".raw" at the end, so
/// that a damaged one is not passed over. Links to folders are not followed.
/// @param inA, inB  with a separator at the end.
/// @throws Failure (kExit_Failed) for a folder that cannot be read: what it holds would be missed.
FolderPairs FindPairs(const std::string& inA, const std::string& inB);

} // namespace trhost::compare
