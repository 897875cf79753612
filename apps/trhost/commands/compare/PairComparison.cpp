#include "PairComparison.h"

#include "DifferencePicture.h"
#include "ReportPicture.h"

#include "../../support/Interrupt.h"
#include "../../support/PictureFile.h"

#include <VF/PNG.h>

#include <exception>

namespace trhost::compare {

namespace {

using kiocore::utility::DecimalText;

struct Frames {
    MF::IVideoFrameRef a;
    MF::IVideoFrameRef b;
};

UTF16String Named(const UTF16String& inPath, const UTF16String& inReason)
{
    return Text("$$$/Halcyon/TrHost/FileReason=@0: @1#{@0: a file, @1: what is wrong with it}",
                {inPath, inReason});
}

MF::IVideoFrameRef ReadOrThrow(const UTF16String& inPath)
{
    UTF16String reason;
    MF::IVideoFrameRef frame = ReadPicture(inPath, reason);
    if (!frame) {
        throw Failure(kExit_Failed, Named(inPath, reason));
    }
    return frame;
}

Frames ReadBoth(const PairRequest& inRequest)
{
    if (KindOfPicture(inRequest.a) != PictureKind::kPNG || KindOfPicture(inRequest.b) != PictureKind::kPNG) {
        Frames frames;
        frames.a = ReadOrThrow(inRequest.a);
        frames.b = ReadOrThrow(inRequest.b);
        return frames;
    }
    VF::PNGPair pair = VF::DecompressPNGs(inRequest.a, inRequest.b);
    if (!pair.first) {
        throw Failure(kExit_Failed, Named(inRequest.a, DamagedPNGReason(pair.firstReason)));
    }
    if (!pair.second) {
        throw Failure(kExit_Failed, Named(inRequest.b, DamagedPNGReason(pair.secondReason)));
    }
    return {std::move(pair.first), std::move(pair.second)};
}

void ThrowIfSizesDiffer(const PairRequest& inRequest, const Frames& inFrames)
{
    if (inFrames.a->GetWidth() == inFrames.b->GetWidth() &&
        inFrames.a->GetHeight() == inFrames.b->GetHeight()) {
        return;
    }
    throw Failure(
        kExit_Failed,
        Text("$$$/Halcyon/TrHost/Compare/SizesDiffer=could not compare: @0 has @1 x @2 pixels, @3 "
             "has @4 x @5; expected one size",
             {inRequest.a, DecimalText(inFrames.a->GetWidth()), DecimalText(inFrames.a->GetHeight()),
              inRequest.b, DecimalText(inFrames.b->GetWidth()), DecimalText(inFrames.b->GetHeight())}));
}

void ThrowNotCompared(const PairRequest& inRequest, std::int32_t inStatus)
{
    if (std::uint32_t(inStatus) == VF::kDifference_NoMemory) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/Compare/NoMemory=could not compare @0 with @1: there is not "
                           "enough memory",
                           {inRequest.a, inRequest.b}));
    }
    throw Failure(kExit_Failed,
                  Text("$$$/Halcyon/TrHost/Compare/NotCompared=could not compare @0 with @1 "
                       "(status @2); --trace Frames tells why",
                       {inRequest.a, inRequest.b,
                        DecimalText(static_cast<unsigned long long>(std::uint32_t(inStatus)))}));
}

void Compare(const PairRequest& inRequest, PairResult& ioResult)
{
    Frames frames = ReadBoth(inRequest);
    ThrowIfSizesDiffer(inRequest, frames);
    if (IsInterrupted()) {
        return;
    }
    ioResult.width = frames.a->GetWidth();
    ioResult.height = frames.a->GetHeight();
    ioResult.formatA = frames.a->GetPixelFormat();
    ioResult.formatB = frames.b->GetPixelFormat();
    MF::IVideoFrameRef picture;
    // One frame for both: their files are the same to the byte, and there is nothing to paint.
    if ((!inRequest.differencePath.empty() || inRequest.wantsPictures) && frames.a != frames.b) {
        // The second picture is not needed any more unless a report shows it.
        const bool isInPlace = !inRequest.wantsPictures && CanHoldDifference(frames.a, frames.b);
        picture = isInPlace ? frames.b : MakeDifferenceFrame(frames.a, frames.b);
    }
    ioResult.difference =
        VF::ComputeDifferenceImages(frames.a, frames.b, picture, inRequest.tolerance, &ioResult.details);
    if (ioResult.difference.status < 0) {
        ThrowNotCompared(inRequest, ioResult.difference.status);
    }
    const bool isSame = ioResult.difference.numDiffPixels == 0;
    if (!isSame && inRequest.wantsPictures) {
        ioResult.pictures = {ReportPicture(frames.a), ReportPicture(frames.b), ReportDifference(picture)};
    }
    frames = {}; // the encoder needs memory too
    if (IsInterrupted()) {
        return;
    }
    if (!isSame && picture && !inRequest.differencePath.empty()) {
        WriteDifference(picture, ioResult, inRequest.tolerance, inRequest.differencePath);
        ioResult.differencePath = inRequest.differencePath;
    }
    ioResult.outcome = isSame ? Outcome::kSame : Outcome::kDifferent;
}

void Fail(PairResult& ioResult, const UTF16String& inReason)
{
    ioResult.outcome = Outcome::kFailed;
    ioResult.reason = inReason;
    ioResult.pictures = {};
}

} // namespace

PairResult ComparePair(const PairRequest& inRequest) noexcept
{
    PairResult result;
    try {
        if (IsInterrupted()) {
            return result;
        }
        Compare(inRequest, result);
        if (result.outcome == Outcome::kSame && !inRequest.differencePath.empty()) {
            RemoveEarlierDifference(inRequest.differencePath);
        }
    } catch (const Failure& failure) {
        Fail(result, failure.GetText());
    } catch (const std::exception& error) {
        Fail(result, Told(error));
    }
    return result;
}

} // namespace trhost::compare
