#include "Commands.h"

#include "../devices/AudioPlaces.h"
#include "../devices/DeviceSession.h"
#include "../devices/MediaTime.h"
#include "../devices/Player.h"
#include "../support/Failure.h"
#include "../support/Interrupt.h"
#include "../support/Quantities.h"

#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <optional>

namespace trhost {

namespace {

using namespace devices;
using kiocore::filesupport::FromNative;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

/// How much is to be played, in frames; -1 when the file does not say.
std::int64_t LengthToPlay(const media::StreamInfo& inStream, const PlayerSettings& inSettings)
{
    std::int64_t length = -1;
    if (inStream.durationSeconds >= 0) {
        length = std::max<std::int64_t>(0, std::int64_t(inStream.durationSeconds * inStream.sampleRate) -
                                               inSettings.firstFrame);
    }
    return inSettings.frameCount < 0 ? length
           : length < 0              ? inSettings.frameCount
                                     : std::min(length, inSettings.frameCount);
}

} // namespace

int PlaySound(Context& ioContext, const PlayOptions& inOptions)
{
    PlayerSettings settings;
    settings.media = OpenSound(inOptions.media, inOptions.stream);
    const media::StreamInfo stream = settings.media->Stream();
    settings.firstFrame = inOptions.from ? FramesOf(*inOptions.from, stream.sampleRate) : 0;
    settings.frameCount = inOptions.duration ? FramesOf(*inOptions.duration, stream.sampleRate) : -1;
    const std::int64_t first = settings.firstFrame;
    const std::int64_t length = LengthToPlay(stream, settings);

    if (inOptions.sink.empty()) {
        settings.place = inOptions.device;
        settings.open = DeviceOutput(inOptions.device);
    } else {
        const SampleForm form =
            inOptions.format.empty() ? FormFor(stream.codec) : ParseSampleForm(inOptions.format).value();
        settings.place = inOptions.sink;
        settings.open = FileOutput(std::make_shared<WaveFile>(SinkPath(inOptions.sink),
                                                              AudioFormat{stream.sampleRate, stream.channels},
                                                              form, inOptions.force));
        settings.pacing = inOptions.realTime ? Pacer::Mode::kAlways : Pacer::Mode::kNever;
    }
    const UTF16String place = FromNative(settings.place);

    DeviceSession session(ioContext);
    std::optional<UTF16String> failure;
    session.OnEvent([&failure](const DeviceEvent& event) {
        if (event.kind == DeviceEvent::Kind::kFailed && !failure) {
            failure = event.text;
        }
    });
    std::optional<Player> player(std::in_place, std::move(settings), session.Devices());
    session.Devices().Activate(player->Runner().Proxy());

    ProgressBar bar(ioContext.output,
                    Text("$$$/Halcyon/TrHost/Playing=playing @0", {FromNative(inOptions.media)}));
    const auto played = [&] { return player->Position() - first; };
    session.RunUntil([&] {
        if (length > 0) {
            bar.Show(double(played()) / double(length));
        }
        return failure || player->HasFinished();
    });
    bar.Hide();
    const bool hasFinished = player->HasFinished();
    const std::int64_t frames = played();
    const int breaks = player->Breaks();
    player.reset(); // also takes an unfinished sink's file away
    session.Report();
    if (failure) {
        throw Failure(kExit_Failed, *failure);
    }
    if (!hasFinished) {
        ThrowIfInterrupted();
    }
    const double seconds = double(frames) / stream.sampleRate;
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/Played=played @0: @1 to @2#{@0: a file, @1: a duration, "
                               "@2: a device or a file}",
                               {FromNative(inOptions.media), ToUTF16(FormatDuration(seconds)), place}),
                          JsonLine()
                              .Add("media", FromNative(inOptions.media))
                              .Add("to", place)
                              .Add("frames", frames)
                              .Add("rate", stream.sampleRate)
                              .Add("channels", stream.channels)
                              .Add("seconds", seconds)
                              .Add("breaks", breaks));
    if (breaks > 0) {
        ioContext.output.Error(Text("$$$/Halcyon/TrHost/PlayBreaks=the sound broke off @0 times: the machine "
                                    "was too busy",
                                    {DecimalText(unsigned(breaks))}));
    }
    return kExit_Done;
}

} // namespace trhost
