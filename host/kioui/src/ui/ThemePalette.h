#pragma once

#include <kioui_theme/Theme.h>

#include <QColor>
#include <QPalette>

namespace kioui::ui {

QColor ToQt(const skins::Color& inColor);
/// The theme's colours where Qt's own controls look for them.
QPalette PaletteOf(const InterfaceRef<IThemeProvider>& inProvider);
/// The same for check boxes: lighter or darker than the content they lie on, or the dark theme's would not be
/// seen.
QPalette CheckBoxPaletteOf(const InterfaceRef<IThemeProvider>& inProvider);

} // namespace kioui::ui
