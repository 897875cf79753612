#include <TR/TRDisplaySettings.h>

#include <BE/Backend.h>
#include <PRQ/ApplicationType.h>
#include <kiocore/classref/ClassFactory.h>
#include <kioui_theme/Theme.h>

#include <algorithm>
#include <cstdint>

namespace TR {

using kiocore::classref::ClassFactory;
using kiocore::classref::UnknownBase;

namespace {

/// The application type without extended dynamic range unless the user asks for it.
constexpr int kStandardRangeApplicationType = 5;

bool ReadPreference(const BE::ImmutableString& inKey, bool inDefault)
{
    BE::SerializeableValue<bool> value(inDefault);
    const auto backend = BE::GetBackend();
    if (!backend) {
        return inDefault;
    }
    const auto preferences = backend->GetPreferences();
    if (!preferences || preferences->GetValue(inKey, value) < 0) {
        return inDefault;
    }
    return value.Get();
}

std::uint8_t ToByte(float inChannel)
{
    // Bounded before it becomes a whole number: one beyond int's range has no defined value there. The order
    // of the arguments lets not-a-number, which compares as false, be black.
    const float level = std::min(std::max(0.0f, inChannel * 255 + 0.5f), 255.0f);
    return static_cast<std::uint8_t>(level);
}

} // namespace

TRDisplaySettings::~TRDisplaySettings() = default;

TRDisplaySettings::operator InterfaceRef<UnknownBase>()
{
    return kiocore::classref::RefToSelf<UnknownBase>(*this);
}

void* TRDisplaySettings::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    return inInterfaceID == MF::IDisplaySettings::InterfaceID() ? static_cast<MF::IDisplaySettings*>(this)
                                                                : nullptr;
}

bool TRDisplaySettings::IsExtendedDynamicRangeEnabled()
{
    return ReadPreference(BE::kPrefsEnableExtendedDynamicRangeMonitoring,
                          PRQ::GetApplicationType() != kStandardRangeApplicationType);
}

bool TRDisplaySettings::IsDisplayColorManagementEnabled()
{
    return ReadPreference(BE::kPrefsEnableDisplayColorManagement, true);
}

int TRDisplaySettings::GetZoomInTextureFilteringMode()
{
    return MF::kTextureFilteringMode_Nearest; // single pixels are what one zooms in for
}

int TRDisplaySettings::GetZoomOutTextureFilteringMode()
{
    return MF::kTextureFilteringMode_Linear;
}

int TRDisplaySettings::GetBufferScalingMode()
{
    return MF::kBufferScalingMode_Stretch;
}

MF::SwapChainFillColor TRDisplaySettings::GetSwapChainFillColor()
{
    const auto color =
        kioui::skins::utilities::GetContentBackgroundColor(kioui::ui::GetDefaultThemeProvider(), {});
    return {ToByte(color.red), ToByte(color.green), ToByte(color.blue)};
}

void TRDisplaySettings::CreateInstanceRef(InterfaceRef<UnknownBase>& outInstance)
{
    outInstance = kiocore::classref::MakeObject<TRDisplaySettings>();
}

void RegisterTRDisplaySettingsClass()
{
    const auto classID = kiocore::classref::GuidOf<MF::IDisplaySettings>();
    InterfaceRef<UnknownBase> registered;
    if (ClassFactory::CreateInstanceRef(classID, registered) < 0) {
        ClassFactory::RegisterClass(classID, "classID", "TRDisplaySettings",
                                    &TRDisplaySettings::CreateInstanceRef);
    }
}

} // namespace TR
