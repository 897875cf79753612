#pragma once

#include "Failure.h"

#include <MF/VideoFrame.h>

#include <string>

/// Still pictures in files: PNG and raw frames, told apart by their first bytes, as names say nothing
/// reliable.
///
/// Threading: any thread.
namespace trhost {

enum class PictureKind { kPNG, kRawFrame, kOther };

/// @throws Failure (kExit_Failed) for pipes and devices, which would keep whoever opens them waiting. What is
/// not
///     there passes: opening it tells why.
void RequireOrdinaryFile(const std::string& inNativePath);

/// @param outFound  may be null; of another kind, what the file starts with, for people.
/// @throws kiocore::file_exception when the file cannot be read.
PictureKind KindOfPicture(const UTF16String& inPath, UTF16String* outFound = nullptr);

/// Why a file of another kind is no picture for us: what was found, what was expected.
UTF16String NoPictureReason(const UTF16String& inFound);

/// Reads either.
/// @param outReason  why there is no picture: one line without the file's name; untouched on success.
/// @return an empty reference when it is no such picture, or damaged.
/// @throws kiocore::file_exception when the file cannot be read.
MF::IVideoFrameRef ReadPicture(const UTF16String& inPath, UTF16String& outReason);

/// Why a PNG could not be decoded, in the program's language.
UTF16String DamagedPNGReason(const std::string& inDecoderReason);

} // namespace trhost
