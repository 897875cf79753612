#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/UnknownBase.h>

#include <cstdint>

namespace MF {

enum TextureFilteringMode : int { kTextureFilteringMode_Nearest = 0, kTextureFilteringMode_Linear = 1 };
enum BufferScalingMode : int { kBufferScalingMode_Stretch = 0, kBufferScalingMode_Letterbox = 1 };

/// A colour of 8 bits a channel.
struct SwapChainFillColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(const SwapChainFillColor&, const SwapChainFillColor&) = default;
};

/// What video displays ask before they show a picture. Found through the class factory under this
/// interface's identifier.
///
/// Threading: any thread.
class KIO_EXPORT IDisplaySettings : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID(); // D16CD309-25A4-42DE-B404-E0CB1340B2F1
    ~IDisplaySettings() override;

    virtual bool IsExtendedDynamicRangeEnabled() = 0;
    virtual bool IsDisplayColorManagementEnabled() = 0;
    virtual int GetZoomInTextureFilteringMode() = 0;  ///< a TextureFilteringMode
    virtual int GetZoomOutTextureFilteringMode() = 0; ///< a TextureFilteringMode
    virtual int GetBufferScalingMode() = 0;           ///< a BufferScalingMode
    /// What covers the part of a display that the picture does not.
    virtual SwapChainFillColor GetSwapChainFillColor() = 0;
};

} // namespace MF
