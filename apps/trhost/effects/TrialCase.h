#pragma once

#include "FrameMemory.h"

#include <kiocore/serialization/JSON.h>
#include <kiomediatypes/PixelFormat.h>

#include <cstdint>
#include <string>

/// What the program and the child that tries plug-ins out tell each other when a plug-in is checked.
namespace trhost::effects {

/// One form of pictures or of sound that a plug-in is tried on.
struct TrialCase {
    bool isAudio = false;
    std::uint32_t width = 0; ///< pictures
    std::uint32_t height = 0;
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any; ///< Any is the plug-in's best
    int sampleRate = 0;                                                  ///< sound
    int channels = 0;
    int blockFrames = 0; ///< handed over in one call
    /// Whether two instances also run at once.
    bool isThreaded = false;
};
kiocore::serialization::JSON ToJSON(const TrialCase& inCase);
TrialCase TrialCaseFromJSON(const kiocore::serialization::JSON& inValue);

/// What may be said of a plug-in that was tried.
enum class FindingKind {
    kCrashed,         ///< ended the process
    kHung,            ///< a call did not return
    kWroteOutside,    ///< memory beyond a buffer that it was given
    kReadOutside,     ///< the same, reading
    kChangedInput,    ///< wrote to memory that it may only read
    kThreadDependent, ///< two instances at once give something else than each alone
    kVaries,          ///< the same input gives something else each time; no fault by itself
    kBadSamples,      ///< sound that is not finite
    kFailed,          ///< said that it failed, or threw
    kTakesNot,        ///< does not take this size or rate; no fault
};
/// "crashed", "hung", "wrote outside", ...: for programs.
const char* NameOf(FindingKind inKind);
/// Whether a plug-in that this is said of is better not used.
bool IsFault(FindingKind inKind);

/// One thing found in one case.
struct TrialFinding {
    FindingKind kind = FindingKind::kFailed;
    MemoryUse use = MemoryUse::kOutput; ///< which buffer; kWroteOutside and kReadOutside
    bool isBehind = true;               ///< behind its end, else before its start
    std::uint64_t distanceBytes = 0;    ///< of the farthest known touch; 1 is the byte right beside
    std::string said;                   ///< kCrashed: the signal; kFailed: the plug-in's own reason
};
kiocore::serialization::JSON ToJSON(const TrialFinding& inFinding);
TrialFinding TrialFindingFromJSON(const kiocore::serialization::JSON& inValue);

} // namespace trhost::effects
