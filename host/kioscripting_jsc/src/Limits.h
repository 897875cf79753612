#pragma once

#include "EngineFunctions.h"
#include "JobWatch.h"

#include <exception>

namespace kioscripting_jsc {

struct Runtime;

/// Ends runs that take too long or were cancelled. The engine asks; scripts cannot catch its ending them.
///
/// Threading: the engine's thread.
class Limits {
public:
    explicit Limits(Runtime& inRuntime) : mRuntime(inRuntime) {}

    /// Whether there is any limit.
    bool IsOn() const;
    void BeginRun();
    /// What comes now are jobs of promises.
    void BeginJobs() { mJobs = {}; }
    void EndRun();

    /// What jobs of ours ask, which run among the others.
    enum class Answer { kStop, kGoOn, kEnd };
    Answer OnTick(std::size_t inWhich);

    /// For natives, before they start a script: an ended one would catch what they throw and go on.
    /// @throws RunEnded.
    void Check() const;
    bool HasEnded() const { return mEnding != Ending::kNone; }
    /// @throws script_exception, or what isCancelled threw.
    void ThrowIfEnded() const;

private:
    enum class Ending { kNone, kTime, kCancelled, kFailed };
    static bool OnAsked(JSContextRef inContext, void* inLimits);
    void Ask() noexcept;
    void Set();

    Runtime& mRuntime;
    double mStart = 0; // of the run, processor time of its thread
    double mLastAsked = 0;
    JobWatch mJobs;
    Ending mEnding = Ending::kNone;
    std::exception_ptr mFailure; // of isCancelled
};

} // namespace kioscripting_jsc
