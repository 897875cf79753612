#pragma once

#include "CatchingCalls.h"
#include "EffectEngine.h"
#include "GuardedMemory.h"
#include "TrialCase.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trhost::effects {

/// One instance at work on an input that only a number decides, on one thread from its making to its end.
class ITrialRun {
public:
    virtual ~ITrialRun() = default;
    /// Does one step (a picture, a block of sound). @return what came out, as one number.
    virtual std::size_t Step(int inNumber) = 0;
    /// Whether something came out that was not finite.
    virtual bool HadBadSamples() const { return false; }
};

/// Tries one plug-in out: alone with memory that ends at a guard, alone with memory that begins at one, and
/// on two threads.
///
/// Threading: one thread; starts others, and has joined them when it returns.
class Trial {
public:
    Trial(IEffectEngine& inEngine, const EffectDescription& inDescription, GuardedMemory& inMemory,
          CatchingCalls& inCalls)
        : mEngine(inEngine), mDescription(inDescription), mMemory(inMemory), mCalls(inCalls)
    {}

    /// @param inStep  called before each call of the plug-in, on any thread, never on two at once.
    std::vector<TrialFinding> Run(const TrialCase& inCase, const std::function<void()>& inStep);

private:
    using Outcome = std::vector<std::size_t>; // of each step
    std::unique_ptr<ITrialRun> Open(const TrialCase& inCase, std::uint32_t inSeed);
    Outcome RunSteps(const TrialCase& inCase, std::uint32_t inSeed);
    Outcome RunWatched(const TrialCase& inCase, std::uint32_t inSeed, GuardedMemory::Touches inTouches);
    bool DiffersInThreads(const TrialCase& inCase, const Outcome& inFirst, const Outcome& inSecond);
    void TryOut(const TrialCase& inCase);
    void Note(FindingKind inKind, std::string inSaid = {});

    IEffectEngine& mEngine;
    const EffectDescription& mDescription;
    GuardedMemory& mMemory;
    CatchingCalls& mCalls;
    std::function<void()> mStep;
    std::vector<TrialFinding> mFindings;
    std::atomic<bool> mHadBadSamples{false};
};

/// Opens a plug-in that runs on pictures, or on sound.
/// @param inSeed  decides what the input is.
/// @throws what the engine throws.
std::unique_ptr<ITrialRun> OpenVideoTrial(IEffectEngine& inEngine, const EffectDescription& inDescription,
                                          const TrialCase& inCase, std::uint32_t inSeed);
std::unique_ptr<ITrialRun> OpenAudioTrial(IEffectEngine& inEngine, const EffectDescription& inDescription,
                                          const TrialCase& inCase, std::uint32_t inSeed);

} // namespace trhost::effects
