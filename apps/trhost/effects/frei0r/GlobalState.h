#pragma once

#include <string_view>

namespace trhost::effects::frei0r {

/// Whether the plug-in of a file is known to keep state outside its instances that its updates change, so
/// that two of them must not run at once.
///
/// Threading: any thread.
bool KeepsGlobalState(std::string_view inStem);

} // namespace trhost::effects::frei0r
