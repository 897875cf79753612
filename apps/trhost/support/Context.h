#pragma once

#include "Output.h"
#include "StateFolders.h"

#include <kiocore/threads/MainThread.h>

#include <memory>
#include <string>
#include <vector>

namespace trhost {

/// What may be said before or after every command.
struct GlobalOptions {
    std::string stateFolder;
    bool json = false;
    bool quiet = false;
    std::string language;
    std::string suiteVersion = "14.0";
    std::string applicationName = "Media Host";
    int applicationType = 0;
    std::vector<std::string> traces;      ///< "CHANNEL" or "CHANNEL:LEVEL"
    std::vector<std::string> features;    ///< "NAME=on" or "NAME=off"
    std::vector<std::string> debugValues; ///< "KEY=VALUE"
    bool safeMode = false;                ///< no third-party effects, and nothing about them is written
};

/// What a command works with.
struct Context {
    const GlobalOptions& options;
    Output& output;
    const StateFolders& folders;
    std::shared_ptr<kiocore::threads::MainThread> mainThread;
};

} // namespace trhost
