#pragma once

#include <string>

namespace trhost {

/// The user's choice of theme: "dark" (the default) or "light".
///
/// Threading: main thread only.
std::string GetThemePreference();
/// @return false, nothing changed, for a name that is no theme.
bool SetThemePreference(const std::string& inName);
/// Makes it the theme in use.
void ApplyThemePreference();

} // namespace trhost
