#include "ThemePreference.h"

#include <BE/Backend.h>
#include <kioui_theme/Theme.h>

namespace trhost {

namespace {

using kioui::ui::Theme;

const BE::ImmutableString kThemeKey("TRHost.Theme");

constexpr struct {
    Theme theme;
    const char* name;
    kiocore::UTF16View stored;
} kThemes[] = {{Theme::kDark, "dark", u"dark"}, {Theme::kLight, "light", u"light"}};

/// What is stored by a later build and unknown here is shown as the default, and stays stored.
const auto& Preferred()
{
    const auto stored = BE::GetBackend()->GetProperties()->GetText(kThemeKey, {});
    for (const auto& known : kThemes) {
        if (stored == known.stored) {
            return known;
        }
    }
    return kThemes[0];
}

} // namespace

std::string GetThemePreference()
{
    return Preferred().name;
}

bool SetThemePreference(const std::string& inName)
{
    for (const auto& known : kThemes) {
        if (inName == known.name) {
            BE::GetBackend()->GetProperties()->SetText(kThemeKey, kiocore::UTF16String(known.stored));
            return true;
        }
    }
    return false;
}

void ApplyThemePreference()
{
    kioui::ui::SetDefaultThemeProvider(kioui::ui::GetThemeProvider(Preferred().theme));
}

} // namespace trhost
