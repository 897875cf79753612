#pragma once

#include "PluginFile.h"

#include <string>

/// Values of frei0r's parameters, between the texts that users see and what plug-ins take.
///
/// Threading: as the plug-in's instances.
namespace trhost::effects::frei0r {

/// Passes a text on to an instance.
/// @throws kio_exception (kEffectError_BadParameter).
void SetParameter(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance,
                  const std::string& inMatchName, const Parameter& inParameter, const std::string& inText);
void SetNumber(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance, int inIndex,
               double inValue);

/// What an instance has at present.
std::string ReadParameter(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance,
                          const Parameter& inParameter);

} // namespace trhost::effects::frei0r
