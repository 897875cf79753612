#pragma once

#include "../../EffectEngine.h"
#include "FilterGraph.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trhost::effects::avfilter {

/// What an instance needs to know of its plug-in.
struct EffectSource {
    const AVFilter* filter = nullptr;
    std::string matchName;
    int inputs = 1;
    bool isConverting = false; ///< takes none of our formats as it is
    /// Runs something that calls the filter's code, with the plug-in named; holds the module.
    std::function<void(const std::function<void()>&)> call;
};

/// What instances of all kinds of filters have in common: parameters, checks, and the graph.
class VideoEffectBase : public IVideoEffect {
public:
    /// @param inForm  with a format.
    VideoEffectBase(EffectSource inSource, const VideoEffectForm& inForm);

    kiomediatypes::PixelFormat Format() const override { return mForm.format; }
    int InputCount() const override { return mSource.inputs; }
    void SetParameter(const std::string& inName, const std::string& inValue) override;

protected:
    const EffectSource& Source() const { return mSource; }
    const VideoEffectForm& Form() const { return mForm; }
    const Settings& UserSettings() const { return mSettings; }

    /// @throws kio_exception (kEffectError_BadFrame).
    void CheckInputs(const std::vector<MF::IVideoFrameRef>& inInputs) const;
    [[noreturn]] void FailPlugin(const std::string& inProblem) const;
    /// Calls the filter's code with its messages kept.
    /// @param inFunction  gives libavutil's error numbers and does not throw.
    /// @param outProblem  set when it failed.
    int Call(const std::function<int()>& inFunction, std::string& outProblem) const;
    /// Makes a graph in the first carrier of the format that the filter takes with these settings, and by
    /// conversion when it takes none. The answer is kept for the next graph.
    /// @throws kio_exception (kEffectError_PluginFailed).
    std::unique_ptr<FilterGraph> MakeGraph(const Settings& inSettings,
                                           const std::vector<MF::IVideoFrameRef>& inInputs);
    const Carrier& CarrierInUse() const { return mChoices[mChoice].carrier; }
    /// @throws kio_exception (kEffectError_PluginFailed) for a picture that no frame can hold.
    MF::IVideoFrameRef ToOurs(const AVFrame& inPicture, const MF::IVideoFrameRef& inLike) const;

private:
    struct Choice {
        Carrier carrier;
        bool isConverting = false;
    };

    const EffectSource mSource;
    const VideoEffectForm mForm;
    const std::vector<EffectParameter> mParameters;
    Settings mSettings;
    std::vector<Choice> mChoices;
    std::size_t mChoice = 0; // those before it were tried in vain
};

} // namespace trhost::effects::avfilter
