#pragma once

#include "../support/Context.h"

#include <functional>
#include <string>

namespace trhost {

/// "trhost 14.0.0".
std::string ProgramVersion();

/// Chooses the language of all texts: what --lang says, else what the environment says. Before anything else
/// is read, as help and complaints about wrong usage are texts too.
/// @throws kio_exception when --lang names no language, or its texts are damaged.
void ChooseLanguage(int inCount, char** inArguments);

/// Brings the host up as the options say, runs the command, and brings the host down on every way out.
/// @return the exit status; failures have become lines on standard error.
int RunCommand(const GlobalOptions& inOptions, const std::function<int(Context&)>& inCommand);

} // namespace trhost
