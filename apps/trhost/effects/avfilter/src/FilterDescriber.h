#pragma once

#include "../../EffectDescription.h"
#include "AvfilterSupport.h"

#include <optional>
#include <string>
#include <vector>

namespace trhost::effects::avfilter {

/// Which kind of effect a filter is for us; none when it has no place here: audio, more pictures than two,
/// two that are no transition, the ends of a graph.
std::optional<EffectKind> KindOf(const AVFilter& inFilter);

/// The filters that have a place here, in libavfilter's order.
std::vector<std::string> FilterNames();

/// All about a filter. Its formats are found by trying: those of our formats in whose carriers the filter can
/// be set up without any conversion and take a small picture. A filter that only runs with conversion has
/// none and runs in bgra8; one that does not run either way is refused with its own complaint.
/// @param inFile  that it lies in.
EffectDescription DescribeFilter(const AVFilter& inFilter, EffectKind inKind, const std::string& inFile);

} // namespace trhost::effects::avfilter
