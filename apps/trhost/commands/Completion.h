#pragma once

#include <string>
#include <vector>

namespace trhost {

/// The command line's shape, taken from its parser, so that completion cannot fall behind it.
struct CommandNode {
    struct Option {
        std::vector<std::string> names; ///< "--state", "-q"
        std::string description;
        bool takesValue = false;
        bool takesFolder = false;
        std::vector<std::string> choices;
    };
    std::string name;
    std::string description;
    std::vector<Option> options;
    std::vector<CommandNode> commands;
    std::vector<std::string> positionalChoices; ///< of its positional argument; empty = files
    bool takesFiles = false;
};

/// The completion script of a shell: "bash", "zsh" or "fish"; empty for another.
/// Options of the root are offered everywhere, as they are accepted everywhere.
std::string CompletionScript(const CommandNode& inRoot, const std::string& inShell);

} // namespace trhost
