#pragma once

namespace kioscripting_jsc {

struct Runtime;

/// Defines the globals `console` and `describe`.
void DefineConsole(Runtime& inRuntime);

} // namespace kioscripting_jsc
