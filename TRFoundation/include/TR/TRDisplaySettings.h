#pragma once

#include <MF/DisplaySettings.h>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>

namespace TR {

using kiocore::InterfaceRef;

/// The display settings as the user's preferences and theme have them. Reads both anew at each question, so
/// that a change shows with the next picture.
///
/// Threading: any thread.
class KIO_EXPORT TRDisplaySettings final : public kiocore::classref::UnknownBase,
                                           public MF::IDisplaySettings {
public:
    ~TRDisplaySettings() override;
    /// This object; empty when CreateInstanceRef did not make it.
    virtual operator InterfaceRef<kiocore::classref::UnknownBase>();
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

    /// The preference; unset, it is on except for applications of type 5.
    bool IsExtendedDynamicRangeEnabled() override;
    /// The preference; unset, it is on.
    bool IsDisplayColorManagementEnabled() override;
    int GetZoomInTextureFilteringMode() override;
    int GetZoomOutTextureFilteringMode() override;
    int GetBufferScalingMode() override;
    /// The content background of the default theme.
    MF::SwapChainFillColor GetSwapChainFillColor() override;

    static void CreateInstanceRef(InterfaceRef<kiocore::classref::UnknownBase>& outInstance);
};

/// Makes TRDisplaySettings what the class factory has under the identifier of MF::IDisplaySettings, unless
/// there is something already: what a host registered earlier stays. For the host to call at its start.
KIO_EXPORT void RegisterTRDisplaySettingsClass();

} // namespace TR
