#pragma once

#include "../ScriptModule.h"

namespace trhost::script {

/// Where standard input is no terminal, lines are read as they come, without a prompt.
std::unique_ptr<ILineEditor> MakeLineEditor(LineEditorSettings inSettings);

} // namespace trhost::script
