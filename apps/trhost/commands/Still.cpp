#include "Commands.h"

#include "../support/Failure.h"

#include <TR/StaticImageFactory.h>
#include <VF/PNG.h>
#include <kiocore/platform/Bundle.h>
#include <kiocore/utility/MemoryRecycler.h>

#include <charconv>
#include <cstring>
#include <string_view>
#include <vector>

namespace trhost {

namespace {

using namespace kiomediatypes;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;
using Factory = TR::StaticImageFactory;

constexpr PictureSize kUsualSize = {1920, 1080};

struct Still {
    int id;
    const char* name;
    const char* resource; // of the library; null where there is none
};
constexpr Still kStills[] = {
    {Factory::kMediaPending, "MediaPending", "MediaPending"},
    {Factory::kMediaOffline, "MediaOffline", "MediaOffline"},
    {Factory::kPlayingOnHardware, "PlayingOnHardware", "PlayingOnHardware"},
    {Factory::kBlank, "Blank", nullptr},
    {Factory::kColorBars, "ColorBars", "ColorBars"},
    {Factory::kCapturePreviewOnHardware, "CapturePreviewOnHardware", "CapturePreviewOnHardware"},
    {Factory::kSizeDependent, "SizeDependent", nullptr},
    {Factory::kMediaOfflineStill, "MediaOfflineStill", "MediaOffline"},
    {Factory::kAudioVideoClip, "AudioVideoClip", "AudioVideoClip"},
};

bool IsSameName(std::string_view inA, std::string_view inB)
{
    const auto lower = [](char inLetter) {
        return inLetter >= 'A' && inLetter <= 'Z' ? char(inLetter - 'A' + 'a') : inLetter;
    };
    return inA.size() == inB.size() && std::equal(inA.begin(), inA.end(), inB.begin(),
                                                  [&](char a, char b) { return lower(a) == lower(b); });
}

/// A number that is none of ours is a still without a picture, as it is for the library.
Still StillNamed(const std::string& inIDOrName)
{
    int id = 0;
    const char* const end = inIDOrName.data() + inIDOrName.size();
    const auto [stop, error] = std::from_chars(inIDOrName.data(), end, id);
    const bool isNumber = error == std::errc() && stop == end;
    std::string names;
    for (const Still& still : kStills) {
        if (isNumber ? still.id == id : IsSameName(still.name, inIDOrName)) {
            return still;
        }
        names += std::string(names.empty() ? "" : ", ") + still.name + " (" + std::to_string(still.id) + ")";
    }
    if (isNumber) {
        return {id, "", nullptr};
    }
    throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/NoSuchStill=there is no still @0; expected one of @1",
                                    {ToUTF16(inIDOrName), ToUTF16(names)}));
}

/// As it lies in the library's resources; empty when it does not.
MF::IVideoFrameRef NaturalImage(const char* inResource)
{
    std::vector<std::byte> bytes;
    const CFBundleRef bundle = kiocore::platform::BundleWithIdentifier("org.halcyon.TRFoundation");
    if (!kiocore::utility::GetBinaryFromModule(bundle, ToUTF16(inResource), u"png", bytes)) {
        return {};
    }
    const auto memory = kiocore::utility::MakeSharedRecycledMemory(bytes.size());
    if (memory) {
        std::memcpy(memory.bytes.get(), bytes.data(), bytes.size());
    }
    return VF::DecompressPNG(memory);
}

} // namespace

int StillList(Context& ioContext)
{
    bool complete = true;
    for (const Still& still : kStills) {
        JsonLine object;
        object.Add("id", still.id).Add("name", still.name);
        const UTF16String start =
            DecimalText(static_cast<unsigned long long>(still.id)) + u"  " + ToUTF16(still.name);
        if (!still.resource) {
            ioContext.output.Result(Text("$$$/Halcyon/TrHost/StillBlank=@0  (no picture: black)", {start}),
                                    object);
            continue;
        }
        object.Add("resource", still.resource);
        const MF::IVideoFrameRef image = NaturalImage(still.resource);
        complete = complete && image;
        if (!image) {
            object.Add("missing", true);
            ioContext.output.Result(Text("$$$/Halcyon/TrHost/StillMissing=@0  @1.png (missing or damaged)",
                                         {start, ToUTF16(still.resource)}),
                                    object);
            continue;
        }
        AddFrame(object, image);
        ioContext.output.Result(Text("$$$/Halcyon/TrHost/StillLine=@0  @1.png (@2)",
                                     {start, ToUTF16(still.resource), DescribeFrame(image)}),
                                object);
    }
    return complete ? kExit_Done : kExit_Negative;
}

int WriteStill(Context& ioContext, const StillOptions& inOptions)
{
    const FrameOutput output(inOptions.form);
    const Still still = StillNamed(inOptions.image);
    const PictureSize size = inOptions.form.size.value_or(kUsualSize);
    // Black in place of a picture that should be there would look like an answer.
    const MF::IVideoFrameRef frame =
        Factory::LoadImage(still.id, size.width, size.height, output.FormatFor(kPixelFormat_BGRA_4444_8u),
                           inOptions.form.pixelAspectRatio.value_or(kPixelAspectRatio_Square),
                           inOptions.form.quality, !still.resource);
    if (!frame) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/StillFailed=the still @0 could not be made; --trace Resources and "
                 "--trace Frames tell why",
                 {ToUTF16(inOptions.image)}));
    }
    output.Write(frame);
    JsonLine object;
    object.Add("id", still.id).Add("name", still.name).Add("output", output.Path());
    AddFrame(object, frame);
    ioContext.output.Note(
        still.resource ? Text("$$$/Halcyon/TrHost/StillMade=@0: @1", {output.Path(), DescribeFrame(frame)})
                       : Text("$$$/Halcyon/TrHost/StillMadeBlank=@0: @1, black: still @2 has no picture",
                              {output.Path(), DescribeFrame(frame), ToUTF16(std::to_string(still.id))}),
        object);
    return kExit_Done;
}

} // namespace trhost
