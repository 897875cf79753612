#include "Commands.h"

#include "../devices/AudioPlaces.h"
#include "../devices/DeviceSession.h"
#include "../devices/MediaTime.h"
#include "../devices/Recorder.h"
#include "../support/Failure.h"
#include "../support/Interrupt.h"
#include "../support/Quantities.h"

#include <kiocore/filesupport/NativePath.h>

#include <cmath>
#include <cstdio>
#include <optional>

namespace trhost {

namespace {

using namespace devices;
using kiocore::filesupport::FromNative;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

/// "-12.3 dB"; "-inf dB" for silence.
std::string LevelText(float inPeak)
{
    char text[32];
    std::snprintf(text, sizeof text, inPeak > 0 ? "%.1f dB" : "-inf dB", 20 * std::log10(double(inPeak)));
    return text;
}

} // namespace

int RecordSound(Context& ioContext, const RecordOptions& inOptions)
{
    RecorderSettings settings;
    settings.place = inOptions.device;
    settings.open = DeviceInput(inOptions.device);
    settings.format = {inOptions.rate, inOptions.channels};
    const UTF16String path = FromNative(inOptions.file);
    // First of all: what is wrong with the file is to be known before anybody has played a note.
    auto file = std::make_unique<WaveFile>(inOptions.file, settings.format,
                                           ParseSampleForm(inOptions.format).value(), inOptions.force);
    const std::int64_t most = inOptions.duration ? FramesOf(*inOptions.duration, inOptions.rate) : -1;

    DeviceSession session(ioContext);
    bool recorded = false;
    std::optional<UTF16String> failure;
    session.OnEvent([&](const DeviceEvent& event) {
        recorded = recorded || event.kind == DeviceEvent::Kind::kRecorded;
        if (event.kind == DeviceEvent::Kind::kFailed && !failure) {
            failure = event.text;
        }
    });
    std::optional<Recorder> recorder(std::in_place, std::move(settings), session.Devices());
    recorder->Record(std::move(file), most);
    session.Devices().Activate(recorder->Runner().Proxy());

    ProgressBar bar(ioContext.output, Text("$$$/Halcyon/TrHost/RecordingTo=recording @0", {path}));
    session.RunUntil([&] {
        const double seconds = double(recorder->RecordedFrames()) / inOptions.rate;
        bar.Show(most > 0 ? double(recorder->RecordedFrames()) / double(most) : 0,
                 ToUTF16(FormatDuration(seconds) + ", " + LevelText(recorder->Peak())));
        return failure || recorded;
    });
    bar.Hide();
    // Completes what was recorded until now, also when the user wants no more of it.
    const bool wasStopped = !recorded && !failure;
    recorder->Stop();
    session.RunUntil([&] { return !recorder->IsRecording(); }, std::chrono::steady_clock::time_point::max(),
                     DeviceSession::OnInterrupt::kGoOn);
    const std::int64_t frames = recorder->RecordedFrames();
    const float peak = recorder->Peak();
    const int breaks = recorder->Breaks();
    recorder.reset();
    session.Report();
    const double seconds = double(frames) / inOptions.rate;
    if (frames > 0) {
        ioContext.output.Note(
            Text(
                "$$$/Halcyon/TrHost/Recorded=recorded @0: @1, @2 at the loudest#{@0: a file, @1: a duration, "
                "@2: a level, -12.3 dB}",
                {path, ToUTF16(FormatDuration(seconds)), ToUTF16(LevelText(peak))}),
            JsonLine()
                .Add("file", path)
                .Add("device", FromNative(inOptions.device))
                .Add("frames", frames)
                .Add("rate", inOptions.rate)
                .Add("channels", inOptions.channels)
                .Add("seconds", seconds)
                .Add("peak", double(peak))
                .Add("breaks", breaks));
    }
    if (breaks > 0) {
        ioContext.output.Error(
            Text("$$$/Halcyon/TrHost/RecordBreaks=sound was lost @0 times: the machine was "
                 "too busy",
                 {DecimalText(unsigned(breaks))}));
    }
    if (failure) {
        throw Failure(kExit_Failed, *failure);
    }
    // Without a duration, stopping is how a recording ends.
    if (wasStopped && (inOptions.duration || frames == 0)) {
        ThrowIfInterrupted();
    }
    return kExit_Done;
}

} // namespace trhost
