#pragma once

#include "../EffectOptions.h"

namespace trhost {

/// Runs an audio filter over a file's sound and writes a WAVE file of 32-bit float samples, which keeps what
/// an effect makes louder than full scale.
int RunOnSound(Context& ioContext, const effects::EffectDescription& inEffect,
               const EffectsRunOptions& inOptions, const std::string& inInput, const std::string& inOutput);

} // namespace trhost
