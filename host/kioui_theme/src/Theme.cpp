#include <kioui_theme/Theme.h>

#include <kiocore/debug/Trace.h>

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

/// Neutral greys, so that the surroundings do not tint what the eye sees in a picture.
class OwnTheme final : public UnknownBase, public IThemeProvider {
public:
    OwnTheme(Color inBackground, Color inText) : mBackground(inBackground), mText(inText) {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == IThemeProvider::InterfaceID() ? static_cast<IThemeProvider*>(this)
                                                              : UnknownBase::QueryMap(inInterfaceID);
    }
    Color GetColor(ColorRole inRole) const override
    {
        switch (inRole) {
        case ColorRole::kContentBackground:
            return mBackground;
        case ColorRole::kContentText:
            return mText;
        }
        return {};
    }

private:
    const Color mBackground;
    const Color mText;
};

struct Themes {
    const InterfaceRef<IThemeProvider> dark = MakeObject<OwnTheme>(Grey(29), Grey(217));
    const InterfaceRef<IThemeProvider> light = MakeObject<OwnTheme>(Grey(245), Grey(34));
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

Color skins::utilities::GetContentBackgroundColor(const InterfaceRef<IThemeProvider>& inProvider,
                                                  const InterfaceRef<ISkinSet>& inSkinSet)
{
    KIO_HOST_CALL("kioui::skins::utilities::GetContentBackgroundColor");
    Color color;
    if (inSkinSet && inSkinSet->GetColor(ColorRole::kContentBackground, color)) {
        return color;
    }
    return inProvider->GetColor(ColorRole::kContentBackground);
}

} // namespace kioui
