#pragma once

#include "EffectCatalogue.h"
#include "EffectDescription.h"
#include "TrialCase.h"
#include "WorkerPool.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace trhost::effects {

struct CheckSettings {
    WorkerSettings worker;
    std::map<std::string, std::string> modules; ///< technology to native path of its engine
    std::vector<TrialCase> cases;               ///< empty: UsualCases of each effect
};

/// Something found in one case.
struct CheckFinding {
    FindingKind kind = FindingKind::kFailed;
    std::string size; ///< "719x487", "64x48 in yuv420", "48000 Hz, 2 channels, blocks of 1024"
    std::string text; ///< one line for people, without the size: "wrote to its input"
};

struct CheckResult {
    std::string matchName;
    std::vector<CheckFinding> findings; ///< in the order of cases
    int casesTried = 0;                 ///< fewer than there are after a hang
    bool IsBad() const;                 ///< one finding is a fault
};

/// Pictures from 8x8 to 2048x2048, among them odd sizes that a plug-in is handed unpadded, and each format
/// that it takes; sound of several rates, channels and blocks. Two of the sizes also on two threads.
std::vector<TrialCase> UsualCases(const EffectDescription& inEffect);
/// The size as findings have it.
std::string TextOf(const TrialCase& inCase);
std::string TextOf(const TrialFinding& inFinding);

/// Tries effects out in children of their own, one effect a child. A crash ends one case, and the next goes
/// on in a fresh child; a hang ends the effect, as each more would cost the whole time limit. An effect with
/// a refusal is not tried, and has one finding that says so.
///
/// Threading: any thread, which is busy with it.
/// @param inResult  told each result as it comes, on this thread.
/// @return false when it was broken off.
/// @throws kio_exception (kError_File) as WorkerPool::Run.
bool CheckEffects(const CheckSettings& inSettings, const std::vector<EffectDescription>& inEffects,
                  const std::function<void(CheckResult&&)>& inResult, const StepProgress& inProgress,
                  const Interruption& inInterruption);

} // namespace trhost::effects
