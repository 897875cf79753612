#pragma once

#include <MF/VideoFrame.h>

#include <string>

namespace trhost::compare {

/// A picture as a page can show it: a PNG of 8 bits in base64, scaled down when it is wider than
/// kReportPictureWidth.
/// @throws Failure (kExit_Failed).
std::string ReportPicture(const MF::IVideoFrameRef& inPicture);

/// The same of a difference picture. Each pixel of a smaller one shows the largest value of those that it
/// stands for: averaged, a single differing pixel would vanish.
std::string ReportDifference(const MF::IVideoFrameRef& inPicture);

} // namespace trhost::compare
