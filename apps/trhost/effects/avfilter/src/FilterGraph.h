#pragma once

#include "AvfilterSupport.h"
#include "Carriers.h"
#include "Parameters.h"

#include <kiomediatypes/PixelAspectRatio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace trhost::effects::avfilter {

/// Times in a graph: frames of every common rate last a whole number of units.
inline constexpr AVRational kGraphTimeBase{1, 120'000};

/// What a graph is to be made for.
struct GraphForm {
    const AVFilter* filter = nullptr;
    int inputs = 1;
    Carrier carrier;
    /// Whether libavfilter may convert to and from what the filter takes.
    bool isConverting = false;
    int width = 0;
    int height = 0;
    double framesPerSecond = 25;
    kiomediatypes::PixelAspectRatio pixelShape;
    Settings settings;
};

/// One filter between as many sources as it has inputs and one sink.
///
/// It runs on the calling thread alone. Then results do not depend on the machine, and a filter that crashes
/// does so on the thread that says which one is running.
///
/// All functions run the filter's code. They give libavutil's error numbers and do not throw.
///
/// Threading: one thread at a time.
class FilterGraph {
public:
    /// Sets the filter up. @return 0, or a negative number; the graph can then only be destroyed.
    int Configure(const GraphForm& inForm) noexcept;
    /// @param ioPicture  taken; null tells that no more will come.
    int Push(int inInput, AVFrame* ioPicture) noexcept;
    /// @return AVERROR(EAGAIN) when the filter wants more input first.
    int Pull(AVFrame& outPicture) noexcept;

    /// Whether the filter says that it takes the form's carrier, found out without setting it up.
    static bool Negotiates(const GraphForm& inForm) noexcept;
    /// Sets one option of an uninitialised filter, to see whether it takes the value.
    static int TrySetting(const AVFilter& inFilter, const std::string& inOption,
                          const std::string& inValue) noexcept;
    /// How many inputs and outputs a filter has with its presets, where that is not fixed.
    static bool CountPads(const AVFilter& inFilter, int& outInputs, int& outOutputs) noexcept;

private:
    int Make() noexcept;
    int AddFilter(const GraphForm& inForm) noexcept;
    int AddSource(const GraphForm& inForm, int inInput, AVFilterContext* inBefore) noexcept;
    int AddSink(const GraphForm& inForm) noexcept;

    GraphPtr mGraph;
    AVFilterContext* mFilter = nullptr;
    std::vector<AVFilterContext*> mSources;
    AVFilterContext* mSink = nullptr;
};

} // namespace trhost::effects::avfilter
