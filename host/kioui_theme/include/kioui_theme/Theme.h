#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>

namespace kioui {

using kiocore::InterfaceRef;

namespace skins {

/// Channels from 0 to 1, not linear: as they are sent to a display. Arithmetic may leave the range a little.
struct Color {
    float red = 0;
    float green = 0;
    float blue = 0;

    friend bool operator==(const Color&, const Color&) = default;
};

/// What a colour is for.
enum class ColorRole {
    kContentBackground, ///< behind pictures, lists and texts
    kContentText,       ///< on kContentBackground, kWindowBackground and kControlBackground
    kDisabledText,      ///< on the same, for what cannot be used now
    kWindowBackground,  ///< of windows and dialogs, around content
    kControlBackground, ///< of buttons and column titles
    kSelection,         ///< behind what is selected
    kSelectedText,      ///< on kSelection
    kLink,              ///< texts to be clicked, on kContentBackground and kWindowBackground
};

/// Colours of one window or control that differ from the theme's.
///
/// Threading: any thread.
class KIO_EXPORT ISkinSet : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~ISkinSet() override;
    /// @return false, outColor untouched, where the theme's colour is right.
    virtual bool GetColor(ColorRole inRole, Color& outColor) const = 0;
};

} // namespace skins

namespace ui {

/// The colours that the user interface is drawn in.
///
/// Threading: any thread.
class KIO_EXPORT IThemeProvider : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IThemeProvider() override;
    virtual skins::Color GetColor(skins::ColorRole inRole) const = 0;
};

enum class Theme { kDark, kLight };

/// One of the themes that come with us.
KIO_EXPORT InterfaceRef<IThemeProvider> GetThemeProvider(Theme inTheme);

/// The theme in use: the dark one until the host says otherwise. Never empty.
///
/// Threading: these two from any thread.
KIO_EXPORT InterfaceRef<IThemeProvider> GetDefaultThemeProvider();
/// A theme of ours or the host's own; empty is back to the dark one.
KIO_EXPORT void SetDefaultThemeProvider(const InterfaceRef<IThemeProvider>& inProvider);

} // namespace ui

namespace skins::utilities {

/// The colour behind content: the skin set's if it has one, else the theme's.
/// @param inSkinSet  may be empty.
/// @throws null_reference_exception without a provider.
KIO_EXPORT Color GetContentBackgroundColor(const InterfaceRef<ui::IThemeProvider>& inProvider,
                                           const InterfaceRef<ISkinSet>& inSkinSet);
/// The colours of texts in the same way, for what can be used and for what cannot be used now.
KIO_EXPORT Color GetDefaultTextColor(const InterfaceRef<ui::IThemeProvider>& inProvider,
                                     const InterfaceRef<ISkinSet>& inSkinSet);
KIO_EXPORT Color GetDefaultDisabledTextColor(const InterfaceRef<ui::IThemeProvider>& inProvider,
                                             const InterfaceRef<ISkinSet>& inSkinSet);

} // namespace skins::utilities
} // namespace kioui
