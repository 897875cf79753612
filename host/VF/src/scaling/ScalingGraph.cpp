#include "ScalingGraph.h"

#include "frames/FrameMemory.h"

#include <algorithm>
#include <list>
#include <mutex>
#include <new>
#include <utility>
#include <zimg.h>

namespace VF {
namespace {

using namespace kiomediatypes;

constexpr std::size_t kLineAlignment = 64;
constexpr std::size_t kKeptGraphs = 32; // of about half a megabyte each

std::string LastError()
{
    char text[256] = "";
    const int code = zimg_get_last_error(text, sizeof(text));
    return "zimg error " + std::to_string(code) + ": " + text;
}

zimg_image_format FormatOf(const GraphImage& inImage, bool inWithPrimariesAndTransfer)
{
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = inImage.width;
    format.height = inImage.height;
    format.pixel_type = inImage.form.type == SampleType::kByte   ? ZIMG_PIXEL_BYTE
                        : inImage.form.type == SampleType::kWord ? ZIMG_PIXEL_WORD
                                                                 : ZIMG_PIXEL_FLOAT;
    format.depth = inImage.form.depth;
    format.subsample_w = inImage.form.chromaShiftX;
    format.subsample_h = inImage.form.chromaShiftY;
    format.chroma_location = ZIMG_CHROMA_LEFT;
    const color::ColorSpace& space = inImage.colorSpace;
    if (inImage.form.yuv) {
        format.color_family = ZIMG_COLOR_YUV;
        // 5 and 6 are the same numbers under two names.
        format.matrix_coefficients = space.matrix == color::Matrix::kBT601_625
                                         ? ZIMG_MATRIX_ST170_M
                                         : static_cast<zimg_matrix_coefficients_e>(space.matrix);
        format.pixel_range = space.range == color::Range::kFull ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    } else {
        format.color_family = ZIMG_COLOR_RGB;
        format.matrix_coefficients = ZIMG_MATRIX_RGB;
        format.pixel_range = ZIMG_RANGE_FULL;
    }
    if (inWithPrimariesAndTransfer) {
        format.color_primaries = static_cast<zimg_color_primaries_e>(space.primaries);
        format.transfer_characteristics = static_cast<zimg_transfer_characteristics_e>(space.transfer);
    }
    // Straight alpha would have zimg multiply and divide; we do that where it is needed.
    format.alpha = inImage.alpha ? ZIMG_ALPHA_PREMULTIPLIED : ZIMG_ALPHA_NONE;
    return format;
}

void SetFilter(Filter inFilter, zimg_resample_filter_e& outFilter, double& outA, double& outB)
{
    switch (inFilter) {
    case Filter::kTriangle:
        outFilter = ZIMG_RESIZE_BILINEAR;
        break;
    case Filter::kCubic:
        outFilter = ZIMG_RESIZE_BICUBIC;
        outA = 0;
        outB = 0.5;
        break;
    case Filter::kLanczos:
        outFilter = ZIMG_RESIZE_LANCZOS;
        outA = 3;
        break;
    }
}

struct FreeGraph {
    void operator()(zimg_filter_graph* inGraph) const { zimg_filter_graph_free(inGraph); }
};
using GraphHandle = std::unique_ptr<zimg_filter_graph, FreeGraph>;

/// Where the rows of one side lie in the working memory. A plane holds a power of two of rows and begins
/// anew with row 0 then, or all rows.
struct Lines {
    struct Plane {
        std::size_t offset = 0;
        std::size_t rowBytes = 0;
        unsigned mask = 0;
    };
    Plane planes[4];
    int count = 3;
    unsigned shiftY = 0;

    std::size_t Lay(const GraphImage& inImage, unsigned inRows, std::size_t inOffset)
    {
        count = inImage.alpha ? 4 : 3;
        shiftY = inImage.form.chromaShiftY;
        const unsigned mask = inRows >= inImage.height ? ZIMG_BUFFER_MAX : zimg_select_buffer_mask(inRows);
        for (int index = 0; index < count; ++index) {
            const bool chroma = index == 1 || index == 2;
            const unsigned down = chroma ? shiftY : 0;
            Plane& plane = planes[index];
            plane.offset = inOffset;
            plane.mask = mask == ZIMG_BUFFER_MAX ? mask : mask >> down;
            const std::size_t samples = inImage.width >> (chroma ? inImage.form.chromaShiftX : 0);
            plane.rowBytes =
                (samples * SampleBytes(inImage.form.type) + kLineSlackBytes + kLineAlignment - 1) /
                kLineAlignment * kLineAlignment;
            const std::size_t rows = mask == ZIMG_BUFFER_MAX ? inImage.height >> down : plane.mask + 1;
            inOffset += plane.rowBytes * rows;
        }
        return inOffset;
    }
    RowPlanes At(std::byte* inMemory, unsigned inRow) const
    {
        RowPlanes rows;
        for (int index = 0; index < count; ++index) {
            const Plane& plane = planes[index];
            const unsigned row = index == 1 || index == 2 ? inRow >> shiftY : inRow;
            rows.planes[index] = inMemory + plane.offset + (row & plane.mask) * plane.rowBytes;
        }
        return rows;
    }
};

struct Callbacks {
    IRowReader& reader;
    IRowWriter& writer;
    const Lines& sourceLines;
    const Lines& destinationLines;
    std::byte* memory;
    bool gaveUp = false;
    bool outOfMemory = false;

    static int Read(void* inSelf, unsigned inRow, unsigned inLeft, unsigned inRight)
    {
        auto& self = *static_cast<Callbacks*>(inSelf);
        const RowPlanes rows[2] = {self.sourceLines.At(self.memory, inRow),
                                   self.sourceLines.At(self.memory, inRow + 1)};
        try {
            self.gaveUp = !self.reader.Read(inRow, inLeft, inRight, rows);
        } catch (const std::bad_alloc&) { // no exception may cross zimg
            self.outOfMemory = true;
        }
        return self.gaveUp || self.outOfMemory;
    }
    static int Write(void* inSelf, unsigned inRow, unsigned inLeft, unsigned inRight)
    {
        auto& self = *static_cast<Callbacks*>(inSelf);
        const RowPlanes rows[2] = {self.destinationLines.At(self.memory, inRow),
                                   self.destinationLines.At(self.memory, inRow + 1)};
        self.writer.Write(inRow, inLeft, inRight, rows);
        return 0;
    }
};

class Graph final : public ScalingGraph {
public:
    bool Build(const GraphPlan& inPlan, std::string& outError)
    {
        zimg_image_format source = FormatOf(inPlan.source, inPlan.convertPrimariesAndTransfer);
        const zimg_image_format destination =
            FormatOf(inPlan.destination, inPlan.convertPrimariesAndTransfer);
        source.active_region.left = inPlan.left;
        source.active_region.top = inPlan.top;
        source.active_region.width = inPlan.width;
        source.active_region.height = inPlan.height;
        zimg_graph_builder_params parameters;
        zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
        SetFilter(inPlan.filter, parameters.resample_filter, parameters.filter_param_a,
                  parameters.filter_param_b);
        SetFilter(inPlan.chromaFilter, parameters.resample_filter_uv, parameters.filter_param_a_uv,
                  parameters.filter_param_b_uv);
        mGraph.reset(zimg_filter_graph_build(&source, &destination, &parameters));
        unsigned readRows = 0;
        unsigned writtenRows = 0;
        if (!mGraph || zimg_filter_graph_get_tmp_size(mGraph.get(), &mOwnBytes) ||
            zimg_filter_graph_get_input_buffering(mGraph.get(), &readRows) ||
            zimg_filter_graph_get_output_buffering(mGraph.get(), &writtenRows)) {
            outError = LastError();
            return false;
        }
        if (inPlan.source.form.chromaShiftY && inPlan.source.form.type == SampleType::kFloat) {
            // zimg 3.0 takes float luma from these rows last, after it has read ahead for the chroma, and
            // does not count that.
            readRows = std::min(readRows, inPlan.source.height) * 2;
        }
        mOwnBytes = (mOwnBytes + kLineAlignment - 1) / kLineAlignment * kLineAlignment;
        mTotalBytes = mSource.Lay(inPlan.source, readRows, mOwnBytes);
        mTotalBytes = mDestination.Lay(inPlan.destination, writtenRows, mTotalBytes);
        return true;
    }

    bool Run(IRowReader& inReader, IRowWriter& inWriter, std::string& outError) const override
    {
        const FrameMemory memory = AllocateFrameMemory(mTotalBytes, false);
        if (!memory) {
            outError = "out of memory";
            return false;
        }
        zimg_image_buffer_const source{};
        zimg_image_buffer destination{};
        source.version = destination.version = ZIMG_API_VERSION;
        for (int index = 0; index < mSource.count; ++index) {
            const Lines::Plane& plane = mSource.planes[index];
            source.plane[index] = {memory.get() + plane.offset, static_cast<std::ptrdiff_t>(plane.rowBytes),
                                   plane.mask};
        }
        for (int index = 0; index < mDestination.count; ++index) {
            const Lines::Plane& plane = mDestination.planes[index];
            destination.plane[index] = {memory.get() + plane.offset,
                                        static_cast<std::ptrdiff_t>(plane.rowBytes), plane.mask};
        }
        Callbacks callbacks{inReader, inWriter, mSource, mDestination, memory.get()};
        if (zimg_filter_graph_process(mGraph.get(), &source, &destination, memory.get(), Callbacks::Read,
                                      &callbacks, Callbacks::Write, &callbacks)) {
            if (!callbacks.gaveUp) {
                outError = callbacks.outOfMemory ? "out of memory" : LastError();
            }
            return false;
        }
        return true;
    }

private:
    GraphHandle mGraph;
    std::size_t mOwnBytes = 0; // zimg's own, which come first
    std::size_t mTotalBytes = 0;
    Lines mSource;
    Lines mDestination;
};

struct KeptGraph {
    GraphPlan plan;
    std::shared_ptr<const ScalingGraph> graph;
};
struct Kept {
    std::mutex lock;
    std::list<KeptGraph> graphs; // most recently used first
};
Kept& GetKept()
{
    static auto& kept = *new Kept; // leaked: frames may be converted until the very end
    return kept;
}

std::shared_ptr<const ScalingGraph> FindKept(const GraphPlan& inPlan)
{
    Kept& kept = GetKept();
    const std::lock_guard guard(kept.lock);
    const auto found = std::find_if(kept.graphs.begin(), kept.graphs.end(),
                                    [&](const KeptGraph& inKept) { return inKept.plan == inPlan; });
    if (found == kept.graphs.end()) {
        return {};
    }
    kept.graphs.splice(kept.graphs.begin(), kept.graphs, found);
    return found->graph;
}

void Keep(const GraphPlan& inPlan, const std::shared_ptr<const ScalingGraph>& inGraph)
{
    std::list<KeptGraph> added{{inPlan, inGraph}};
    std::list<KeptGraph> surplus; // let go of unlocked
    Kept& kept = GetKept();
    const std::lock_guard guard(kept.lock);
    kept.graphs.splice(kept.graphs.begin(), added);
    if (kept.graphs.size() > kKeptGraphs) {
        surplus.splice(surplus.begin(), kept.graphs, std::prev(kept.graphs.end()));
    }
}

} // namespace

std::shared_ptr<const ScalingGraph> ScalingGraph::Get(const GraphPlan& inPlan, std::string& outError)
{
    if (auto found = FindKept(inPlan)) {
        return found;
    }
    const auto graph = std::make_shared<Graph>();
    if (!graph->Build(inPlan, outError)) {
        return {};
    }
    Keep(inPlan, graph);
    return graph;
}

} // namespace VF
