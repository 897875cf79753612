#pragma once

#include "../support/Context.h"

#include <optional>
#include <string>
#include <vector>

namespace trhost {

struct ScriptOptions {
    std::vector<std::string>
        words; ///< the file, unless there is code or a prompt, and the script's arguments
    std::optional<std::string> code; ///< to run instead of a file; its value is printed
    bool isPrompt = false;           ///< reads lines and runs each
    bool isReference = false;        ///< prints what scripts can use, and runs nothing
    std::vector<std::string> readFolders;
    std::vector<std::string> writeFolders; ///< none: the current folder
    std::vector<std::string> effectFolders;
    std::optional<double> timeLimitSeconds;
};
/// Runs a script. The exit status is what the script sets; 3 when it failed.
int Script(Context& ioContext, const ScriptOptions& inOptions);

/// Every class that scripts can use, as Markdown.
std::string ScriptReference();

} // namespace trhost
