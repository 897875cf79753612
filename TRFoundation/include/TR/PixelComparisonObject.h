#pragma once

#include <MF/VideoFrame.h>
#include <TR/PixelCompareTestResultsObject.h>
#include <kiocore/utility/UTF16String.h>

namespace TRFoundation::Scripting {

/// Why there is nothing to read in a result, beyond VF::DifferenceStatus; as unsigned numbers.
enum PixelComparisonError : std::uint32_t {
    kPixelComparison_NotLoaded = 0xA3ED0001,  ///< a file is missing or damaged, or the two do not go together
    kPixelComparison_NotEncoded = 0xA3ED0002, ///< no PNG could be made of the difference picture
};

/// Compares two picture files pixel by pixel for test scripts: class "PixelComparison".
///
/// Threading: that of its script context. Objects hold nothing, so calls are independent of each other.
class KIO_EXPORT PixelComparisonObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;

    /// Compares two PNG files when the first path ends in ".png" (in small letters), else two raw frame
    /// files.
    /// @param inEpsilon  has no meaning yet; callers pass it so that they need not change when it has one.
    /// @return files that cannot be loaded give a result that says so. Empty when the script context was
    /// closed.
    /// @throws file_exception when a raw frame file is there but cannot be read.
    PixelCompareTestResultsObjectPtr PixelCompareVideoFrame(const kiocore::UTF16String& inImagePath,
                                                            const kiocore::UTF16String& inComparePath,
                                                            double inEpsilon) const;

    /// Compares two frames without tolerance.
    /// @param outDiffData  the difference picture, a PNG as base64 text, which also holds the figures in
    /// "tEXt"
    ///     chunks; empty when it could not be encoded; untouched when the frames could not be compared.
    VF::ComputedDifference CompareVideoFrames(const MF::IVideoFrameRef& inFrame,
                                              const MF::IVideoFrameRef& inCompareFrame,
                                              std::string& outDiffData) const;

    /// A result in a script context; empty when that is closed.
    PixelCompareTestResultsObjectPtr MakeResultObject(int& inContext, VF::ComputedDifference inDifference,
                                                      const std::string& inDiffData) const;
};

} // namespace TRFoundation::Scripting
