#include "VideoEffectBase.h"

#include "FilterKnowledge.h"
#include "FrameTransfer.h"
#include "support/KeptText.h"

#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>

#include <algorithm>
#include <utility>

namespace trhost::effects::avfilter {

using kiocore::kio_exception;

VideoEffectBase::VideoEffectBase(EffectSource inSource, const VideoEffectForm& inForm)
    : mSource(std::move(inSource)), mForm(inForm), mParameters(ParametersOf(*mSource.filter))
{
    const auto carriers = CarriersOf(mForm.format);
    if (!mSource.isConverting) {
        for (const Carrier& carrier : carriers) {
            mChoices.push_back({carrier, false});
        }
    }
    if (SpoilsAlpha(mSource.filter->name)) {
        std::stable_partition(mChoices.begin(), mChoices.end(),
                              [](const Choice& inChoice) { return !inChoice.carrier.hasAlpha; });
    }
    // Parameters may leave a filter with other formats than it was described with.
    mChoices.push_back({carriers.front(), true});
}

void VideoEffectBase::SetParameter(const std::string& inName, const std::string& inValue)
{
    const auto parameter =
        std::find_if(mParameters.begin(), mParameters.end(),
                     [&](const EffectParameter& inParameter) { return inParameter.name == inName; });
    if (parameter == mParameters.end()) {
        throw kio_exception(
            KeptText(
                "$$$/Halcyon/TrHost/Effects/HasNoParameter=@0: has no parameter \"@1\"#{@0: a match name}",
                {mSource.matchName, inName}),
            kEffectError_BadParameter);
    }
    std::string value = ToOptionValue(mSource.matchName, *parameter, inValue);
    std::string problem;
    if (Call([&] { return FilterGraph::TrySetting(*mSource.filter, inName, value); }, problem) < 0) {
        throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/ParameterTakesNot=@0: parameter @1 does not "
                                     "take \"@2\": @3#{@0: a match name, @3: a reason}",
                                     {mSource.matchName, inName, inValue, problem}),
                            kEffectError_BadParameter);
    }
    std::erase_if(mSettings, [&](const auto& inSetting) { return inSetting.first == inName; });
    mSettings.emplace_back(inName, std::move(value));
}

void VideoEffectBase::CheckInputs(const std::vector<MF::IVideoFrameRef>& inInputs) const
{
    const auto size = [](std::uint32_t inWidth, std::uint32_t inHeight, kiomediatypes::PixelFormat inFormat) {
        return std::to_string(inWidth) + "x" + std::to_string(inHeight) + " " +
               kiomediatypes::NameOf(inFormat);
    };
    const std::string expected = size(mForm.width, mForm.height, mForm.format);
    if (int(inInputs.size()) != mSource.inputs) {
        throw kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/GivenCount=@0: was given @1 pictures, expected @2#{@0: a "
                     "match name}",
                     {mSource.matchName, std::to_string(inInputs.size()), std::to_string(mSource.inputs)}),
            kEffectError_BadFrame);
    }
    for (const MF::IVideoFrameRef& frame : inInputs) {
        const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(frame);
        if (!memory || !memory->GetPixels()) {
            throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/GivenNoMemory=@0: was given a picture "
                                         "without memory, expected @1#{@0: a match name, @1: 640x480 bgra8}",
                                         {mSource.matchName, expected}),
                                kEffectError_BadFrame);
        }
        const std::string found = size(frame->GetWidth(), frame->GetHeight(), frame->GetPixelFormat());
        if (found != expected) {
            throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/GivenPicture=@0: was given a picture of "
                                         "@1, expected @2#{@0: a match name, @1 and @2: 640x480 bgra8}",
                                         {mSource.matchName, found, expected}),
                                kEffectError_BadFrame);
        }
    }
}

void VideoEffectBase::FailPlugin(const std::string& inProblem) const
{
    throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NamedReason=@0: @1#{@0: a match name, @1: a "
                                 "reason, such as: opens files}",
                                 {mSource.matchName, inProblem}),
                        kEffectError_PluginFailed);
}

int VideoEffectBase::Call(const std::function<int()>& inFunction, std::string& outProblem) const
{
    int result = 0;
    mSource.call([&] {
        const ScFilterMessages messages;
        result = inFunction();
        if (result < 0) {
            outProblem = messages.Explain(result);
        }
    });
    return result;
}

std::unique_ptr<FilterGraph> VideoEffectBase::MakeGraph(const Settings& inSettings,
                                                        const std::vector<MF::IVideoFrameRef>& inInputs)
{
    GraphForm form;
    form.filter = mSource.filter;
    form.inputs = mSource.inputs;
    form.width = int(mForm.width);
    form.height = int(mForm.height);
    form.framesPerSecond = mForm.framesPerSecond;
    form.settings = inSettings;
    if (!inInputs.empty()) {
        form.pixelShape = inInputs.front()->GetPixelAspectRatio();
    }
    std::string problem;
    for (std::size_t choice = mChoice; choice < mChoices.size(); ++choice) {
        form.carrier = mChoices[choice].carrier;
        form.isConverting = mChoices[choice].isConverting;
        auto graph = std::make_unique<FilterGraph>();
        int result = 0;
        std::string reason;
        result = Call(
            [&] {
                const int configured = graph->Configure(form);
                if (configured < 0) {
                    graph.reset(); // frees what the filter has, so it is a call like the others
                }
                return configured;
            },
            reason);
        if (result >= 0) {
            mChoice = choice;
            return graph;
        }
        problem = reason; // of the last, which converts: the others may have failed by the format alone
    }
    FailPlugin(KeptText("$$$/Halcyon/TrHost/Effects/CouldNotBeSetUp=could not be set up: @0", {problem}));
}

MF::IVideoFrameRef VideoEffectBase::ToOurs(const AVFrame& inPicture, const MF::IVideoFrameRef& inLike) const
{
    MF::IVideoFrameRef frame = FromAVFrame(inPicture, CarrierInUse(), mForm.format, inLike);
    if (!frame) {
        FailPlugin(KeptText("$$$/Halcyon/TrHost/Effects/GavePicture=gave a picture of @0, which no frame can "
                            "hold#{@0: 640x480}",
                            {std::to_string(inPicture.width) + "x" + std::to_string(inPicture.height)}));
    }
    return frame;
}

} // namespace trhost::effects::avfilter
