#pragma once

#include <kiomediatypes/PixelFormat.h>

#include <span>
#include <string_view>

/// What libavfilter cannot be asked about its filters, by their names.
namespace trhost::effects::avfilter {

/// One option of a filter and what it is set to.
struct Setting {
    const char* filter;
    const char* option;
    const char* value;
};

/// Why a filter is listed and not run; null when it may run. These reach outside the process (files,
/// networks, plug-ins of their own), which an effect of a project that came from elsewhere must not, or only
/// make sense in a graph that a person has drawn.
const char* ReasonNotToRun(std::string_view inFilter);

/// The kind of device that a filter runs on, as libavutil names it: "vaapi", "opencl". Null when it runs on
/// the processor.
const char* DeviceOf(std::string_view inFilter);

/// Whether a filter of two inputs leads from one picture to another at a position between them.
bool IsTransition(std::string_view inFilter);

/// A source that only makes sense as the end of a graph.
bool IsGraphEnd(std::string_view inFilter);

/// Set before everything else, always: what keeps a filter off the file system, or makes it fit.
std::span<const Setting> Presets();
/// Set while formats are tried out, for filters that do nothing without; a user sets others.
std::span<const Setting> TrialSettings();

/// Filters that abort in a format which they say they take. They are asked for their formats, and not tried:
/// they run, and may die, when a user says so.
bool IsAskedOnly(std::string_view inFilter);

/// Formats that a filter says it takes and then ruins its memory or the picture in. They are not even tried.
bool IsBroken(std::string_view inFilter, kiomediatypes::PixelFormat inFormat);

/// Filters that take alpha for one more colour, so that opaque pictures come out transparent. They get
/// pictures without, where they take them.
bool SpoilsAlpha(std::string_view inFilter);

/// Options that are not offered: names of files to be read and written, what the form of an instance or the
/// position of a transition decides, and what changes the number of inputs. Their aliases are
/// known by where they are stored.
bool IsWithheld(std::string_view inFilter, std::string_view inOption);

} // namespace trhost::effects::avfilter
