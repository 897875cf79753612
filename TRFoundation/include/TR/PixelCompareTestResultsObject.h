#pragma once

#include <VF/Difference.h>
#include <kiocore/Export.h>
#include <kioscripting/ScriptObject.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <cstdint>
#include <string>

namespace TRFoundation::Scripting {

/// What came out of a comparison of two pictures, for scripts to read: class "PixelCompareTestResults". One
/// that a script made itself holds zeros and an empty text.
///
/// Threading: that of its script context; never changes once Initialize was called.
class KIO_EXPORT PixelCompareTestResultsObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;

    /// Called once, before a script sees the object.
    /// @param inDiffData  the difference picture, a PNG as base64 text.
    void Initialize(const std::string& inDiffData, VF::ComputedDifference inDifference);

    float GetVariance() const { return mVariance; } ///< in per cent, see VF::ComputedDifference
    std::uint64_t GetDiffPixels() const { return mDiffPixels; }
    std::string GetDiffData() const { return mDiffData; }
    /// 0 or more: compared. Else one of PixelComparisonObject's codes or of VF::DifferenceStatus, as a signed
    /// number.
    std::int32_t GetError() const { return mError; }

private:
    float mVariance = 0;
    std::uint64_t mDiffPixels = 0;
    std::string mDiffData;
    std::int32_t mError = 0;
};
using PixelCompareTestResultsObjectPtr = boost::intrusive_ptr<PixelCompareTestResultsObject>;

} // namespace TRFoundation::Scripting
