#include "Player.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace trhost::devices {
namespace {

constexpr int kChunkFrames = 1024;
constexpr int kWaitMs = 20;
constexpr std::chrono::nanoseconds kLongestPause = std::chrono::milliseconds(kWaitMs);
constexpr std::chrono::nanoseconds kUntilTold{-1};

AudioFormat FormatOf(const PlayerSettings& inSettings)
{
    return inSettings.media
               ? AudioFormat{inSettings.media->Stream().sampleRate, inSettings.media->Stream().channels}
               : inSettings.format;
}

} // namespace

Player::Player(PlayerSettings inSettings, DeviceThread& inDeviceThread)
    : mSettings(std::move(inSettings)), mFormat(FormatOf(mSettings)), mPosition(mSettings.firstFrame),
      mChunk(std::size_t(kChunkFrames) * std::size_t(mFormat.channels)),
      mRunner(mSettings.name, mSettings.priority, mSettings.key, *this, inDeviceThread)
{}

Player::~Player()
{
    mIsEnding = true;
}

kiocore::UTF16String Player::Open()
{
    mOutput = mSettings.open(mFormat);
    mPacer = std::make_unique<Pacer>(mSettings.pacing, mFormat.rate, mOutput->BufferFrames());
    mSeeks = true;
    mAtEnd = mHasFinished || mIsDrained;
    return kiocore::utility::ToUTF16(mSettings.place + " (" + std::to_string(mFormat.channels) + " x " +
                                     std::to_string(mFormat.rate) + " Hz)");
}

void Player::Close() noexcept
{
    // What the hardware was given and nobody heard is played when we have it again.
    const std::int64_t unheard = std::max<std::int64_t>(0, mIsDrained ? 0 : mOutput->QueuedFrames());
    mPosition = std::max(mSettings.firstFrame, mPosition - unheard);
    mBreaksBefore += mOutput->Breaks();
    mOutput.reset();
    mPacer.reset();
    mChunkFrames = mChunkTaken = 0;
}

/// @return whether there is something to be written.
bool Player::Fill()
{
    if (mChunkTaken < mChunkFrames) {
        return true;
    }
    const std::int64_t left = mSettings.frameCount < 0
                                  ? std::numeric_limits<std::int64_t>::max()
                                  : mSettings.firstFrame + mSettings.frameCount - mPosition;
    const int most = int(std::clamp<std::int64_t>(left, 0, kChunkFrames));
    int got = most;
    if (mSettings.media && most > 0) {
        if (std::exchange(mSeeks, false)) {
            mSettings.media->SeekTo(mPosition, mCancel);
        }
        got = mSettings.media->Read(mChunk.data(), most, mCancel);
    } else {
        std::fill(mChunk.begin(), mChunk.end(), 0.0f);
    }
    mChunkFrames = std::size_t(got);
    mChunkTaken = 0;
    return got > 0;
}

std::chrono::nanoseconds Player::Step()
{
    if (mHasFinished) {
        return kUntilTold; // holds what it has until it is asked for it
    }
    if (mAtEnd) {
        return FinishPlaying();
    }
    if (const auto ahead = mPacer->UntilNext(); ahead > ahead.zero()) {
        return std::min(ahead, kLongestPause);
    }
    if (!Fill()) {
        mAtEnd = true;
        return kLongestPause.zero();
    }
    const int taken = mOutput->Write(mChunk.data() + mChunkTaken * std::size_t(mFormat.channels),
                                     int(mChunkFrames - mChunkTaken));
    mBreaks = mBreaksBefore + mOutput->Breaks();
    if (taken == 0) {
        mOutput->Wait(kWaitMs);
        return kLongestPause.zero();
    }
    mChunkTaken += std::size_t(taken);
    mPosition += taken;
    mPacer->Count(taken);
    return kLongestPause.zero();
}

std::chrono::nanoseconds Player::FinishPlaying()
{
    if (!mIsDrained) {
        mIsDrained = mOutput->Drain();
        if (!mIsDrained) {
            return kLongestPause / 4;
        }
    }
    if (const auto left = mPacer->UntilOver(); left > left.zero()) {
        return std::min(left, kLongestPause);
    }
    mRunner.Tell(DeviceEvent::Kind::kFinished);
    mHasFinished = true;
    return kLongestPause.zero();
}

} // namespace trhost::devices
