#include "Completion.h"

#include <functional>

namespace trhost {

namespace {

using Path = std::vector<const CommandNode*>;

void Visit(const CommandNode& inNode, Path& ioPath, const std::function<void(const Path&)>& inVisit)
{
    ioPath.push_back(&inNode);
    inVisit(ioPath);
    for (const CommandNode& command : inNode.commands) {
        Visit(command, ioPath, inVisit);
    }
    ioPath.pop_back();
}

void VisitAll(const CommandNode& inRoot, const std::function<void(const Path&)>& inVisit)
{
    Path path;
    Visit(inRoot, path, inVisit);
}

/// "cache find", without the program's own name; "" for the root.
std::string Words(const Path& inPath)
{
    std::string words;
    for (std::size_t i = 1; i < inPath.size(); ++i) {
        words += (i > 1 ? " " : "") + inPath[i]->name;
    }
    return words;
}

std::string Join(const std::vector<std::string>& inWords)
{
    std::string joined;
    for (const std::string& word : inWords) {
        joined += (joined.empty() ? "" : " ") + word;
    }
    return joined;
}

/// In single quotes, for any of the three shells.
std::string Quote(const std::string& inText)
{
    std::string quoted = "'";
    for (char letter : inText) {
        if (letter == '\'') {
            quoted += "'\\''";
        } else {
            quoted += letter;
        }
    }
    return quoted + "'";
}

std::vector<CommandNode::Option> OptionsOf(const CommandNode& inRoot, const Path& inPath)
{
    std::vector<CommandNode::Option> options = inPath.back()->options;
    if (inPath.size() > 1) {
        for (const CommandNode::Option& option : inRoot.options) {
            bool known = false;
            for (const CommandNode::Option& own : inPath.back()->options) {
                known = known || own.names.back() == option.names.back();
            }
            if (!known) {
                options.push_back(option);
            }
        }
    }
    return options;
}

/// Shared by bash and zsh (which reads bash completions): a case for each command, and one for each option
/// that wants a value.
std::string BashScript(const CommandNode& inRoot)
{
    std::string words;
    std::string offers;
    std::string values;
    VisitAll(inRoot, [&](const Path& inPath) {
        const CommandNode& node = *inPath.back();
        std::vector<std::string> candidates = node.positionalChoices;
        for (const CommandNode& command : node.commands) {
            candidates.push_back(command.name);
            words += "        " + Quote(Words(inPath) + (inPath.size() > 1 ? " " : "") + command.name) +
                     ") command=\"$next\" ;;\n";
        }
        for (const CommandNode::Option& option : OptionsOf(inRoot, inPath)) {
            candidates.insert(candidates.end(), option.names.begin(), option.names.end());
            if (!option.takesValue) {
                continue;
            }
            for (const std::string& name : option.names) {
                const std::string found = !option.choices.empty()
                                              ? "compgen -W " + Quote(Join(option.choices)) + " --"
                                          : option.takesFolder ? std::string("compgen -d --")
                                                               : std::string();
                values += "        " + Quote(Words(inPath) + ":" + name) + ") " +
                          (found.empty() ? "COMPREPLY=()"
                                         : "mapfile -t COMPREPLY < <(" + found + " \"$current\")") +
                          "; return ;;\n";
            }
        }
        offers += "        " + Quote(Words(inPath)) + ") mapfile -t COMPREPLY < <(compgen -W " +
                  Quote(Join(candidates)) + " -- \"$current\")" +
                  (node.takesFiles ? "\n            mapfile -t -O \"${#COMPREPLY[@]}\" COMPREPLY < <(compgen "
                                     "-f -- \"$current\")"
                                   : "") +
                  " ;;\n";
    });
    return "# Completion of trhost for bash: source <(trhost completion bash)\n"
           "_trhost()\n"
           "{\n"
           "    local current=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\" "
           "command='' next i\n"
           "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
           "        next=\"${command:+$command }${COMP_WORDS[i]}\"\n"
           "        case \"$next\" in\n" +
           words +
           "        esac\n"
           "    done\n"
           "    case \"$command:$previous\" in\n" +
           values +
           "    esac\n"
           "    case \"$command\" in\n" +
           offers +
           "    esac\n"
           "}\n"
           "complete -o filenames -F _trhost trhost\n";
}

std::string ZshScript(const CommandNode& inRoot)
{
    return "#compdef trhost\n"
           "# Completion of trhost for zsh: source <(trhost completion zsh)\n"
           "autoload -U +X compinit && compinit\n"
           "autoload -U +X bashcompinit && bashcompinit\n"
           "# zsh has no mapfile; one line is one candidate.\n"
           "mapfile() {\n"
           "    local name=\"${@[-1]}\" line\n"
           "    [[ \"$2\" == -O ]] || eval \"$name=()\"\n"
           "    while IFS= read -r line; do eval \"$name+=(\\\"\\$line\\\")\"; done\n"
           "}\n" +
           BashScript(inRoot);
}

std::string FishScript(const CommandNode& inRoot)
{
    std::string script = "# Completion of trhost for fish: trhost completion fish | source\n"
                         "function __trhost_at\n"
                         "    set -l words\n"
                         "    for word in (commandline -opc)[2..-1]\n"
                         "        string match -q -- '-*' $word; or set -a words $word\n"
                         "    end\n"
                         "    test (count $argv) -eq 0; and test (count $words) -eq 0; and return 0\n"
                         "    test (count $argv) -gt 0; and test \"$words[1..(count $argv)]\" = \"$argv\"\n"
                         "end\n"
                         "complete -c trhost -f\n";
    VisitAll(inRoot, [&](const Path& inPath) {
        const CommandNode& node = *inPath.back();
        const std::string at =
            "complete -c trhost -n " + Quote("__trhost_at" + (inPath.size() > 1 ? " " + Words(inPath) : ""));
        for (const CommandNode& command : node.commands) {
            script += at + " -a " + Quote(command.name) + " -d " + Quote(command.description) + "\n";
        }
        if (node.takesFiles) {
            script += at + " -F\n";
        }
        if (!node.positionalChoices.empty()) {
            script += at + " -a " + Quote(Join(node.positionalChoices)) + "\n";
        }
        // The root's options have no condition: they may stand anywhere.
        const std::string optionAt = inPath.size() > 1 ? at : "complete -c trhost";
        for (const CommandNode::Option& option : node.options) {
            script += optionAt;
            for (const std::string& name : option.names) {
                script += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            script += option.takesValue ? " -r" : "";
            if (!option.choices.empty()) {
                script += " -a " + Quote(Join(option.choices));
            } else if (option.takesFolder) {
                script += " -a '(__fish_complete_directories)'";
            }
            script += " -d " + Quote(option.description) + "\n";
        }
    });
    return script;
}

} // namespace

std::string CompletionScript(const CommandNode& inRoot, const std::string& inShell)
{
    return inShell == "bash"   ? BashScript(inRoot)
           : inShell == "zsh"  ? ZshScript(inRoot)
           : inShell == "fish" ? FishScript(inRoot)
                               : std::string();
}

} // namespace trhost
