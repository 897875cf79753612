#include "FilterKnowledge.h"

#include <algorithm>
#include <iterator>

namespace trhost::effects::avfilter {
namespace {

constexpr const char* kFiles = "$$$/Halcyon/TrHost/Effects/OpensFiles=opens files";
constexpr const char* kModel = "$$$/Halcyon/TrHost/Effects/OpensModel=opens a file with a trained model";
constexpr const char* kPlugins = "$$$/Halcyon/TrHost/Effects/LoadsPlugins=loads plug-ins of another kind";
constexpr const char* kFormatsOnly = "$$$/Halcyon/TrHost/Effects/ChoosesFormats=only chooses formats within "
                                     "a graph, and does nothing by itself";
constexpr const char* kGraphOnly = "$$$/Halcyon/TrHost/Effects/MovesPictures=only moves pictures to a device "
                                   "and back, and does nothing by itself";

struct Refusal {
    const char* filter;
    const char* reason;
};
constexpr Refusal kRefusals[] = {
    {"amovie", kFiles},
    {"ass", kFiles},
    {"cover_rect", kFiles},
    {"derain", kModel},
    {"dnn_classify", kModel},
    {"dnn_detect", kModel},
    {"dnn_processing", kModel},
    {"fieldhint", kFiles},
    {"find_rect", kFiles},
    {"format", kFormatsOnly},
    {"frei0r", kPlugins},
    {"frei0r_src", kPlugins},
    {"hwdownload", kGraphOnly},
    {"hwmap", kGraphOnly},
    {"hwupload", kGraphOnly},
    {"ladspa", kPlugins},
    {"lut1d", kFiles},
    {"lut3d", kFiles},
    {"movie", kFiles},
    {"nnedi", kModel},
    {"noformat", kFormatsOnly},
    {"nullsrc", "$$$/Halcyon/TrHost/Effects/GivesMemory=gives pictures of whatever lies in memory"},
    {"ocr", kFiles},
    {"removelogo", kFiles},
    {"sendcmd", "$$$/Halcyon/TrHost/Effects/SendsCommands=sends commands to other filters of a graph, and "
                "does nothing by itself"},
    {"sr", kModel},
    {"subtitles", kFiles},
    {"vidstabtransform", "$$$/Halcyon/TrHost/Effects/OpensDetected=opens the file that vidstabdetect wrote"},
    {"zmq", "$$$/Halcyon/TrHost/Effects/OpensSocket=opens a network socket"},
};

struct Device {
    std::string_view ending;
    const char* kind;
};
constexpr Device kDevices[] = {
    {"_vaapi", "vaapi"},     {"_opencl", "opencl"},
    {"openclsrc", "opencl"}, {"_cuda", "cuda"},
    {"_npp", "cuda"},        {"_qsv", "qsv"},
    {"_vulkan", "vulkan"},   {"libplacebo", "vulkan"},
    {"_amf", "amf"},         {"_videotoolbox", "videotoolbox"},
    {"_vt", "videotoolbox"},
};

// Of what takes two pictures, most want the second for something else: a mask, a palette, a kernel, a
// reference to measure by; or put both side by side. These lead from one to the other.
constexpr std::string_view kTransitions[] = {"blend", "mix", "overlay", "xfade"};

constexpr Setting kPresets[] = {
    {"overlay", "format", "rgb"}, // by default it takes only YUV, whose alpha none of our formats has
    {"premultiply", "inplace", "1"},
    {"unpremultiply", "inplace", "1"},
    {"vidstabdetect", "result", "/dev/null"},
};

constexpr Setting kTrialSettings[] = {
    {"colorspace", "all", "bt709"},
    {"colorspace", "iall", "bt601-6-625"},
    {"colormatrix", "src", "bt601"},
    {"colormatrix", "dst", "bt709"},
    {"delogo", "x", "8"},
    {"delogo", "y", "8"},
    {"delogo", "w", "8"},
    {"delogo", "h", "8"},
    {"drawtext", "text", "Text"},
    {"geq", "lum_expr", "p(X,Y)"},
    {"metadata", "mode", "print"},
    {"sidedata", "type", "PANSCAN"},
    {"untile", "layout", "2x2"},
};

struct BrokenFormat {
    std::string_view filter;
    kiomediatypes::PixelFormat format;
};
constexpr BrokenFormat kBrokenFormats[] = {
    // Takes planes of floats for planes of 16 bits, and writes past the end of its own memory.
    {"boxblur", kiomediatypes::kPixelFormat_BGRA_4444_32f},
    // Adds to the bytes of floats.
    {"noise", kiomediatypes::kPixelFormat_BGRA_4444_32f},
    {"noise", kiomediatypes::kPixelFormat_BGRA_4444_16u},
};

// Everything that takes the name of a file, whatever the filter.
constexpr std::string_view kFileOptions[] = {
    "custom_shader_bin",
    "custom_shader_path",
    "file",
    "filename",
    "fontfile",
    "fontsdir",
    "hint",
    "labels",
    "model",
    "plot",
    "psfile",
    "stats_file",
    "textfile",
};

constexpr std::string_view kAlphaSpoilers[] = {
    "datascope", "fade",        "histeq",  "kirsch", "maskfun",
    "prewitt",   "pseudocolor", "roberts", "scharr", "sobel",
};

struct FilterOption {
    std::string_view filter;
    std::string_view option;
};
constexpr FilterOption kWithheld[] = {
    // Files.
    {"vidstabdetect", "result"},
    {"vidstabtransform", "input"},
    {"nnedi", "weights"},
    // What the position of a transition decides.
    {"xfade", "duration"},
    {"xfade", "offset"},
    {"blend", "all_opacity"},
    {"blend", "c0_opacity"},
    {"blend", "c1_opacity"},
    {"blend", "c2_opacity"},
    {"blend", "c3_opacity"},
    {"blend", "c3_mode"},
    {"blend", "c3_expr"},
    {"mix", "weights"},
    {"mix", "scale"},
    {"mix", "duration"},
    {"overlay", "format"},
    {"overlay", "eof_action"},
    {"overlay", "shortest"},
    {"overlay", "repeatlast"},
    // What changes the number of inputs or outputs.
    {"bm3d", "ref"},
    {"extractplanes", "planes"},
    {"fieldmatch", "ppsrc"},
    {"guided", "guidance"},
    {"mergeplanes", "mapping"},
    {"mix", "inputs"},
    {"premultiply", "inplace"},
    {"select", "outputs"},
    {"signature", "nb_inputs"},
    {"unpremultiply", "inplace"},
};

template <typename Range>
bool Contains(const Range& inNames, std::string_view inName)
{
    return std::find(std::begin(inNames), std::end(inNames), inName) != std::end(inNames);
}

} // namespace

const char* ReasonNotToRun(std::string_view inFilter)
{
    for (const Refusal& refusal : kRefusals) {
        if (inFilter == refusal.filter) {
            return refusal.reason;
        }
    }
    return nullptr;
}

const char* DeviceOf(std::string_view inFilter)
{
    for (const Device& device : kDevices) {
        if (inFilter.ends_with(device.ending)) {
            return device.kind;
        }
    }
    return nullptr;
}

bool IsTransition(std::string_view inFilter)
{
    if (DeviceOf(inFilter)) {
        inFilter = inFilter.substr(0, inFilter.rfind('_'));
    }
    return Contains(kTransitions, inFilter);
}

bool IsGraphEnd(std::string_view inFilter)
{
    return inFilter == "buffer" || inFilter == "buffersink" || inFilter == "nullsink";
}

std::span<const Setting> Presets()
{
    return kPresets;
}

std::span<const Setting> TrialSettings()
{
    return kTrialSettings;
}

bool IsAskedOnly(std::string_view inFilter)
{
    return inFilter == "vidstabdetect"; // in RGB
}

bool IsBroken(std::string_view inFilter, kiomediatypes::PixelFormat inFormat)
{
    return std::any_of(std::begin(kBrokenFormats), std::end(kBrokenFormats),
                       [&](const BrokenFormat& inBroken) {
                           return inBroken.filter == inFilter && inBroken.format == inFormat;
                       });
}

bool SpoilsAlpha(std::string_view inFilter)
{
    return Contains(kAlphaSpoilers, inFilter);
}

bool IsWithheld(std::string_view inFilter, std::string_view inOption)
{
    return Contains(kFileOptions, inOption) ||
           std::any_of(std::begin(kWithheld), std::end(kWithheld), [&](const FilterOption& inWithheld) {
               return inWithheld.filter == inFilter && inWithheld.option == inOption;
           });
}

} // namespace trhost::effects::avfilter
