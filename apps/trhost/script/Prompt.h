#pragma once

#include "../support/Context.h"
#include "ScriptModule.h"

namespace trhost::script {

/// Reads lines from standard input until it ends, runs each, and prints its value. What a line does wrong is
/// told, and the next one is read.
void RunPrompt(Context& ioContext, IScriptModule& ioModule, kioscripting::IScriptEngine& ioEngine);

/// An error with its place, and below it how the script got there.
kiocore::UTF16String DescribeError(const kioscripting::script_exception& inError);

} // namespace trhost::script
