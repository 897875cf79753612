#pragma once

#include "DeviceRunner.h"
#include "DevicesModule.h"
#include "Pacer.h"

#include <media/MediaModule.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trhost::devices {

/// Where a player's sound goes: called on its audio thread each time it gets the slot.
using OutputOpener = std::function<std::unique_ptr<IAudioOutput>(const AudioFormat& inFormat)>;

struct PlayerSettings {
    std::string name = "player";
    std::uint32_t priority = TR::IPreemptableProxy::kPriorityPlayer;
    std::uint32_t key = 0;
    std::string place; ///< for people: a device, a file
    OutputOpener open;
    Pacer::Mode pacing = Pacer::Mode::kIfNeeded;
    std::unique_ptr<media::IAudioReader> media; ///< empty: silence without end
    AudioFormat format{48000, 2};               ///< of the silence; media has its own
    std::int64_t firstFrame = 0;
    std::int64_t frameCount = -1; ///< -1: to the end
};

/// Plays sound while it has been given the slot. Asked to let go it stops at once, closes the hardware and
/// opens the gate; given the slot again it goes on with the first frame that was not heard.
///
/// Threading: any thread. The destructor waits for the audio thread, for one step of it.
class Player final : private IAudioWork {
public:
    Player(PlayerSettings inSettings, DeviceThread& inDeviceThread);
    ~Player() override;

    DeviceRunner& Runner() { return mRunner; }
    /// Where it plays, in frames from the start of the media.
    std::int64_t Position() const { return mPosition; }
    bool HasFinished() const { return mHasFinished; }
    int Breaks() const { return mBreaks; }

private:
    kiocore::UTF16String Open() override;
    void Close() noexcept override;
    std::chrono::nanoseconds Step() override;
    void HaveClosed() override {}
    void Look() override {}

    bool Fill();
    std::chrono::nanoseconds FinishPlaying();
    /// Stops the media's reading when the device is to let go of the program.
    class Cancel : public media::ICancel {
    public:
        explicit Cancel(const Player& inPlayer) : mPlayer(inPlayer) {}
        bool IsCancelled() const noexcept override { return mPlayer.mIsEnding; }

    private:
        const Player& mPlayer;
    };

    PlayerSettings mSettings;
    const AudioFormat mFormat;
    const Cancel mCancel{*this};
    std::atomic<bool> mIsEnding{false};
    std::atomic<bool> mHasFinished{false};
    std::atomic<std::int64_t> mPosition;
    std::atomic<int> mBreaks{0};

    // Of the audio thread only.
    std::unique_ptr<IAudioOutput> mOutput;
    std::unique_ptr<Pacer> mPacer;
    bool mSeeks = true;        // the media stands elsewhere than we play
    bool mIsDrained = false;   // the output has all, and has played it as far as it knows
    bool mAtEnd = false;       // nothing is left to be given to the output
    std::vector<float> mChunk; // read, and not yet taken by the output:
    std::size_t mChunkTaken = 0;
    std::size_t mChunkFrames = 0;
    int mBreaksBefore = 0; // of outputs that are closed

    DeviceRunner mRunner; // last: its thread uses all the others
};

} // namespace trhost::devices
