#include "Recorder.h"

#include "../support/Failure.h"
#include "../support/Quantities.h"

#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace trhost::devices {
namespace {

constexpr int kChunkFrames = 1024;
constexpr int kWaitMs = 20;
constexpr std::chrono::nanoseconds kLongestPause = std::chrono::milliseconds(kWaitMs);

} // namespace

Recorder::Recorder(RecorderSettings inSettings, DeviceThread& inDeviceThread)
    : mSettings(std::move(inSettings)),
      mChunk(std::size_t(kChunkFrames) * std::size_t(mSettings.format.channels)),
      mRunner(mSettings.name, TR::IPreemptableProxy::kPriorityRecorderStopped, mSettings.key, *this,
              inDeviceThread)
{}

Recorder::~Recorder() = default;

void Recorder::Record(std::unique_ptr<WaveFile> inFile, std::int64_t inMostFrames)
{
    {
        const std::lock_guard lock(mLock);
        mWish = {true, true, std::move(inFile), inMostFrames};
    }
    mIsRecording = true;
    mRunner.Proxy()->SetPriority(TR::IPreemptableProxy::kPriorityRecorderRecording);
    mRunner.Touch();
}

void Recorder::Stop()
{
    {
        const std::lock_guard lock(mLock);
        mWish = {true, false, nullptr, -1};
    }
    mRunner.Touch();
}

kiocore::UTF16String Recorder::Open()
{
    mInput = mSettings.open(mSettings.format);
    // A device without a clock would give the sound of hours in a moment.
    mPacer = std::make_unique<Pacer>(Pacer::Mode::kIfNeeded, mSettings.format.rate, 0);
    return kiocore::utility::ToUTF16(mSettings.place + " (" + std::to_string(mSettings.format.channels) +
                                     " x " + std::to_string(mSettings.format.rate) + " Hz)");
}

void Recorder::Close() noexcept
{
    mBreaksBefore += mInput->Breaks();
    mInput.reset();
    mPacer.reset();
}

void Recorder::Look()
{
    Wish wish;
    {
        const std::lock_guard lock(mLock);
        wish = std::exchange(mWish, {});
    }
    if (!wish.isNew) {
        return;
    }
    EndRecording();
    if (wish.records) {
        mFile = std::move(wish.file);
        mMostFrames = wish.mostFrames;
        mRecorded = 0;
        mPeak = 0;
        mHasBegun = false;
        mRecords = true;
    } else {
        HaveStopped(); // also when it was to record and had not begun to
    }
}

void Recorder::HaveStopped()
{
    mRunner.Proxy()->SetPriority(TR::IPreemptableProxy::kPriorityRecorderStopped);
    mIsRecording = false;
}

std::chrono::nanoseconds Recorder::Step()
{
    if (const auto ahead = mPacer->UntilNext(); ahead > ahead.zero()) {
        return std::min(ahead, kLongestPause);
    }
    const int got = mInput->Read(mChunk.data(), kChunkFrames);
    mBreaks = mBreaksBefore + mInput->Breaks();
    if (got == 0) {
        mInput->Wait(kWaitMs);
        return kLongestPause.zero();
    }
    mPacer->Count(got);
    if (mRecords) {
        Take(got);
    }
    return kLongestPause.zero();
}

void Recorder::Take(int inFrames)
{
    if (!std::exchange(mHasBegun, true)) {
        mRunner.Tell(DeviceEvent::Kind::kRecording);
    }
    const std::int64_t left = mMostFrames < 0 ? inFrames : mMostFrames - mRecorded;
    const int frames = int(std::min<std::int64_t>(inFrames, left));
    const auto samples = std::size_t(frames) * std::size_t(mSettings.format.channels);
    float peak = mPeak;
    for (std::size_t i = 0; i < samples; ++i) {
        peak = std::max(peak, std::fabs(mChunk[i]));
    }
    mPeak = peak;
    if (mFile) {
        mFile->Write(mChunk.data(), frames);
    }
    mRecorded += frames;
    if (mMostFrames >= 0 && mRecorded >= mMostFrames) {
        EndRecording();
    }
}

void Recorder::HaveClosed()
{
    EndRecording();
}

void Recorder::EndRecording()
{
    if (!std::exchange(mRecords, false)) {
        return;
    }
    const std::unique_ptr<WaveFile> file = std::move(mFile);
    kiocore::UTF16String what = Text("$$$/Halcyon/TrHost/Device/Nothing=nothing");
    try {
        if (mHasBegun && file) {
            file->Finish();
        }
    } catch (...) {
        HaveStopped();
        throw;
    }
    if (mHasBegun) {
        const std::int64_t frames = file ? file->Frames() : mRecorded.load();
        const kiocore::UTF16String seconds =
            kiocore::utility::ToUTF16(FormatDuration(double(frames) / mSettings.format.rate));
        mRecorded = frames;
        what = file ? Text("$$$/Halcyon/TrHost/Device/SecondsIn=@0 in @1#{@0: a duration, @1: a file}",
                           {seconds, kiocore::filesupport::FromNative(file->Path())})
                    : seconds;
    }
    HaveStopped();
    mRunner.Tell(DeviceEvent::Kind::kRecorded, std::move(what));
}

} // namespace trhost::devices
