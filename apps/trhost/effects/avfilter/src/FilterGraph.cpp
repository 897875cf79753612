#include "FilterGraph.h"

#include "FilterKnowledge.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
#include <libavutil/opt.h>
}

#include <cstring>

namespace trhost::effects::avfilter {
namespace {

constexpr int kMostOfRate = 1'001'000;

struct FreeMemory {
    void operator()(void* inMemory) const noexcept { av_free(inMemory); }
};

AVRational RateOf(const GraphForm& inForm)
{
    return av_d2q(inForm.framesPerSecond, kMostOfRate);
}

int Set(AVFilterContext& ioFilter, const char* inOption, const char* inValue)
{
    return av_opt_set(&ioFilter, inOption, inValue, AV_OPT_SEARCH_CHILDREN);
}

int SetPresets(AVFilterContext& ioFilter)
{
    for (const Setting& preset : Presets()) {
        if (std::strcmp(preset.filter, ioFilter.filter->name) == 0) {
            if (const int result = Set(ioFilter, preset.option, preset.value); result < 0) {
                return result;
            }
        }
    }
    return 0;
}

/// Sources are as large and as fast as the form wants, where they can be told.
int SetForm(AVFilterContext& ioFilter, const GraphForm& inForm)
{
    int result = 0;
    if (const AVOption* size = SizeOptionOf(*ioFilter.filter); size && inForm.inputs == 0) {
        result =
            av_opt_set_image_size(&ioFilter, size->name, inForm.width, inForm.height, AV_OPT_SEARCH_CHILDREN);
    }
    if (const AVOption* rate = RateOptionOf(*ioFilter.filter); rate && inForm.inputs == 0 && result >= 0) {
        result = av_opt_set_video_rate(&ioFilter, rate->name, RateOf(inForm), AV_OPT_SEARCH_CHILDREN);
    }
    return result;
}

} // namespace

int FilterGraph::Make() noexcept
{
    mGraph.reset(avfilter_graph_alloc());
    if (!mGraph) {
        return AVERROR(ENOMEM);
    }
    mGraph->nb_threads = 1; // see the class
    mGraph->thread_type = 0;
    return 0;
}

int FilterGraph::AddFilter(const GraphForm& inForm) noexcept
{
    mFilter = avfilter_graph_alloc_filter(mGraph.get(), inForm.filter, inForm.filter->name);
    if (!mFilter) {
        return AVERROR(ENOMEM);
    }
    int result = SetPresets(*mFilter);
    for (auto setting = inForm.settings.begin(); result >= 0 && setting != inForm.settings.end(); ++setting) {
        result = Set(*mFilter, setting->first.c_str(), setting->second.c_str());
    }
    if (result >= 0) {
        result = SetForm(*mFilter, inForm);
    }
    if (result >= 0) {
        result = avfilter_init_str(mFilter, nullptr);
    }
    if (result >= 0 && (int(mFilter->nb_inputs) != inForm.inputs || mFilter->nb_outputs != 1)) {
        av_log(mFilter, AV_LOG_ERROR, "has %u inputs and %u outputs so, expected %d and 1\n",
               mFilter->nb_inputs, mFilter->nb_outputs, inForm.inputs);
        result = AVERROR(EINVAL);
    }
    return result;
}

int FilterGraph::AddSource(const GraphForm& inForm, int inInput, AVFilterContext* inBefore) noexcept
{
    AVFilterContext* const source =
        avfilter_graph_alloc_filter(mGraph.get(), avfilter_get_by_name("buffer"), "in");
    const std::unique_ptr<AVBufferSrcParameters, FreeMemory> parameters(av_buffersrc_parameters_alloc());
    if (!source || !parameters) {
        return AVERROR(ENOMEM);
    }
    parameters->format = inForm.carrier.format;
    parameters->time_base = kGraphTimeBase;
    parameters->width = inForm.width;
    parameters->height = inForm.height;
    parameters->sample_aspect_ratio = {int(inForm.pixelShape.numerator), int(inForm.pixelShape.denominator)};
    parameters->frame_rate = RateOf(inForm);
    int result = av_buffersrc_parameters_set(source, parameters.get());
    if (result >= 0) {
        result = avfilter_init_str(source, nullptr);
    }
    if (result >= 0 && inBefore) {
        result = avfilter_link(source, 0, inBefore, 0);
    }
    if (result >= 0) {
        result = avfilter_link(inBefore ? inBefore : source, 0, mFilter, unsigned(inInput));
    }
    try {
        mSources.push_back(source);
    } catch (const std::bad_alloc&) {
        return AVERROR(ENOMEM);
    }
    return result;
}

int FilterGraph::AddSink(const GraphForm& inForm) noexcept
{
    mSink = avfilter_graph_alloc_filter(mGraph.get(), avfilter_get_by_name("buffersink"), "out");
    if (!mSink) {
        return AVERROR(ENOMEM);
    }
    const AVPixelFormat format = inForm.carrier.format;
    int result = av_opt_set_bin(mSink, "pix_fmts", reinterpret_cast<const std::uint8_t*>(&format),
                                sizeof format, AV_OPT_SEARCH_CHILDREN);
    if (result >= 0) {
        result = avfilter_init_str(mSink, nullptr);
    }
    return result < 0 ? result : avfilter_link(mFilter, 0, mSink, 0);
}

int FilterGraph::Configure(const GraphForm& inForm) noexcept
{
    int result = Make();
    if (result >= 0) {
        avfilter_graph_set_auto_convert(
            mGraph.get(),
            unsigned(inForm.isConverting ? AVFILTER_AUTO_CONVERT_ALL : AVFILTER_AUTO_CONVERT_NONE));
        mGraph->scale_sws_opts = av_strdup("flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp");
        result = AddFilter(inForm);
    }
    for (int input = 0; result >= 0 && input < inForm.inputs; ++input) {
        result = AddSource(inForm, input, nullptr);
    }
    if (result >= 0) {
        result = AddSink(inForm);
    }
    return result < 0 ? result : avfilter_graph_config(mGraph.get(), nullptr);
}

int FilterGraph::Push(int inInput, AVFrame* ioPicture) noexcept
{
    return av_buffersrc_add_frame(mSources[std::size_t(inInput)], ioPicture);
}

int FilterGraph::Pull(AVFrame& outPicture) noexcept
{
    return av_buffersink_get_frame(mSink, &outPicture);
}

bool FilterGraph::Negotiates(const GraphForm& inForm) noexcept
{
    // Formats are agreed on before anything is set up, and that goes from the source on: a neighbour that
    // cannot be set up keeps the filter from being, after all has been agreed.
    FilterGraph graph;
    if (inForm.inputs != 1 || graph.Make() < 0) {
        return false;
    }
    avfilter_graph_set_auto_convert(graph.mGraph.get(), unsigned(AVFILTER_AUTO_CONVERT_NONE));
    AVFilterContext* stumbling = nullptr;
    if (avfilter_graph_create_filter(&stumbling, avfilter_get_by_name("crop"), "stumbling", "w=2*iw", nullptr,
                                     graph.mGraph.get()) < 0 ||
        graph.AddFilter(inForm) < 0 || graph.AddSource(inForm, 0, stumbling) < 0 ||
        graph.AddSink(inForm) < 0) {
        return false;
    }
    avfilter_graph_config(graph.mGraph.get(), nullptr);
    const AVFilterLink* const link = graph.mFilter->outputs[0];
    return link && link->format == inForm.carrier.format;
}

int FilterGraph::TrySetting(const AVFilter& inFilter, const std::string& inOption,
                            const std::string& inValue) noexcept
{
    FilterGraph graph;
    if (const int result = graph.Make(); result < 0) {
        return result;
    }
    AVFilterContext* const filter = avfilter_graph_alloc_filter(graph.mGraph.get(), &inFilter, inFilter.name);
    return filter ? Set(*filter, inOption.c_str(), inValue.c_str()) : AVERROR(ENOMEM);
}

bool FilterGraph::CountPads(const AVFilter& inFilter, int& outInputs, int& outOutputs) noexcept
{
    FilterGraph graph;
    if (graph.Make() < 0) {
        return false;
    }
    AVFilterContext* const filter = avfilter_graph_alloc_filter(graph.mGraph.get(), &inFilter, inFilter.name);
    if (!filter || SetPresets(*filter) < 0 || avfilter_init_str(filter, nullptr) < 0) {
        return false;
    }
    const auto isVideo = [](const AVFilterPad* inPads, unsigned inCount) {
        for (unsigned i = 0; i < inCount; ++i) {
            if (avfilter_pad_get_type(inPads, int(i)) != AVMEDIA_TYPE_VIDEO) {
                return false;
            }
        }
        return true;
    };
    outInputs = int(filter->nb_inputs);
    outOutputs = int(filter->nb_outputs);
    return isVideo(filter->input_pads, filter->nb_inputs) && isVideo(filter->output_pads, filter->nb_outputs);
}

} // namespace trhost::effects::avfilter
