#pragma once

#include "../../support/Failure.h"

#include <VF/Difference.h>
#include <kiomediatypes/PixelFormat.h>

#include <cstdint>
#include <string>

namespace trhost::compare {

/// What to do with two pictures.
struct PairRequest {
    UTF16String a;
    UTF16String b;
    UTF16String differencePath; ///< absolute; empty: none is written
    float tolerance = 0;
    bool wantsPictures = false; ///< for a report, of pairs that differ
};

enum class Outcome {
    kSame,
    kDifferent,
    kOnlyInA,
    kOnlyInB,
    kFailed,  ///< could not be compared, or the difference picture not be written
    kNotDone, ///< the program was interrupted
};

/// PNGs in base64 as a page shows them, none wider than kReportPictureWidth; empty where there are none.
struct ReportPictures {
    std::string a;
    std::string b;
    std::string difference;
};
inline constexpr std::uint32_t kReportPictureWidth = 1600;

/// How two pictures compare. Figures mean something when they were compared: the same or different.
struct PairResult {
    Outcome outcome = Outcome::kNotDone;
    UTF16String reason; ///< of failing, one line with the file's name
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    kiomediatypes::PixelFormat formatA = kiomediatypes::kPixelFormat_Any;
    kiomediatypes::PixelFormat formatB = kiomediatypes::kPixelFormat_Any;
    VF::ComputedDifference difference;
    VF::DifferenceDetails details;
    UTF16String differencePath; ///< empty when none was written
    ReportPictures pictures;

    bool WasCompared() const { return outcome == Outcome::kSame || outcome == Outcome::kDifferent; }
    double DifferingPercent() const
    {
        return 100.0 * double(difference.numDiffPixels) / (double(width) * double(height));
    }
};

/// Compares two files. A difference picture is written when something differs; one that an earlier comparison
/// left at its place is removed when not, so that what lies there belongs to this one.
///
/// Threading: any thread; different pairs at once. Throws nothing: failing is an outcome.
PairResult ComparePair(const PairRequest& inRequest) noexcept;

} // namespace trhost::compare
