#pragma once

#include <kiocore/serialization/JSON.h>

#include <cstdint>
#include <string>

namespace trhost::effects {

/// What a child was doing with a plug-in.
enum class WorkerTask { kNames, kDescribe, kCheck };

/// Why a child has no answer. Kept as what happened, so that it can be told in any language.
struct WorkerFailure {
    enum class Kind {
        kRefused, ///< the engine says why in `said`
        kCrashed, ///< by the signal in `said`
        kHung,    ///< did not answer for limitMs
        kEnded,   ///< the plug-in ended the process, with the status in `said`
        kGarbled, ///< said something that is no answer
    };
    Kind kind = Kind::kRefused;
    WorkerTask task = WorkerTask::kNames;
    std::string said;
    std::string lastWords; ///< the last line that the plug-in printed before; may be empty
    std::int64_t limitMs = 0;

    friend bool operator==(const WorkerFailure&, const WorkerFailure&) = default;
};

/// One line for people: "crashed with SIGSEGV while being described".
std::string TextOf(const WorkerFailure& inFailure);

kiocore::serialization::JSON ToJSON(const WorkerFailure& inFailure);
/// @throws kiocore::serialization::bad_cast_exception.
WorkerFailure WorkerFailureFromJSON(const kiocore::serialization::JSON& inValue);

} // namespace trhost::effects
