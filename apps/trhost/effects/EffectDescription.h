#pragma once

#include <kiocore/serialization/JSON.h>
#include <kiomediatypes/PixelFormat.h>

#include <string>
#include <vector>

namespace trhost::effects {

enum class EffectKind { kVideoFilter, kTransition, kGenerator, kAudioFilter };
/// "video filter", "transition", "generator", "audio filter".
const char* NameOf(EffectKind inKind);
/// The same as a localised text.
const char* TextOf(EffectKind inKind);

enum class ParameterKind { kBool, kInteger, kNumber, kChoice, kText, kColor, kPosition };
/// "bool", "integer", "number", "choice", "text", "color", "position".
const char* NameOf(ParameterKind inKind);
/// The same as a localised text.
const char* TextOf(ParameterKind inKind);

/// One thing that can be set on an effect. Values are texts everywhere outside the engines:
///   bool "true" / "false"; integer, number in decimal with a point; choice one of the choices;
///   color "#rrggbb" or "#rrggbbaa"; position "x,y" as parts of the picture, 0 to 1.
struct EffectParameter {
    std::string name; ///< what a user types: unique within the effect, without '=' and spaces
    std::string displayName;
    std::string explanation;
    ParameterKind kind = ParameterKind::kNumber;
    std::string defaultValue;
    bool hasRange = false; ///< integer and number
    double minimum = 0;
    double maximum = 0;
    std::vector<std::string> choices;
};

/// Everything that is known of one plug-in without loading it again.
struct EffectDescription {
    std::string matchName;  ///< "frei0r.glow", "avfilter.hflip", "ladspa.1413"
    std::string technology; ///< the engine: "frei0r", "avfilter", "ladspa"
    std::string pluginName; ///< what the engine finds it by, within its file
    std::string file;       ///< native path of the file that it lies in
    std::string displayName;
    EffectKind kind = EffectKind::kVideoFilter;
    std::string category;
    std::string author;
    std::string version;
    std::string explanation; ///< one line; may be empty
    /// Formats that frames may be handed over in, the best first: of ours, those that the plug-in takes as
    /// they are. Empty for audio, and for plug-ins that take none: those run in bgra8 by conversion.
    std::vector<kiomediatypes::PixelFormat> formats;
    bool isAccelerated = false; ///< runs on a device other than the processor
    bool isFirstParty = false;
    std::vector<EffectParameter> parameters;
    int audioInputs = 0; ///< channels of one instance; audio only
    int audioOutputs = 0;
    /// Why it is listed and cannot be run, a kept text (support/KeptText.h) of one line: "needs
    /// libopencv_core.so.406, which is not installed". Empty when it runs.
    std::string refusal;
};

/// As a JSON object, and back.
kiocore::serialization::JSON ToJSON(const EffectDescription& inDescription);
/// @throws kiocore::serialization::bad_cast_exception.
EffectDescription FromJSON(const kiocore::serialization::JSON& inValue);
/// The same as text on one line.
std::string ToJSONText(const EffectDescription& inDescription);
/// @throws kiocore::serialization::not_well_formed_exception, bad_cast_exception.
EffectDescription FromJSONText(const std::string& inText);

} // namespace trhost::effects
