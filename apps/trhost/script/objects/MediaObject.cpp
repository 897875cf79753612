#include "MediaObject.h"

#include "../../support/Failure.h"
#include "../../support/MediaLoader.h"

#include <VF/PNG.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kioscripting/ClassBuilder.h>

#include <cmath>

namespace trhost::script {
namespace {

using kiocore::filesupport::FromNative;
using kiomediatypes::TickTime;

kioscripting::ClassDefinition DefineClip()
{
    return kioscripting::ClassBuilder<ClipObject>("Halcyon.TrHost", "Clip", "The pictures of a media file.")
        .Property("path", "string", "Of the file", &ClipObject::GetPath)
        .Property("width", "number", "In pixels", &ClipObject::GetWidth)
        .Property("height", "number", "In rows", &ClipObject::GetHeight)
        .Property("framesPerSecond", "number", "0 when it is not known", &ClipObject::GetFramesPerSecond)
        .Property("durationSeconds", "number", "As the file declares it; -1 when it does not",
                  &ClipObject::GetDurationSeconds)
        .Property("codec", "string", "Short name, as in \"h264\"", &ClipObject::GetCodec)
        .Method("frameAt", "Returns the picture on show at a time", &ClipObject::FrameAt,
                {{"seconds", "number", kioscripting::kParameter_Required, "from the start"}},
                {"frame", "Frame"})
        .Method("frameNumber", "Returns the picture of a number", &ClipObject::FrameNumber,
                {{"number", "number", kioscripting::kParameter_Required, "from 0"}}, {"frame", "Frame"})
        .Finish();
}

kioscripting::ClassDefinition DefineMedia()
{
    return kioscripting::ClassBuilder<MediaObject>("Halcyon.TrHost", "Media",
                                                   "Opens media and pictures: the global object media.")
        .Method(
            "open", "Opens the first video stream of a media file", &MediaObject::Open,
            {{"path", "string", kioscripting::kParameter_Required, "within the folders that may be read"}},
            {"clip", "Clip"})
        .Method(
            "picture", "Reads a PNG file", &MediaObject::Picture,
            {{"path", "string", kioscripting::kParameter_Required, "within the folders that may be read"}},
            {"frame", "Frame"})
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator sClipDefinition(&DefineClip);
const kioscripting::factory::ScriptObjectDefinitionInitiator sMediaDefinition(&DefineMedia);

} // namespace

const char* ClipObject::GetClassname() const
{
    return "Clip";
}

const char* MediaObject::GetClassname() const
{
    return "Media";
}

void ClipObject::Initialize(ScriptHostPtr inHost, const std::string& inPath)
{
    mReader = LoadMediaModule().OpenVideo(inPath, -1, InterruptCancel());
    mHost = std::move(inHost);
    mPath = inPath;
}

kiocore::UTF16String ClipObject::GetPath() const
{
    return FromNative(mPath);
}

FrameObjectPtr ClipObject::FrameAt(double inSeconds) const
{
    if (!(inSeconds >= 0) || inSeconds > 1e9) {
        throw kiocore::kio_exception(
            Text("$$$/Halcyon/TrHost/ScriptNoTime=@0 is no time in media; expected seconds from its start",
                 {kiocore::utility::ToUTF16(std::to_string(inSeconds))}),
            kiocore::kError_BadArgument);
    }
    return MakeFrameObject(mHost, mReader->FrameAt(TickTime::FromSeconds(inSeconds), InterruptCancel()),
                           GetContextHdl());
}

FrameObjectPtr ClipObject::FrameNumber(std::uint32_t inNumber) const
{
    const double rate = GetFramesPerSecond();
    if (rate <= 0) {
        throw kiocore::kio_exception(
            Text("$$$/Halcyon/TrHost/ScriptNoRate=@0 has no frame rate, so its pictures have no numbers; use "
                 "frameAt",
                 {GetPath()}),
            kiocore::kError_BadArgument);
    }
    return FrameAt((inNumber + 0.5) / rate); // at its start a coarse clock may still show the one before
}

boost::intrusive_ptr<ClipObject> MediaObject::Open(const kiocore::UTF16String& inPath) const
{
    const std::string path = mHost->folders.ToRead(inPath);
    boost::intrusive_ptr<ClipObject> clip = kioscripting::CreateScriptObject<ClipObject>(GetContextHdl());
    if (clip) {
        clip->Initialize(mHost, path);
    }
    return clip;
}

FrameObjectPtr MediaObject::Picture(const kiocore::UTF16String& inPath) const
{
    const kiocore::UTF16String path = FromNative(mHost->folders.ToRead(inPath));
    std::string reason;
    const MF::IVideoFrameRef frame = VF::DecompressPNG(path, reason);
    if (!frame) {
        throw kiocore::kio_exception(Text("$$$/Halcyon/TrHost/ScriptNoPicture=@0 is no PNG picture: @1",
                                          {path, kiocore::utility::ToUTF16(reason)}),
                                     kiocore::kError_DamagedData);
    }
    return MakeFrameObject(mHost, frame, GetContextHdl());
}

} // namespace trhost::script
