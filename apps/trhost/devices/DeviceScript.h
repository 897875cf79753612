#pragma once

#include <kiocore/utility/UTF16String.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trhost::devices {

/// What "expect" and "await" ask.
struct ScriptCondition {
    enum class What { kActive, kWaiting, kOpen, kRecording, kFinished, kFailed };
    What what = What::kActive;
    bool negated = false;
    std::string name;    ///< empty: nobody (kActive, kWaiting)
    std::string forName; ///< kWaiting: whom for; empty: whomever
};

/// One line of a script.
struct ScriptStatement {
    enum class Verb {
        kPlayer,
        kRecorder,
        kActivate,
        kRecord,
        kStop,
        kDeactivate,
        kReset,
        kHold,
        kRelease,
        kDestroy,
        kWait,
        kExpect,
        kAwait,
    };
    Verb verb = Verb::kReset;
    int line = 0;
    std::string name; ///< of the device
    // Paths are in the system's bytes; empty where nothing was said.
    std::string device;
    std::string media;
    std::string sink;
    std::string out;
    bool paced = true;
    std::optional<std::uint32_t> key;
    std::optional<std::uint32_t> priority;
    int rate = 48000;
    int channels = 2;
    std::chrono::nanoseconds duration{}; ///< kWait, kAwait
    ScriptCondition condition;
    std::string text; ///< of kExpect and kAwait: the condition as it was written
};

struct ScriptError {
    int line = 0;
    kiocore::UTF16String text;
};

/// A script that was read; it is sound when there are no errors. The language is described in
/// docs/trhost.md.
struct DeviceScript {
    std::vector<ScriptStatement> statements;
    std::vector<ScriptError> errors; ///< all of them, in the order of their lines
};

/// Checks also that devices are made before they are used, and not used after they are gone.
DeviceScript ParseDeviceScript(std::string_view inText);

} // namespace trhost::devices
