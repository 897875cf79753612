#pragma once

#include "PairComparison.h"

#include <MF/VideoFrame.h>

namespace trhost::compare {

/// A frame that the difference of two pictures can be painted in: as deep as a PNG of the deeper one.
/// @throws Failure (kExit_Failed).
MF::IVideoFrameRef MakeDifferenceFrame(const MF::IVideoFrameRef& inA, const MF::IVideoFrameRef& inB);
/// Whether the second of two frames may be painted over with their difference, which saves a third.
bool CanHoldDifference(const MF::IVideoFrameRef& inA, const MF::IVideoFrameRef& inB);

/// Writes the picture in one step, with the figures as notes in it. Missing folders are made.
/// @throws Failure (kExit_Failed); nothing has changed on disk then.
void WriteDifference(const MF::IVideoFrameRef& inPicture, const PairResult& inResult, float inTolerance,
                     const UTF16String& inPath);

/// Removes a picture that WriteDifference wrote; any other file stays.
/// @throws kiocore::file_exception when it is one and cannot be removed.
void RemoveEarlierDifference(const UTF16String& inPath);

/// Where the difference picture of a pair of folders belongs, below theirs: "shots/1.png" of "shots/1.png",
/// "shots/1.raw.png" of "shots/1.raw".
std::string DifferenceName(const std::string& inName);

} // namespace trhost::compare
