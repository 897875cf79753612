#pragma once

#include "Commands.h"

namespace trhost {

/// Reads the command line, brings the host up, runs the command, brings the host down.
/// @return the exit status. Throws nothing: every failure has become a line on standard error.
int RunProgram(int inCount, char** inArguments) noexcept;

} // namespace trhost
