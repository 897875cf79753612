#include "Grammar.h"

#include "../../support/Failure.h"

#include <CLI/CLI.hpp> // takes seconds to compile: included in this file only

#include <cstdio>
#include <iostream>
#include <utility>

namespace trhost {

namespace {

void LetOptionsStandAnywhere(CLI::App& inApp)
{
    for (CLI::App* command : inApp.get_subcommands([](CLI::App*) { return true; })) {
        command->fallthrough();
        LetOptionsStandAnywhere(*command);
    }
}

CommandNode::Option DescribeOption(const CLI::Option& inOption)
{
    CommandNode::Option described;
    for (const std::string& name : inOption.get_snames()) {
        described.names.push_back("-" + name);
    }
    for (const std::string& name : inOption.get_lnames()) {
        described.names.push_back("--" + name);
    }
    described.description = inOption.get_description();
    described.takesValue = inOption.get_items_expected_max() > 0;
    described.takesFolder = inOption.get_type_name() == "DIR";
    return described;
}

/// Arguments of these types are no files.
bool TakesFiles(const CLI::Option& inArgument)
{
    const std::string type = inArgument.get_type_name();
    return type != "KEY" && type != "SHELL" && type != "NAME";
}

CommandNode DescribeCommand(const CLI::App& inApp)
{
    CommandNode node;
    node.name = inApp.get_name();
    node.description = inApp.get_description();
    for (const CLI::Option* option : inApp.get_options()) {
        if (option->get_positional()) {
            node.takesFiles = node.takesFiles || TakesFiles(*option);
        } else {
            node.options.push_back(DescribeOption(*option));
        }
    }
    if (node.name == "completion") {
        node.positionalChoices = {"bash", "zsh", "fish"};
    }
    for (const CLI::App* command : inApp.get_subcommands([](const CLI::App*) { return true; })) {
        node.commands.push_back(DescribeCommand(*command));
    }
    return node;
}

} // namespace

OptionGrammar OptionGrammar::Required(bool inRequired) const
{
    mOption->required(inRequired);
    return *this;
}

OptionGrammar OptionGrammar::Type(const char* inName) const
{
    mOption->type_name(inName);
    return *this;
}

OptionGrammar OptionGrammar::Range(int inLowest, int inHighest) const
{
    mOption->check(CLI::Range(inLowest, inHighest));
    return *this;
}

OptionGrammar OptionGrammar::OneOf(const std::vector<std::string>& inValues) const
{
    mOption->check(CLI::IsMember(inValues));
    return *this;
}

OptionGrammar OptionGrammar::Excludes(OptionGrammar inOther) const
{
    mOption->excludes(inOther.mOption);
    return *this;
}

OptionGrammar OptionGrammar::Needs(OptionGrammar inOther) const
{
    mOption->needs(inOther.mOption);
    return *this;
}

OptionGrammar OptionGrammar::Repeatable() const
{
    mOption->expected(1)->take_all()->allow_extra_args(false);
    return *this;
}

bool OptionGrammar::WasGiven() const
{
    return mOption->count() != 0;
}

CommandGrammar CommandGrammar::Add(const char* inName, const char* inDescription,
                                   CommandFunction inFunction) const
{
    CLI::App* const command = mApp->add_subcommand(inName, inDescription);
    if (inFunction) {
        command->callback([chosen = mChosen, function = std::move(inFunction)] { *chosen = function; });
    } else {
        command->require_subcommand(1);
    }
    return {command, mChosen};
}

CommandGrammar CommandGrammar::Footer(const std::string& inText) const
{
    mApp->footer(inText);
    return *this;
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::string& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::optional<std::string>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::vector<std::string>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Option(const char* inNames, int& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::optional<int>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Option(const char* inNames, unsigned long& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::optional<double>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Flag(const char* inNames, bool& outValue,
                                   const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_flag(inNames, outValue, inDescription));
}

OptionGrammar CommandGrammar::Parsed(const char* inNames, const std::string& inDescription,
                                     const std::string& inExpected, TakeText inTake) const
{
    const std::string names = inNames;
    const std::string name = names.substr(names.find("--"));
    return OptionGrammar(mApp->add_option_function<std::string>(
        inNames,
        [name, expected = inExpected, take = std::move(inTake)](const std::string& inText) {
            if (!take(inText)) {
                throw CLI::ValidationError(name, "found " + inText + ", expected " + expected);
            }
        },
        inDescription));
}

void CommandGrammar::WhenNamed(std::function<void()> inFunction) const
{
    mApp->require_subcommand(0, 1);
    mApp->final_callback(std::move(inFunction));
}

bool CommandGrammar::WasNamed() const
{
    return mApp->parsed();
}

void CommandGrammar::ThrowMissingArgument(const std::string& inWhat)
{
    throw CLI::RequiredError(inWhat);
}

Grammar::Grammar(const char* inDescription, const char* inFooter, const std::string& inVersion)
    : mApp(std::make_unique<CLI::App>(inDescription, "trhost"))
{
    mApp->footer(inFooter);
    mApp->require_subcommand(1);
    mApp->get_formatter()->column_width(34);
    mApp->set_version_flag("--version", inVersion, "Print the version");
}

Grammar::~Grammar() = default;

CommandGrammar Grammar::Root()
{
    return {mApp.get(), &mChosen};
}

std::optional<int> Grammar::Parse(int inCount, char** inArguments)
{
    LetOptionsStandAnywhere(*mApp);
    try {
        mApp->parse(inCount, inArguments);
    } catch (const CLI::Success& success) {
        mApp->exit(success, std::cout, std::cerr); // help or version
        return kExit_Done;
    } catch (const CLI::ParseError& error) {
        // A word that is no command also leaves the command missing; the word is what helps.
        const std::vector<std::string> unknown = mApp->remaining(true);
        std::string text = error.get_exit_code() == int(CLI::ExitCodes::RequiredError) && !unknown.empty()
                               ? "there is no command or option " + unknown.front()
                               : error.what();
        for (char& letter : text) {
            letter = letter == '\n' ? ' ' : letter;
        }
        std::fprintf(stderr, "trhost: %s; see trhost --help\n", text.c_str());
        return kExit_Usage;
    }
    return std::nullopt;
}

CommandNode Grammar::Describe() const
{
    return DescribeCommand(*mApp);
}

} // namespace trhost
