#pragma once

#include <chrono>
#include <cstdint>

namespace trhost::devices {

/// Keeps sound at the speed of the clock where nothing else does. A device with hardware takes and gives
/// sound at its own speed, and must be left alone: its clock is the truth. Some devices (ALSA's "null") take
/// and give as much as one likes. Which kind it is shows: one that has got further ahead of our clock than
/// its buffer and 100 ms within ten seconds has none of its own.
///
/// Threading: one thread at a time.
class Pacer {
public:
    enum class Mode {
        kNever,    ///< as fast as it goes
        kIfNeeded, ///< a device that turns out to have no clock
        kAlways,
    };

    Pacer(Mode inMode, int inRate, int inBufferFrames);

    /// Frames begin to flow (again) now.
    void Start();
    void Count(std::int64_t inFrames);
    /// How long until the next frames are due; 0 = now.
    std::chrono::nanoseconds UntilNext();
    /// How long until all that was counted is over.
    std::chrono::nanoseconds UntilOver() const;

private:
    std::chrono::nanoseconds Elapsed() const;
    std::chrono::nanoseconds LengthOf(std::int64_t inFrames) const;

    const Mode mMode;
    const int mRate;
    const int mBufferFrames;
    bool mPacing = false;
    std::chrono::steady_clock::time_point mStart;
    std::int64_t mFrames = 0; // since mStart
};

} // namespace trhost::devices
