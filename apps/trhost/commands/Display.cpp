// What video displays are told.
#include "Commands.h"

#include "../support/Failure.h"

#include <MF/DisplaySettings.h>
#include <kiocore/classref/ClassFactory.h>

#include <cstdio>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;

kiocore::InterfaceRef<MF::IDisplaySettings> FindDisplaySettings()
{
    kiocore::InterfaceRef<kiocore::classref::UnknownBase> instance;
    const auto classID = kiocore::classref::GuidOf<MF::IDisplaySettings>();
    kiocore::classref::ClassFactory::CreateInstanceRef(classID, instance);
    kiocore::InterfaceRef<MF::IDisplaySettings> settings = instance;
    if (!settings) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoDisplaySettings=there is no class of display settings "
                           "registered under @0",
                           {classID.AsString()}));
    }
    return settings;
}

void ShowSwitch(Output& ioOutput, const char* inName, bool inValue)
{
    ioOutput.Line(ToUTF16(inName) + (inValue ? u" = on" : u" = off"));
}

void ShowMode(Output& ioOutput, const char* inName, int inMode, const char* inMeaning)
{
    ioOutput.Line(ToUTF16(std::string(inName) + " = " + std::to_string(inMode) + " (" + inMeaning + ")"));
}

const char* FilteringName(int inMode)
{
    return inMode == MF::kTextureFilteringMode_Nearest  ? "nearest"
           : inMode == MF::kTextureFilteringMode_Linear ? "linear"
                                                        : "unknown";
}

const char* ScalingName(int inMode)
{
    return inMode == MF::kBufferScalingMode_Stretch     ? "stretch"
           : inMode == MF::kBufferScalingMode_Letterbox ? "letterbox"
                                                        : "unknown";
}

std::string HexOf(MF::SwapChainFillColor inColor)
{
    char text[8];
    std::snprintf(text, sizeof(text), "#%02x%02x%02x", inColor.red, inColor.green, inColor.blue);
    return text;
}

} // namespace

int Display(Context& ioContext)
{
    const auto settings = FindDisplaySettings();
    const bool extendedRange = settings->IsExtendedDynamicRangeEnabled();
    const bool colorManagement = settings->IsDisplayColorManagementEnabled();
    const int zoomIn = settings->GetZoomInTextureFilteringMode();
    const int zoomOut = settings->GetZoomOutTextureFilteringMode();
    const int scaling = settings->GetBufferScalingMode();
    const std::string fill = HexOf(settings->GetSwapChainFillColor());
    Output& output = ioContext.output;
    if (output.IsJson()) {
        output.Result({}, JsonLine()
                              .Add("extendedDynamicRange", extendedRange)
                              .Add("displayColorManagement", colorManagement)
                              .Add("zoomInTextureFilteringMode", zoomIn)
                              .Add("zoomOutTextureFilteringMode", zoomOut)
                              .Add("bufferScalingMode", scaling)
                              .Add("swapChainFillColor", fill));
        return kExit_Done;
    }
    ShowSwitch(output, "extended-dynamic-range", extendedRange);
    ShowSwitch(output, "display-color-management", colorManagement);
    ShowMode(output, "zoom-in-texture-filtering", zoomIn, FilteringName(zoomIn));
    ShowMode(output, "zoom-out-texture-filtering", zoomOut, FilteringName(zoomOut));
    ShowMode(output, "buffer-scaling", scaling, ScalingName(scaling));
    output.Line(u"swap-chain-fill-color = " + ToUTF16(fill));
    return kExit_Done;
}

} // namespace trhost
