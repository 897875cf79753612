#include "Trial.h"

#include <kiocore/config/Errors.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace trhost::effects {

namespace {

constexpr std::uint32_t kFirstSeed = 1;
constexpr std::uint32_t kSecondSeed = 2;
constexpr int kRounds = 4;                         // in which two instances meet
constexpr std::uint64_t kFewPixels = 1024u * 1024; // of pictures that several steps are made on

int StepCount(const TrialCase& inCase)
{
    return inCase.isAudio || std::uint64_t(inCase.width) * inCase.height <= kFewPixels ? 4 : 2;
}

} // namespace

std::vector<TrialFinding> Trial::Run(const TrialCase& inCase, const std::function<void()>& inStep)
{
    std::mutex lock;
    mStep = [&] {
        const std::lock_guard oneAtATime(lock);
        inStep();
    };
    mFindings.clear();
    mHadBadSamples = false;
    try {
        TryOut(inCase);
    } catch (const kiocore::kio_exception& problem) {
        const bool isNotTaken =
            problem.Code() == kEffectError_BadFrame || problem.Code() == kEffectError_Refused;
        Note(isNotTaken ? FindingKind::kTakesNot : FindingKind::kFailed, problem.what());
    } catch (const std::exception& problem) {
        Note(FindingKind::kFailed, problem.what());
    }
    mCalls.SetWatch({});
    mStep = nullptr;
    if (mHadBadSamples) {
        Note(FindingKind::kBadSamples);
    }
    for (TrialFinding& finding : mMemory.TakeFindings()) {
        mFindings.push_back(std::move(finding));
    }
    return std::exchange(mFindings, {});
}

void Trial::Note(FindingKind inKind, std::string inSaid)
{
    for (const TrialFinding& finding : mFindings) {
        if (finding.kind == inKind) {
            return;
        }
    }
    TrialFinding finding;
    finding.kind = inKind;
    finding.said = std::move(inSaid);
    mFindings.push_back(std::move(finding));
}

void Trial::TryOut(const TrialCase& inCase)
{
    const Outcome first = RunWatched(inCase, kFirstSeed, GuardedMemory::Touches::kUpperPage);
    const Outcome again = RunWatched(inCase, kFirstSeed, GuardedMemory::Touches::kLowerPage);
    if (first != again) {
        Note(FindingKind::kVaries); // so nothing can be said of threads
        return;
    }
    if (inCase.isThreaded) {
        mMemory.SetTouches(GuardedMemory::Touches::kUpperPage);
        const Outcome second = RunSteps(inCase, kSecondSeed);
        // Somebody who counts across instances gives another result each time, threads or not.
        if (RunSteps(inCase, kFirstSeed) != first) {
            Note(FindingKind::kVaries);
        } else if (DiffersInThreads(inCase, first, second)) {
            Note(FindingKind::kThreadDependent);
        }
    }
}

std::unique_ptr<ITrialRun> Trial::Open(const TrialCase& inCase, std::uint32_t inSeed)
{
    mStep();
    return inCase.isAudio ? OpenAudioTrial(mEngine, mDescription, inCase, inSeed)
                          : OpenVideoTrial(mEngine, mDescription, inCase, inSeed);
}

Trial::Outcome Trial::RunSteps(const TrialCase& inCase, std::uint32_t inSeed)
{
    const std::unique_ptr<ITrialRun> run = Open(inCase, inSeed);
    Outcome outcome;
    for (int step = 0; step < StepCount(inCase); ++step) {
        mStep();
        outcome.push_back(run->Step(step));
    }
    if (run->HadBadSamples()) {
        mHadBadSamples = true;
    }
    mStep(); // closing may hang, too
    return outcome;
}

Trial::Outcome Trial::RunWatched(const TrialCase& inCase, std::uint32_t inSeed,
                                 GuardedMemory::Touches inTouches)
{
    mMemory.SetTouches(inTouches);
    mCalls.SetWatch([this](const std::function<void()>& inCall) {
        const std::size_t before = mMemory.HashOfInputs();
        inCall();
        if (mMemory.HashOfInputs() != before) {
            Note(FindingKind::kChangedInput);
        }
    });
    Outcome outcome = RunSteps(inCase, inSeed);
    mCalls.SetWatch({});
    return outcome;
}

bool Trial::DiffersInThreads(const TrialCase& inCase, const Outcome& inFirst, const Outcome& inSecond)
{
    std::atomic<bool> differs{false};
    std::atomic<int> arrived{0};
    const auto run = [&](std::uint32_t inSeed, const Outcome& inExpected) {
        ++arrived;
        while (arrived < 2) {
            std::this_thread::yield(); // so that they really run at once
        }
        try {
            for (int round = 0; round < kRounds && !differs; ++round) {
                if (RunSteps(inCase, inSeed) != inExpected) {
                    differs = true;
                }
            }
        } catch (...) {
            differs = true; // what works alone and fails beside another depends on it
        }
    };
    std::thread other(run, kSecondSeed, std::cref(inSecond));
    run(kFirstSeed, inFirst);
    other.join();
    return differs;
}

} // namespace trhost::effects
