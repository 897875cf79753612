#include "FilterDescriber.h"

#include "Carriers.h"
#include "Devices.h"
#include "FilterGraph.h"
#include "FilterKnowledge.h"
#include "FrameTransfer.h"
#include "Parameters.h"
#include "support/KeptText.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>

#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace trhost::effects::avfilter {
namespace {

using namespace kiomediatypes;

struct Size {
    int width;
    int height;
    friend auto operator<=>(const Size&, const Size&) = default;
};
// Large enough for the blocks and borders that most filters work with, small enough for all to be done at
// once; and one for those that draw scopes.
constexpr Size kTrialSizes[] = {{64, 48}, {720, 576}};

/// A picture of every format with something in it.
MF::IVideoFrameRef TrialPicture(PixelFormat inFormat, Size inSize)
{
    const auto width = std::uint32_t(inSize.width);
    const auto height = std::uint32_t(inSize.height);
    MF::IVideoFrameRef drawn;
    MF::IVideoFrameRef picture;
    if (!VF::CreateVideoFrame(drawn, kPixelFormat_BGRA_4444_8u, width, height, kPixelAspectRatio_Square,
                              false, false) ||
        !VF::CreateVideoFrame(picture, inFormat, width, height, kPixelAspectRatio_Square, false, false) ||
        !drawn->InitializePixels(0) || !picture->InitializePixels(0)) {
        throw std::bad_alloc();
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(drawn);
    for (int y = 0; y < inSize.height; ++y) {
        std::byte* const row = memory->GetWritablePixels() + std::size_t(y) * memory->GetRowBytes();
        for (int x = 0; x < inSize.width; ++x) {
            row[4 * x] = std::byte(4 * x);
            row[4 * x + 1] = std::byte(5 * y);
            row[4 * x + 2] = std::byte(x / 8 % 2 == y / 8 % 2 ? 200 : 40);
            row[4 * x + 3] = std::byte(255);
        }
    }
    if (!VF::VideoFrameManipulators::CopyFrame(drawn, picture, kRenderQuality_Draft, {})) {
        throw std::bad_alloc();
    }
    picture->PrepareForSharing();
    return picture;
}

/// Drawn once, as most filters are tried in most formats.
MF::IVideoFrameRef SharedTrialPicture(PixelFormat inFormat, Size inSize)
{
    static std::mutex sLock;
    static std::map<std::pair<PixelFormat, Size>, MF::IVideoFrameRef> sPictures;
    const std::lock_guard lock(sLock);
    MF::IVideoFrameRef& picture = sPictures[{inFormat, inSize}];
    if (!picture) {
        picture = TrialPicture(inFormat, inSize);
    }
    return picture;
}

int InputsOf(EffectKind inKind)
{
    return inKind == EffectKind::kGenerator ? 0 : inKind == EffectKind::kTransition ? 2 : 1;
}

GraphForm TrialForm(const AVFilter& inFilter, EffectKind inKind, Size inSize)
{
    GraphForm form;
    form.filter = &inFilter;
    form.inputs = InputsOf(inKind);
    form.width = inSize.width;
    form.height = inSize.height;
    for (const Setting& setting : TrialSettings()) {
        if (std::string_view(setting.filter) == inFilter.name) {
            form.settings.emplace_back(setting.option, setting.value);
        }
    }
    return form;
}

/// Sets the filter up and has it take a picture; that it wants more before it gives one is fine.
int TryToRun(const GraphForm& inForm, PixelFormat inFormat)
{
    FilterGraph graph;
    int result = graph.Configure(inForm);
    for (int input = 0; result >= 0 && input < inForm.inputs; ++input) {
        const FramePtr picture =
            ToAVFrame(SharedTrialPicture(inFormat, {inForm.width, inForm.height}), inForm.carrier, 0);
        result = graph.Push(input, picture.get());
    }
    if (result >= 0) {
        const FramePtr output(Allocated(av_frame_alloc()));
        result = graph.Pull(*output);
    }
    return result == AVERROR(EAGAIN) ? 0 : result;
}

bool Takes(const AVFilter& inFilter, EffectKind inKind, PixelFormat inFormat, Size inSize)
{
    if (IsBroken(inFilter.name, inFormat)) {
        return false;
    }
    GraphForm form = TrialForm(inFilter, inKind, inSize);
    for (const Carrier& carrier : CarriersOf(inFormat)) {
        form.carrier = carrier;
        const bool takes =
            IsAskedOnly(inFilter.name) ? FilterGraph::Negotiates(form) : TryToRun(form, inFormat) >= 0;
        if (takes) {
            return true;
        }
    }
    return false;
}

/// @return why not; empty when it runs.
std::string TryWithConversion(const AVFilter& inFilter, EffectKind inKind, Size inSize)
{
    const PixelFormat format = kPixelFormat_BGRA_4444_8u;
    GraphForm form = TrialForm(inFilter, inKind, inSize);
    form.carrier = CarriersOf(format).front();
    form.isConverting = true;
    const ScFilterMessages messages;
    const int result = TryToRun(form, format);
    return result < 0 ? KeptText("$$$/Halcyon/TrHost/Effects/NotSetUp=cannot be set up: @0",
                                 {messages.Explain(result)})
                      : "";
}

std::vector<PixelFormat> FormatsAt(const AVFilter& inFilter, EffectKind inKind, Size inSize)
{
    const ScFilterMessages messages;
    std::vector<PixelFormat> formats;
    for (const PixelFormat format : FormatsByPreference()) {
        // These two have the same carriers, and there are filters that take long to set up.
        const bool isSameAsLast = format == kPixelFormat_ARGB_4444_8u;
        const bool isTaken = isSameAsLast ? !formats.empty() : Takes(inFilter, inKind, format, inSize);
        if (isTaken) {
            formats.push_back(format);
        }
    }
    return formats;
}

void FindFormats(const AVFilter& inFilter, EffectDescription& ioDescription)
{
    for (const Size size : kTrialSizes) {
        ioDescription.formats = FormatsAt(inFilter, ioDescription.kind, size);
        if (!ioDescription.formats.empty()) {
            return;
        }
    }
    for (const Size size : kTrialSizes) {
        ioDescription.refusal = TryWithConversion(inFilter, ioDescription.kind, size);
        if (ioDescription.refusal.empty()) {
            return;
        }
    }
}

const char* CategoryOf(EffectKind inKind)
{
    switch (inKind) {
    case EffectKind::kTransition:
        return "Blend";
    case EffectKind::kGenerator:
        return "Source";
    case EffectKind::kVideoFilter:
    case EffectKind::kAudioFilter:
        break;
    }
    return "Video";
}

std::string VersionText()
{
    const unsigned version = avfilter_version();
    return std::to_string(AV_VERSION_MAJOR(version)) + "." + std::to_string(AV_VERSION_MINOR(version)) + "." +
           std::to_string(AV_VERSION_MICRO(version));
}

bool AreVideo(const AVFilterPad* inPads, int inCount)
{
    for (int i = 0; i < inCount; ++i) {
        if (avfilter_pad_get_type(inPads, i) != AVMEDIA_TYPE_VIDEO) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<EffectKind> KindOf(const AVFilter& inFilter)
{
    const std::string_view name = inFilter.name;
    if (IsGraphEnd(name)) {
        return {};
    }
    int inputs = int(avfilter_filter_pad_count(&inFilter, 0));
    int outputs = int(avfilter_filter_pad_count(&inFilter, 1));
    if (!AreVideo(inFilter.inputs, inputs) || !AreVideo(inFilter.outputs, outputs)) {
        return {};
    }
    if (name == "movie") {
        return EffectKind::kGenerator; // as many outputs as its file has streams, so never any here
    }
    if (inFilter.flags & (AVFILTER_FLAG_DYNAMIC_INPUTS | AVFILTER_FLAG_DYNAMIC_OUTPUTS)) {
        const ScFilterMessages messages;
        if (!FilterGraph::CountPads(inFilter, inputs, outputs)) {
            return {};
        }
    }
    if (outputs != 1 || inputs > 2 || (inputs == 2 && !IsTransition(name))) {
        return {};
    }
    return inputs == 0   ? EffectKind::kGenerator
           : inputs == 1 ? EffectKind::kVideoFilter
                         : EffectKind::kTransition;
}

std::vector<std::string> FilterNames()
{
    std::vector<std::string> names;
    void* position = nullptr;
    while (const AVFilter* const filter = av_filter_iterate(&position)) {
        if (KindOf(*filter)) {
            names.emplace_back(filter->name);
        }
    }
    return names;
}

EffectDescription DescribeFilter(const AVFilter& inFilter, EffectKind inKind, const std::string& inFile)
{
    EffectDescription description;
    description.matchName = std::string("avfilter.") + inFilter.name;
    description.technology = "avfilter";
    description.pluginName = inFilter.name;
    description.file = inFile;
    description.displayName = inFilter.name;
    description.kind = inKind;
    description.category = CategoryOf(inKind);
    description.author = "FFmpeg";
    description.version = VersionText();
    description.explanation = inFilter.description ? inFilter.description : "";
    description.parameters = ParametersOf(inFilter);
    const char* const device = DeviceOf(inFilter.name);
    description.isAccelerated = device != nullptr;
    if (const char* const reason = ReasonNotToRun(inFilter.name)) {
        description.refusal = reason;
    } else if (device) {
        description.refusal = ReasonWithoutDevice(device);
    } else {
        FindFormats(inFilter, description);
    }
    return description;
}

} // namespace trhost::effects::avfilter
