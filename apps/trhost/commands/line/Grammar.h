#pragma once

#include "../../support/Context.h"
#include "../Completion.h"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace trhost {

using CommandFunction = std::function<int(Context&)>;

/// An option or an argument of a command, as it is being described. A handle: the grammar owns it.
class OptionGrammar {
public:
    explicit OptionGrammar(CLI::Option* inOption) : mOption(inOption) {}

    OptionGrammar Required(bool inRequired = true) const;
    /// What help shows for the value: "DIR", "FILE". Completion offers folders for "DIR".
    OptionGrammar Type(const char* inName) const;
    OptionGrammar Range(int inLowest, int inHighest) const;
    OptionGrammar OneOf(const std::vector<std::string>& inValues) const;
    OptionGrammar Excludes(OptionGrammar inOther) const;
    OptionGrammar Needs(OptionGrammar inOther) const;
    /// One value each time, as often as one likes.
    OptionGrammar Repeatable() const;
    bool WasGiven() const;

private:
    CLI::Option* mOption;
};

/// What a localised text says, in UTF-8; one without a key is said already.
std::string Shown(std::string_view inText, std::initializer_list<kiocore::UTF16String> inValues = {});

/// A command line that help shows as it is, and what it does in a localised text.
struct Example {
    const char* command;
    const char* remark = nullptr;
};
/// The end of a command's help, headed "Example:" or "Examples:".
std::string Examples(std::initializer_list<Example> inExamples);

/// A command, as it is being described. A handle: the grammar owns it. Variables that options fill must live
/// as long as the grammar. Descriptions, expectations and footers are localised texts ("$$$/Key=English").
class CommandGrammar {
public:
    /// Takes a value; says what it expected when the text means nothing to it.
    using TakeText = std::function<bool(const std::string& inText)>;

    CommandGrammar(CLI::App* inApp, CommandFunction* outChosen) : mApp(inApp), mChosen(outChosen) {}

    /// A command below this one. One without a function wants a command below it.
    CommandGrammar Add(const char* inName, const char* inDescription,
                       CommandFunction inFunction = nullptr) const;
    CommandGrammar Footer(const std::string& inText) const;

    /// Names are "-o,--output" for options and "media" for arguments.
    OptionGrammar Option(const char* inNames, std::string& outValue, const std::string& inDescription) const;
    OptionGrammar Option(const char* inNames, std::optional<std::string>& outValue,
                         const std::string& inDescription) const;
    OptionGrammar Option(const char* inNames, std::vector<std::string>& outValue,
                         const std::string& inDescription) const;
    OptionGrammar Option(const char* inNames, int& outValue, const std::string& inDescription) const;
    OptionGrammar Option(const char* inNames, std::optional<int>& outValue,
                         const std::string& inDescription) const;
    OptionGrammar Option(const char* inNames, unsigned long& outValue,
                         const std::string& inDescription) const;
    OptionGrammar Option(const char* inNames, std::optional<double>& outValue,
                         const std::string& inDescription) const;
    OptionGrammar Flag(const char* inNames, bool& outValue, const std::string& inDescription) const;
    /// An option whose text must mean something.
    /// @param inExpected  "a size such as 50G or 800M".
    OptionGrammar Parsed(const char* inNames, const std::string& inDescription, const std::string& inExpected,
                         TakeText inTake) const;
    /// @param inParse  gives an optional.
    template <typename Parse, typename Value>
    OptionGrammar ParsedInto(const char* inNames, const std::string& inDescription,
                             const std::string& inExpected, Parse inParse, Value& outValue) const
    {
        return Parsed(inNames, inDescription, inExpected, [inParse, &outValue](const std::string& inText) {
            const auto value = inParse(inText);
            if (value) {
                outValue = *value;
            }
            return static_cast<bool>(value);
        });
    }

    /// Runs when this command was named, after its options were taken. May choose a function, or call
    /// ThrowMissingArgument.
    void WhenNamed(std::function<void()> inFunction) const;
    void Choose(CommandFunction inFunction) const { *mChosen = std::move(inFunction); }
    /// Whether the command was named.
    bool WasNamed() const;
    [[noreturn]] static void ThrowMissingArgument(const std::string& inText);

private:
    CLI::App* mApp;
    CommandFunction* mChosen;
};

/// The command line as a whole. The one place that knows the library which reads it: including that takes
/// seconds.
class Grammar {
public:
    Grammar(const char* inDescription, const std::string& inFooter, const std::string& inVersion);
    ~Grammar();
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;

    CommandGrammar Root();

    /// Reads the command line once everything is described.
    /// @return the exit status when everything is said already (help, version, wrong usage).
    std::optional<int> Parse(int inCount, char** inArguments);
    /// What was chosen; empty when nothing was.
    const CommandFunction& Chosen() const { return mChosen; }
    /// Everything that was described, for shells that complete words.
    CommandNode Describe() const;

private:
    std::unique_ptr<CLI::App> mApp;
    CommandFunction mChosen;
};

} // namespace trhost
