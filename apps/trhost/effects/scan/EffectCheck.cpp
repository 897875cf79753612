#include "EffectCheck.h"

#include "support/KeptText.h"
#include "support/LocalText.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/serialization/JSONConvert.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

namespace trhost::effects {

using namespace kiocore::serialization;

namespace {

/// One effect on its way through its cases.
struct Candidate {
    const EffectDescription* effect = nullptr;
    std::vector<TrialCase> cases;
    CheckResult result;
};

class Checker {
public:
    Checker(const CheckSettings& inSettings, const std::function<void(CheckResult&&)>& inResult,
            const StepProgress& inProgress)
        : mSettings(inSettings), mResult(inResult), mProgress(inProgress), mPool(inSettings.worker)
    {}

    bool Run(const std::vector<EffectDescription>& inEffects, const Interruption& inInterruption)
    {
        mTotal = static_cast<int>(inEffects.size());
        for (const EffectDescription& effect : inEffects) {
            Candidate& candidate = mCandidates.emplace_back();
            candidate.effect = &effect;
            candidate.result.matchName = effect.matchName;
            candidate.cases = mSettings.cases.empty() ? UsualCases(effect) : mSettings.cases;
            if (effect.refusal.empty()) {
                Ask(candidate, 0);
            } else {
                candidate.result.findings.push_back({FindingKind::kTakesNot, {}, ToldText(effect.refusal)});
                Finish(candidate);
            }
        }
        return mPool.Run(inInterruption);
    }

private:
    void Ask(Candidate& ioCandidate, std::size_t inFirstCase)
    {
        const std::string& technology = ioCandidate.effect->technology;
        const auto module = mSettings.modules.find(technology);
        if (module == mSettings.modules.end()) {
            throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NoEngineKnown=@0: no engine is "
                                                  "known for @1#{@0: a match name, @1: a kind of plug-ins}",
                                                  {ioCandidate.effect->matchName, technology}),
                                         kiocore::kError_BadArgument);
        }
        JSONObject request;
        AddMember(request, "do", std::string("check"));
        AddMember(request, "engine", kiocore::filesupport::FromNative(module->second));
        request["description"] = ToJSON(*ioCandidate.effect);
        JSONArray cases;
        for (std::size_t i = inFirstCase; i < ioCandidate.cases.size(); ++i) {
            cases.push_back(ToJSON(ioCandidate.cases[i]));
        }
        request["cases"] = std::move(cases);
        mPool.Ask(
            std::move(request), WorkerTask::kCheck,
            [this, &ioCandidate, inFirstCase](WorkerAnswer&& inAnswer) {
                Hear(ioCandidate, inFirstCase, inAnswer);
            },
            WorkerPool::Sharing::kAlone);
    }

    /// The notes tell which case each finding belongs to, and which one was at work when the child died.
    void Hear(Candidate& ioCandidate, std::size_t inFirstCase, const WorkerAnswer& inAnswer)
    {
        std::size_t current = inFirstCase;
        bool wasFaultTold = false;
        for (const JSONObject& note : inAnswer.notes) {
            std::size_t at = 0;
            if (ReadNote(note, at)) {
                current = inFirstCase + at;
                wasFaultTold = false;
            } else if (const auto finding = FindingOf(note)) {
                Add(ioCandidate, current, *finding);
                wasFaultTold = true;
            }
        }
        current = std::min(current, ioCandidate.cases.size() - 1);
        ioCandidate.result.casesTried = static_cast<int>(current) + 1;
        if (!inAnswer.failure) {
            Finish(ioCandidate);
            return;
        }
        // A touch of a guard page ends the child: that is the one fault, told already.
        if (!wasFaultTold) {
            AddFailure(ioCandidate, current, *inAnswer.failure);
        }
        const bool canGoOn = inAnswer.failure->kind == WorkerFailure::Kind::kCrashed ||
                             inAnswer.failure->kind == WorkerFailure::Kind::kEnded;
        if (canGoOn && current + 1 < ioCandidate.cases.size()) {
            Ask(ioCandidate, current + 1);
        } else {
            Finish(ioCandidate);
        }
    }

    static bool ReadNote(const JSONObject& inNote, std::size_t& outAt)
    {
        try {
            return ReadMember(inNote, "at", outAt);
        } catch (const bad_cast_exception&) {
            return false; // a plug-in's own words on a descriptor that is not its own
        }
    }
    static std::optional<TrialFinding> FindingOf(const JSONObject& inNote)
    {
        try {
            return inNote.count("finding") ? std::optional(TrialFindingFromJSON(inNote.at("finding")))
                                           : std::nullopt;
        } catch (const bad_cast_exception&) {
            return std::nullopt;
        }
    }

    static void Add(Candidate& ioCandidate, std::size_t inCase, const TrialFinding& inFinding)
    {
        if (inCase < ioCandidate.cases.size()) {
            ioCandidate.result.findings.push_back(
                {inFinding.kind, TextOf(ioCandidate.cases[inCase]), TextOf(inFinding)});
        }
    }
    static void AddFailure(Candidate& ioCandidate, std::size_t inCase, const WorkerFailure& inFailure)
    {
        FindingKind kind = FindingKind::kFailed;
        switch (inFailure.kind) {
        case WorkerFailure::Kind::kCrashed:
        case WorkerFailure::Kind::kEnded:
            kind = FindingKind::kCrashed;
            break;
        case WorkerFailure::Kind::kHung:
            kind = FindingKind::kHung;
            break;
        case WorkerFailure::Kind::kRefused:
        case WorkerFailure::Kind::kGarbled:
            break;
        }
        ioCandidate.result.findings.push_back({kind, TextOf(ioCandidate.cases[inCase]), TextOf(inFailure)});
    }

    void Finish(Candidate& ioCandidate)
    {
        const std::string name = ioCandidate.result.matchName;
        mResult(std::move(ioCandidate.result));
        ++mDone;
        if (mProgress) {
            mProgress(mDone, mTotal, name);
        }
    }

    const CheckSettings& mSettings;
    const std::function<void(CheckResult&&)>& mResult;
    const StepProgress& mProgress;
    WorkerPool mPool;
    std::deque<Candidate> mCandidates; // handlers know them by address
    int mDone = 0;
    int mTotal = 0;
};

std::string BufferName(MemoryUse inUse)
{
    switch (inUse) {
    case MemoryUse::kInput:
        return LocalText("$$$/Halcyon/TrHost/BufferInput=its input");
    case MemoryUse::kOutput:
        return LocalText("$$$/Halcyon/TrHost/BufferOutput=its output");
    case MemoryUse::kGiven:
        return LocalText("$$$/Halcyon/TrHost/BufferGiven=a buffer of its own");
    }
    return {};
}

std::string OutsideText(const TrialFinding& inFinding)
{
    const bool wrote = inFinding.kind == FindingKind::kWroteOutside;
    const std::vector<std::string> values{std::to_string(inFinding.distanceBytes), BufferName(inFinding.use)};
    if (inFinding.isBehind) {
        return wrote
                   ? LocalText(
                         "$$$/Halcyon/TrHost/WroteBehind=wrote outside its frame: byte @0 behind the end "
                         "of @1#{@1: its output}",
                         values)
                   : LocalText("$$$/Halcyon/TrHost/ReadBehind=read outside its frame: byte @0 behind the end "
                               "of @1#{@1: its output}",
                               values);
    }
    return wrote
               ? LocalText("$$$/Halcyon/TrHost/WroteBefore=wrote outside its frame: byte @0 before the start "
                           "of @1#{@1: its output}",
                           values)
               : LocalText("$$$/Halcyon/TrHost/ReadBefore=read outside its frame: byte @0 before the start "
                           "of @1#{@1: its output}",
                           values);
}

} // namespace

bool CheckResult::IsBad() const
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const CheckFinding& inFinding) { return IsFault(inFinding.kind); });
}

std::vector<TrialCase> UsualCases(const EffectDescription& inEffect)
{
    std::vector<TrialCase> cases;
    const auto add = [&](TrialCase inCase) { cases.push_back(inCase); };
    if (inEffect.kind == EffectKind::kAudioFilter) {
        const auto sound = [&](int inRate, int inChannels, int inBlock, bool inThreaded) {
            add({true, 0, 0, kiomediatypes::kPixelFormat_Any, inRate, inChannels, inBlock, inThreaded});
        };
        sound(48000, 2, 1024, true);
        sound(44100, 2, 1, false);
        sound(44100, 1, 64, true);
        sound(8000, 1, 4801, false);
        sound(48000, 6, 333, false);
        sound(192000, 2, 512, false);
        return cases;
    }
    const auto pictures = [&](std::uint32_t inWidth, std::uint32_t inHeight, bool inThreaded,
                              kiomediatypes::PixelFormat inFormat = kiomediatypes::kPixelFormat_Any) {
        add({false, inWidth, inHeight, inFormat, 0, 0, 0, inThreaded});
    };
    pictures(64, 48, true);
    pictures(8, 8, false);
    pictures(16, 16, false);
    pictures(9, 11, false);
    pictures(320, 240, true);
    pictures(719, 487, false);
    pictures(720, 576, false);
    pictures(1920, 1080, false);
    pictures(2048, 2048, false);
    for (std::size_t i = 1; i < inEffect.formats.size(); ++i) { // the first is the best, which all others use
        pictures(64, 48, false, inEffect.formats[i]);
    }
    return cases;
}

std::string TextOf(const TrialCase& inCase)
{
    if (inCase.isAudio) {
        return LocalText("$$$/Halcyon/TrHost/SoundSize=@0 Hz, @1 channels, blocks of @2",
                         {std::to_string(inCase.sampleRate), std::to_string(inCase.channels),
                          std::to_string(inCase.blockFrames)});
    }
    const std::string size = std::to_string(inCase.width) + "x" + std::to_string(inCase.height);
    return inCase.format == kiomediatypes::kPixelFormat_Any
               ? size
               : LocalText("$$$/Halcyon/TrHost/SizeInFormat=@0 in @1#{@0: 64x48, @1: yuv420}",
                           {size, kiomediatypes::NameOf(inCase.format)});
}

std::string TextOf(const TrialFinding& inFinding)
{
    switch (inFinding.kind) {
    case FindingKind::kWroteOutside:
    case FindingKind::kReadOutside:
        return OutsideText(inFinding);
    case FindingKind::kChangedInput:
        return LocalText("$$$/Halcyon/TrHost/ChangedInput=wrote to its input");
    case FindingKind::kThreadDependent:
        return LocalText(
            "$$$/Halcyon/TrHost/ThreadDependent=gives something else when another instance runs at once");
    case FindingKind::kVaries:
        return LocalText("$$$/Halcyon/TrHost/Varies=gives something else each time, for the same input");
    case FindingKind::kBadSamples:
        return LocalText("$$$/Halcyon/TrHost/BadSamples=gives samples that are no numbers, or infinite");
    case FindingKind::kCrashed:
    case FindingKind::kHung:
    case FindingKind::kFailed:
    case FindingKind::kTakesNot:
        break;
    }
    return ToldText(inFinding.said);
}

bool CheckEffects(const CheckSettings& inSettings, const std::vector<EffectDescription>& inEffects,
                  const std::function<void(CheckResult&&)>& inResult, const StepProgress& inProgress,
                  const Interruption& inInterruption)
{
    return Checker(inSettings, inResult, inProgress).Run(inEffects, inInterruption);
}

} // namespace trhost::effects
