#include "FrameObject.h"

#include "../../commands/effects/Pictures.h"
#include "../../support/Failure.h"
#include "../../support/FrameOutput.h"

#include <kiocore/config/Errors.h>
#include <kioscripting/ClassBuilder.h>

namespace trhost::script {
namespace {

using namespace kiomediatypes;

kioscripting::ClassDefinition DefineFrame()
{
    using kioscripting::kParameter_Optional;
    return kioscripting::ClassBuilder<FrameObject>("Halcyon.TrHost", "Frame", "One picture.")
        .Property("width", "number", "In pixels", &FrameObject::GetWidth)
        .Property("height", "number", "In rows", &FrameObject::GetHeight)
        .Property("format", "string", "bgra8, argb8, bgra16, bgra32f, uyvy, v210 or yuv420",
                  &FrameObject::GetFormat)
        .Property("pixelAspectRatio", "string", "Width of a pixel to its height, as in \"16:15\"",
                  &FrameObject::GetPixelAspectRatio)
        .Method("save", "Writes the picture to a file, in place of one that is there", &FrameObject::Save,
                {{"path", "string", kioscripting::kParameter_Required,
                  "ends in .png, or in .raw for the pixels as they lie in memory"}})
        .Method("converted", "Returns a copy in another format or size", &FrameObject::Converted,
                {{"format", "string", kParameter_Optional, "left out or \"\": the frame's own"},
                 {"width", "number", kParameter_Optional, "left out or 0: the frame's own"},
                 {"height", "number", kParameter_Optional, "left out or 0: the frame's own"}},
                {"frame", "Frame"})
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator sFrameDefinition(&DefineFrame);

} // namespace

const char* FrameObject::GetClassname() const
{
    return "Frame";
}

void FrameObject::Initialize(ScriptHostPtr inHost, MF::IVideoFrameRef inFrame)
{
    mHost = std::move(inHost);
    mFrame = std::move(inFrame);
}

std::string FrameObject::GetFormat() const
{
    return NameOf(mFrame->GetPixelFormat());
}

std::string FrameObject::GetPixelAspectRatio() const
{
    const PixelAspectRatio ratio = mFrame->GetPixelAspectRatio();
    return std::to_string(ratio.numerator) + ":" + std::to_string(ratio.denominator);
}

void FrameObject::Save(const kiocore::UTF16String& inPath) const
{
    FrameForm form;
    form.output = mHost->folders.ToWrite(inPath);
    const FrameOutput output(form);
    // A PNG takes every format, and keeps 16 bits of a deep one.
    const bool isRaw =
        !inPath.empty() && form.output.size() > 4 && (form.output.back() == 'w' || form.output.back() == 'W');
    output.Write(isRaw ? output.Shaped(mFrame, {mFrame->GetWidth(), mFrame->GetHeight()},
                                       output.FormatFor(mFrame->GetPixelFormat()),
                                       mFrame->GetPixelAspectRatio())
                       : mFrame);
}

FrameObjectPtr FrameObject::Converted(const std::string& inFormat, std::uint32_t inWidth,
                                      std::uint32_t inHeight) const
{
    const PixelFormat format = inFormat.empty() ? mFrame->GetPixelFormat() : PixelFormatNamed(inFormat);
    if (format == kPixelFormat_Any) {
        throw kiocore::kio_exception(Text("$$$/Halcyon/TrHost/ScriptNoFormat=there is no pixel format @0",
                                          {kiocore::utility::ToUTF16(inFormat)}),
                                     kiocore::kError_BadArgument);
    }
    return MakeFrameObject(mHost,
                           ConvertPicture(mFrame, format, inWidth == 0 ? mFrame->GetWidth() : inWidth,
                                          inHeight == 0 ? mFrame->GetHeight() : inHeight),
                           GetContextHdl());
}

bool FrameObject::CastTo(MF::IVideoFrameRef& outFrame) const
{
    outFrame = mFrame;
    return static_cast<bool>(outFrame);
}

FrameObjectPtr MakeFrameObject(const ScriptHostPtr& inHost, const MF::IVideoFrameRef& inFrame, int inContext)
{
    FrameObjectPtr object = kioscripting::CreateScriptObject<FrameObject>(inContext);
    if (object) {
        object->Initialize(inHost, inFrame);
    }
    return object;
}

} // namespace trhost::script
