#pragma once

#include "DeviceRunner.h"
#include "DevicesModule.h"
#include "Pacer.h"
#include "WaveFile.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace trhost::devices {

using InputOpener = std::function<std::unique_ptr<IAudioInput>(const AudioFormat& inFormat)>;

struct RecorderSettings {
    std::string name = "recorder";
    std::uint32_t key = 0;
    std::string place; ///< for people: a device
    InputOpener open;
    AudioFormat format{48000, 2};
};

/// Records while it has been given the slot. Stopped, it listens and keeps nothing, and lets go as readily as
/// a player; recording, its priority is the recorder's, so that only another recording makes it let go. What
/// was recorded until then is complete and kept: a recording cannot be made again. That is so, too, when the
/// device fails or the disk is full; then it failed all the same.
///
/// Threading: any thread. The destructor waits for the audio thread, for one step and for completing the
/// file.
class Recorder final : private IAudioWork {
public:
    Recorder(RecorderSettings inSettings, DeviceThread& inDeviceThread);
    ~Recorder() override;

    DeviceRunner& Runner() { return mRunner; }

    /// Begins to record as soon as it has the slot, which is to be asked for after this.
    /// @param inFile        where to; empty throws the sound away.
    /// @param inMostFrames  stops by itself after these; -1 never.
    void Record(std::unique_ptr<WaveFile> inFile, std::int64_t inMostFrames);
    /// Completes the file; goes on listening.
    void Stop();

    const AudioFormat& Format() const { return mSettings.format; }
    /// Whether it is to record, or does.
    bool IsRecording() const { return mIsRecording; }
    std::int64_t RecordedFrames() const { return mRecorded; }
    /// The loudest sample of this recording; 1 = full scale.
    float Peak() const { return mPeak; }
    int Breaks() const { return mBreaks; }

private:
    struct Wish {
        bool isNew = false;
        bool records = false;
        std::unique_ptr<WaveFile> file;
        std::int64_t mostFrames = -1;
    };

    kiocore::UTF16String Open() override;
    void Close() noexcept override;
    std::chrono::nanoseconds Step() override;
    void HaveClosed() override;
    void Look() override;

    void Take(int inFrames);
    void EndRecording();
    void HaveStopped();

    const RecorderSettings mSettings;
    std::atomic<bool> mIsRecording{false};
    std::atomic<std::int64_t> mRecorded{0};
    std::atomic<float> mPeak{0};
    std::atomic<int> mBreaks{0};

    std::mutex mLock; // guards mWish
    Wish mWish;

    // Of the audio thread only.
    std::unique_ptr<IAudioInput> mInput;
    std::unique_ptr<Pacer> mPacer;
    std::vector<float> mChunk;
    bool mRecords = false;
    bool mHasBegun = false; // the first frames came
    std::unique_ptr<WaveFile> mFile;
    std::int64_t mMostFrames = -1;
    int mBreaksBefore = 0;

    DeviceRunner mRunner; // last: its thread uses all the others
};

} // namespace trhost::devices
