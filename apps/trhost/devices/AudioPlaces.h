#pragma once

#include "Player.h"
#include "Recorder.h"
#include "SampleConversion.h"

#include <media/MediaModule.h>

#include <memory>
#include <optional>
#include <string>

/// What the words of the command line and of scripts stand for.
namespace trhost::devices {

/// "s16", "s24", "f32". Empty when it is none of them.
std::optional<SampleForm> ParseSampleForm(const std::string& inText);
/// The form that keeps all that a stream of this codec holds: 16 bit for what has no more, else float.
SampleForm FormFor(const std::string& inCodec);

/// The path of "wav:PATH".
/// @throws Failure (kExit_Usage) when it is something else.
std::string SinkPath(const std::string& inSink);

/// Outputs of a device of the system. The devices module is loaded when the first one is opened.
OutputOpener DeviceOutput(const std::string& inDevice);
/// Outputs that all go to the one file.
OutputOpener FileOutput(std::shared_ptr<WaveFile> inFile);
InputOpener DeviceInput(const std::string& inDevice);

/// Opens a media file to hear it; the media module is loaded by the first call. Main thread.
/// @param inStreamIndex  -1: the first one.
/// @throws as media::IMediaModule::OpenAudio; Failure once the user has interrupted the program.
std::unique_ptr<media::IAudioReader> OpenSound(const std::string& inNativePath, int inStreamIndex);

} // namespace trhost::devices
