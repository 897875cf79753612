#pragma once

#include "EffectDescription.h"

#include <string>
#include <string_view>
#include <vector>

/// What engines make of the texts that plug-ins have for their parameters, and of those that users set them
/// to.
///
/// Threading: any thread.
namespace trhost::effects {

/// A text of a plug-in's as one line of UTF-8: null is empty, line ends and other control characters are
/// spaces, bytes that are no UTF-8 are replaced.
std::string OneLine(const char* inText);
std::string OneLine(std::string_view inText);

/// A name to type, from one to show: "Dry/Wet Balance (%)" gives "dry-wet-balance". Empty when nothing is
/// left.
std::string TypedName(std::string_view inDisplayName);
/// The same, unlike those of all parameters so far ("gain", "gain-2"); "parameter" when nothing is left.
std::string UniqueName(std::string_view inDisplayName, const std::vector<std::string>& inTaken);

/// In decimal, as short as gives the number back; one that a float holds exactly as the float is written.
/// "0" for what is no number.
std::string NumberText(double inValue);
/// The double that is written as the float is: 0.1 for 0.1f.
double AsWritten(float inValue);

struct ColorValue {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};
struct PositionValue {
    double x = 0;
    double y = 0;
};
std::string ColorText(const ColorValue& inColor); ///< "#rrggbb", the alpha left out
std::string PositionText(const PositionValue& inPosition);

/// A user's text as the parameter takes it. Numbers are moved to the nearer end of the range, parts of a
/// position to between 0 and 1.
/// @param inMatchName  of the plug-in, for the message.
/// @throws kio_exception (kEffectError_BadParameter): plug-in and parameter, what was found, what was
///     expected.
bool ParseBool(const std::string& inMatchName, const EffectParameter& inParameter, const std::string& inText);
double ParseNumber(const std::string& inMatchName, const EffectParameter& inParameter,
                   const std::string& inText); ///< integers too
ColorValue ParseColor(const std::string& inMatchName, const EffectParameter& inParameter,
                      const std::string& inText);
PositionValue ParsePosition(const std::string& inMatchName, const EffectParameter& inParameter,
                            const std::string& inText);
/// @throws kio_exception (kEffectError_BadParameter) that names the parameters that there are.
[[noreturn]] void ThrowNoSuchParameter(const std::string& inMatchName, const std::string& inName,
                                       const std::vector<std::string>& inNames);
[[noreturn]] void ThrowBadValue(const std::string& inMatchName, const EffectParameter& inParameter,
                                const std::string& inText, const std::string& inExpected);

} // namespace trhost::effects
