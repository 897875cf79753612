#pragma once

#include "../../EffectDescription.h"
#include "AvfilterSupport.h"

#include <string>
#include <utility>
#include <vector>

namespace trhost::effects::avfilter {

/// What is to be set on a filter before it is initialised: option and value as libavutil reads them.
using Settings = std::vector<std::pair<std::string, std::string>>;

/// The options of a filter that a user may set (see IsWithheld), each under its first name only.
///   switches -> bool, those that may be left to the filter -> choice of "auto", "false", "true"
///   whole numbers -> integer, or choice where the values have names; numbers are taken too then
///   floating numbers -> number; spans of time -> number, in seconds
///   colours -> color
///   everything else (expressions, sizes, rates, fractions, sets of flags) -> text as libavfilter reads it
std::vector<EffectParameter> ParametersOf(const AVFilter& inFilter);

/// The option of a filter that holds the size, or the rate, of what a source makes; null when it has none.
const AVOption* SizeOptionOf(const AVFilter& inFilter);
const AVOption* RateOptionOf(const AVFilter& inFilter);

/// A user's value as libavutil reads it; numbers beyond the range are moved to its nearer end.
/// @param inWhose  match name, for the message.
/// @throws kio_exception (kEffectError_BadParameter) naming what is expected.
std::string ToOptionValue(const std::string& inWhose, const EffectParameter& inParameter,
                          const std::string& inValue);

} // namespace trhost::effects::avfilter
