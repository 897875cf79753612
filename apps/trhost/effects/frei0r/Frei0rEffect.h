#pragma once

#include "../EffectEngine.h"
#include "Instance.h"
#include "PictureBuffer.h"
#include "PluginFile.h"

#include <optional>
#include <string>
#include <vector>

namespace trhost::effects::frei0r {

/// How many pictures a plug-in of this type takes; empty for a type that is not known.
std::optional<int> InputCountOf(int inPluginType);

/// A frei0r plug-in at work.
///
/// What the plug-in leaves unwritten of its output (some leave alpha, or edges) is the first input's, opaque
/// black for a generator: never what happened to lie in memory. frei0r's transitions know of no position:
/// the parameter that fades from one picture to the other, where there is one and the user has not set it,
/// follows the position; others mix in the same way throughout.
class Frei0rEffect final : public IVideoEffect {
public:
    /// @throws kio_exception (kEffectError_BadFrame, kEffectError_PluginFailed).
    Frei0rEffect(PluginUseRef inUse, PluginCaller inCaller, std::string inMatchName,
                 const VideoEffectForm& inForm);

    kiomediatypes::PixelFormat Format() const override { return kiomediatypes::kPixelFormat_BGRA_4444_8u; }
    int InputCount() const override { return mInputCount; }
    void SetParameter(const std::string& inName, const std::string& inValue) override;
    MF::IVideoFrameRef Render(const std::vector<MF::IVideoFrameRef>& inInputs, kiomediatypes::TickTime inTime,
                              double inPosition) override;

private:
    void TakeInputs(const std::vector<MF::IVideoFrameRef>& inInputs);
    void PrepareOutput();
    void Update(double inSeconds);
    void CheckStrips() const;
    MF::IVideoFrameRef GiveOutput(const std::vector<MF::IVideoFrameRef>& inInputs) const;
    [[noreturn]] void ThrowBadFrame(const std::string& inReason) const;

    const PluginUseRef mUse; // first: goes last
    const PluginCaller mCaller;
    const std::string mMatchName;
    const std::uint32_t mWidth;
    const std::uint32_t mHeight;
    const int mInputCount;
    const bool mExchange; // red and blue
    std::vector<PictureBuffer> mInputs;
    PictureBuffer mOutput;
    std::optional<int> mFader; // index of the parameter; empty when there is none, or the user set it
    Instance mInstance;
};

} // namespace trhost::effects::frei0r
