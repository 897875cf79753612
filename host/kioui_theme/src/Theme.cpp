#include <kioui_theme/Theme.h>

#include <kiocore/debug/Trace.h>

#include <array>
#include <mutex>

namespace kioui {

using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;
using skins::Color;
using skins::ColorRole;
using ui::IThemeProvider;
using ui::Theme;

skins::ISkinSet::~ISkinSet() = default;
const CFUUIDBytes& skins::ISkinSet::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x2e, 0x91, 0x47, 0x0c, 0xd6, 0x58, 0x4a, 0xf3, 0x83, 0xb5, 0x1c, 0x7e, 0x0f, 0xda, 0x62, 0x94}};
    return kID;
}

IThemeProvider::~IThemeProvider() = default;
const CFUUIDBytes& IThemeProvider::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x7d, 0xe0, 0x35, 0xb8, 0x19, 0x6a, 0x4f, 0x42, 0xae, 0x07, 0xc3, 0x54, 0x9b, 0x21, 0x8e, 0xf6}};
    return kID;
}

namespace {

constexpr Color Grey(int inOf255)
{
    const float level = static_cast<float>(inOf255) / 255;
    return {level, level, level};
}

/// Colours of a theme, in the order of ColorRole.
using Colors = std::array<Color, 8>;

class OwnTheme final : public UnknownBase, public IThemeProvider {
public:
    explicit OwnTheme(const Colors& inColors) : mColors(inColors) {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == IThemeProvider::InterfaceID() ? static_cast<IThemeProvider*>(this)
                                                              : UnknownBase::QueryMap(inInterfaceID);
    }
    Color GetColor(ColorRole inRole) const override { return mColors.at(static_cast<std::size_t>(inRole)); }

private:
    const Colors mColors;
};

constexpr Color OfBytes(int inRed, int inGreen, int inBlue)
{
    return {static_cast<float>(inRed) / 255, static_cast<float>(inGreen) / 255,
            static_cast<float>(inBlue) / 255};
}

// Neutral greys, so that the surroundings do not tint what the eye sees in a picture; colour only for what is
// selected or a link. Texts keep a contrast of at least 4.5 to what they stand on, disabled ones of 3; texts
// in cells and links stay as they are in a selected row, so the selection suits them.
constexpr Colors kDark = {Grey(29),  Grey(217),
                          Grey(128), Grey(43),
                          Grey(60),  OfBytes(28, 66, 115),
                          Grey(255), OfBytes(122, 182, 250)};
constexpr Colors kLight = {Grey(245), Grey(34),           Grey(128),
                           Grey(232), Grey(250),          OfBytes(184, 214, 248),
                           Grey(20),  OfBytes(0, 88, 178)};

struct Themes {
    const InterfaceRef<IThemeProvider> dark = MakeObject<OwnTheme>(kDark);
    const InterfaceRef<IThemeProvider> light = MakeObject<OwnTheme>(kLight);
    std::mutex lock; // guards what follows
    InterfaceRef<IThemeProvider> inUse;
};

Themes& TheThemes()
{
    static auto* themes = new Themes; // never destroyed: displays may ask until the very end
    return *themes;
}

} // namespace

InterfaceRef<IThemeProvider> ui::GetThemeProvider(Theme inTheme)
{
    switch (inTheme) {
    case Theme::kDark:
        return TheThemes().dark;
    case Theme::kLight:
        return TheThemes().light;
    }
    return {};
}

InterfaceRef<IThemeProvider> ui::GetDefaultThemeProvider()
{
    KIO_HOST_CALL("kioui::ui::GetDefaultThemeProvider");
    Themes& themes = TheThemes();
    std::lock_guard lock(themes.lock);
    return themes.inUse ? themes.inUse : themes.dark;
}

void ui::SetDefaultThemeProvider(const InterfaceRef<IThemeProvider>& inProvider)
{
    InterfaceRef<IThemeProvider> before = inProvider; // goes after the lock: its destructor is the host's
    Themes& themes = TheThemes();
    std::lock_guard lock(themes.lock);
    std::swap(themes.inUse, before);
}

namespace {

Color ColorFrom(const InterfaceRef<IThemeProvider>& inProvider,
                const InterfaceRef<skins::ISkinSet>& inSkinSet, ColorRole inRole)
{
    Color color;
    return inSkinSet && inSkinSet->GetColor(inRole, color) ? color : inProvider->GetColor(inRole);
}

} // namespace

Color skins::utilities::GetContentBackgroundColor(const InterfaceRef<IThemeProvider>& inProvider,
                                                  const InterfaceRef<ISkinSet>& inSkinSet)
{
    KIO_HOST_CALL("kioui::skins::utilities::GetContentBackgroundColor");
    return ColorFrom(inProvider, inSkinSet, ColorRole::kContentBackground);
}

Color skins::utilities::GetDefaultTextColor(const InterfaceRef<IThemeProvider>& inProvider,
                                            const InterfaceRef<ISkinSet>& inSkinSet)
{
    KIO_HOST_CALL("kioui::skins::utilities::GetDefaultTextColor");
    return ColorFrom(inProvider, inSkinSet, ColorRole::kContentText);
}

Color skins::utilities::GetDefaultDisabledTextColor(const InterfaceRef<IThemeProvider>& inProvider,
                                                    const InterfaceRef<ISkinSet>& inSkinSet)
{
    KIO_HOST_CALL("kioui::skins::utilities::GetDefaultDisabledTextColor");
    return ColorFrom(inProvider, inSkinSet, ColorRole::kDisabledText);
}

} // namespace kioui
