#include "ThemePalette.h"

#include <algorithm>

namespace kioui::ui {

using skins::ColorRole;

QColor ToQt(const skins::Color& inColor)
{
    const auto channel = [](float inValue) { return std::clamp(inValue, 0.0f, 1.0f); };
    return QColor::fromRgbF(channel(inColor.red), channel(inColor.green), channel(inColor.blue));
}

QPalette PaletteOf(const InterfaceRef<IThemeProvider>& inProvider)
{
    const auto color = [&inProvider](ColorRole inRole) { return ToQt(inProvider->GetColor(inRole)); };
    // Qt derives bevels and shadows from these two.
    QPalette palette(color(ColorRole::kControlBackground), color(ColorRole::kWindowBackground));
    palette.setColor(QPalette::Base, color(ColorRole::kContentBackground));
    palette.setColor(QPalette::AlternateBase, color(ColorRole::kWindowBackground));
    palette.setColor(QPalette::ToolTipBase, color(ColorRole::kControlBackground));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::BrightText}) {
        palette.setColor(role, color(ColorRole::kContentText));
    }
    palette.setColor(QPalette::PlaceholderText, color(ColorRole::kDisabledText));
    palette.setColor(QPalette::Link, color(ColorRole::kLink));
    palette.setColor(QPalette::LinkVisited, color(ColorRole::kLink));
    palette.setColor(QPalette::Highlight, color(ColorRole::kSelection));
    palette.setColor(QPalette::HighlightedText, color(ColorRole::kSelectedText));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, color(ColorRole::kDisabledText));
    }
    return palette;
}

QPalette CheckBoxPaletteOf(const InterfaceRef<IThemeProvider>& inProvider)
{
    QPalette palette = PaletteOf(inProvider);
    palette.setColor(QPalette::Base, ToQt(inProvider->GetColor(ColorRole::kControlBackground)));
    return palette;
}

} // namespace kioui::ui
