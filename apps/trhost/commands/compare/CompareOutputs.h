#pragma once

#include "../../support/Failure.h"

#include <string>

/// What a comparison may write, looked at before anything costs time.
namespace trhost::compare {

/// @return the absolute path.
/// @throws Failure: kExit_Usage for a folder or one of the two inputs, kExit_Failed when its folder is not
/// there.
UTF16String CheckDifferenceFile(const std::string& inPath, const std::string& inA, const std::string& inB);

/// @return the absolute path, which need not exist yet.
/// @throws Failure: kExit_Usage for a file, and for a folder that is one of the inputs, lies in one, or holds
///     one: pictures written there could replace those that are compared. kExit_Failed when the folder above
///     it is not there.
std::string CheckDifferenceFolder(const std::string& inPath, const std::string& inA, const std::string& inB);

/// The file of a report, "index.html" in its folder.
/// @throws Failure: kExit_Usage for a file, kExit_Failed for a folder that holds other things than a report
/// of
///     ours, or whose folder is not there.
std::string CheckReportFolder(const std::string& inPath);

} // namespace trhost::compare
