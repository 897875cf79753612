#include "Grammar.h"

#include "../../support/Failure.h"

#include <CLI/CLI.hpp> // takes seconds to compile: included in this file only

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <regex>
#include <string_view>
#include <utility>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;
using kiocore::utility::ToUTF8;

/// How many columns a terminal takes for UTF-8; letters of East Asia take two.
std::size_t ColumnsOf(const std::string& inText)
{
    std::size_t columns = 0;
    for (char unit : inText) {
        const auto byte = static_cast<unsigned char>(unit);
        columns += (byte & 0xC0) == 0x80 ? 0 : byte >= 0xE3 && byte <= 0xED ? 2 : 1;
    }
    return columns;
}

/// A heading as the library wants it, which puts the colon behind it; some languages have a blank before
/// that.
std::string Heading(std::string_view inText)
{
    std::string heading = Shown(inText);
    if (heading.ends_with(':')) {
        heading.pop_back();
    }
    return heading;
}

/// Help in the language of the reader, whose letters may take more bytes than columns.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter()
    {
        column_width(34);
        label("Usage", Heading("$$$/Halcyon/TrHost/Help/Usage=Usage:"));
        label("OPTIONS", Shown("$$$/Halcyon/TrHost/Help/UsageOptions=OPTIONS"));
        label("SUBCOMMAND", Shown("$$$/Halcyon/TrHost/Help/UsageCommand=SUBCOMMAND"));
        label("SUBCOMMANDS", Shown("$$$/Halcyon/TrHost/Help/UsageCommands=SUBCOMMANDS"));
        label("Positionals", Heading("$$$/Halcyon/TrHost/Help/Arguments=Positionals:"));
        label("REQUIRED", Shown("$$$/Halcyon/TrHost/Help/Required=REQUIRED"));
        label("Needs", Shown("$$$/Halcyon/TrHost/Help/Needs=Needs"));
        label("Excludes", Shown("$$$/Halcyon/TrHost/Help/Excludes=Excludes"));
    }

    std::string make_group(std::string inGroup, bool inIsPositional,
                           std::vector<const CLI::Option*> inOptions) const override
    {
        const std::string title =
            inGroup == "Options" ? Heading("$$$/Halcyon/TrHost/Help/Options=Options:") : inGroup;
        return Formatter::make_group(title, inIsPositional, inOptions);
    }

    std::string make_subcommands(const CLI::App* inApp, CLI::AppFormatMode inMode) const override
    {
        std::string lines;
        for (const CLI::App* command : inApp->get_subcommands([](const CLI::App*) { return true; })) {
            lines += inMode == CLI::AppFormatMode::All
                         ? command->help(command->get_name(), CLI::AppFormatMode::Sub) + "\n"
                         : make_subcommand(command);
        }
        return lines.empty() ? lines
                             : "\n" + Shown("$$$/Halcyon/TrHost/Help/Commands=Subcommands:") + "\n" + lines;
    }

    std::string make_subcommand(const CLI::App* inCommand) const override
    {
        return Row(inCommand->get_name(), inCommand->get_description());
    }

    std::string make_option(const CLI::Option* inOption, bool inIsPositional) const override
    {
        return Row(make_option_name(inOption, inIsPositional) + make_option_opts(inOption),
                   make_option_desc(inOption));
    }

private:
    std::string Row(const std::string& inName, const std::string& inDescription) const
    {
        std::string row = "  " + inName;
        if (!inDescription.empty()) {
            const std::size_t columns = ColumnsOf(row);
            row += columns >= column_width_ ? "\n" + std::string(column_width_, ' ')
                                            : std::string(column_width_ - columns, ' ');
            row += inDescription;
        }
        return row + "\n";
    }
};

/// What the library that reads the command line says is English and made of whole sentences; we know them.
std::string Complaint(const std::string& inSaid)
{
    const struct {
        const char* said;
        const char* text;
    } kSentences[] = {
        {"The following argument was not expected: (.*)",
         "$$$/Halcyon/TrHost/Line/Unexpected=The following argument was not expected: @0"},
        {"The following arguments were not expected: (.*)",
         "$$$/Halcyon/TrHost/Line/UnexpectedWords=The following arguments were not expected: @0"},
        {"A subcommand is required", "$$$/Halcyon/TrHost/Line/CommandRequired=A subcommand is required"},
        {"(.*) is required", "$$$/Halcyon/TrHost/Line/Required=@0 is required#{@0: an option or argument}"},
        {"(.*) requires (.*)", "$$$/Halcyon/TrHost/Line/Requires=@0 requires @1#{both are options}"},
        {"(.*) excludes (.*)", "$$$/Halcyon/TrHost/Line/Excludes=@0 excludes @1#{both are options}"},
        {"Could not convert: (.*) = (.*)",
         "$$$/Halcyon/TrHost/Line/NotConverted=Could not convert: @0 = @1#{@0: an option, @1: its value}"},
        {"(.*): ([0-9]+) required (.*) missing",
         "$$$/Halcyon/TrHost/Line/ValueMissing=@0: @1 required @2 missing#{@0: --state, @1: 1, @2: DIR}"},
        {"(.*): At [Ll]east ([0-9]+) required but received ([0-9]+)",
         "$$$/Halcyon/TrHost/Line/TooFew=@0: At least @1 required but received @2#{@0: an option}"},
        {"(.*): At Most ([0-9]+) required but received ([0-9]+)",
         "$$$/Halcyon/TrHost/Line/TooMany=@0: At Most @1 required but received @2#{@0: an option}"},
        {"(.*): too many inputs for a flag",
         "$$$/Halcyon/TrHost/Line/FlagInputs=@0: too many inputs for a flag#{@0: an option}"},
        {"(.*): Should be true/false or a number",
         "$$$/Halcyon/TrHost/Line/FlagValue=@0: Should be true/false or a number#{@0: an option}"},
        {"(.*) was given a disallowed flag override",
         "$$$/Halcyon/TrHost/Line/FlagOverride=@0 was given a disallowed flag override#{@0: an option}"},
    };
    for (const auto& sentence : kSentences) {
        std::smatch found;
        if (std::regex_match(inSaid, found, std::regex(sentence.said))) {
            const auto part = [&](std::size_t i) { return ToUTF16(i < found.size() ? found[i].str() : ""); };
            return Shown(sentence.text, {part(1), part(2), part(3)});
        }
    }
    return inSaid;
}

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
    const UTF16String lowest = kiocore::utility::DecimalText(static_cast<unsigned long long>(inLowest));
    const UTF16String highest = kiocore::utility::DecimalText(static_cast<unsigned long long>(inHighest));
    const auto complain = [=](const std::string& inText) {
        int value = 0;
        return CLI::detail::lexical_cast(inText, value) && value >= inLowest && value <= inHighest
                   ? std::string()
                   : Shown("$$$/Halcyon/TrHost/Line/NotInRange=Value @0 not in range @1 to @2",
                           {ToUTF16(inText), lowest, highest});
    };
    mOption->check(complain, Shown("$$$/Halcyon/TrHost/Help/Range=INT in [@0 - @1]", {lowest, highest}));
    return *this;
}

OptionGrammar OptionGrammar::OneOf(const std::vector<std::string>& inValues) const
{
    std::string set;
    for (const std::string& value : inValues) {
        set += (set.empty() ? "{" : ",") + value;
    }
    set += "}";
    const auto complain = [=](const std::string& inText) {
        return std::find(inValues.begin(), inValues.end(), inText) != inValues.end()
                   ? std::string()
                   : Shown("$$$/Halcyon/TrHost/Line/NotInSet=@0 not in @1#{@1: all that are allowed}",
                           {ToUTF16(inText), ToUTF16(set)});
    };
    mOption->check(complain, set);
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
    CLI::App* const command = mApp->add_subcommand(inName, Shown(inDescription));
    if (inFunction) {
        command->callback([chosen = mChosen, function = std::move(inFunction)] { *chosen = function; });
    } else {
        command->require_subcommand(1);
    }
    return {command, mChosen};
}

CommandGrammar CommandGrammar::Footer(const std::string& inText) const
{
    mApp->footer(Shown(inText));
    return *this;
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::string& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::optional<std::string>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::vector<std::string>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Option(const char* inNames, int& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::optional<int>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Option(const char* inNames, unsigned long& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Option(const char* inNames, std::optional<double>& outValue,
                                     const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_option(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Flag(const char* inNames, bool& outValue,
                                   const std::string& inDescription) const
{
    return OptionGrammar(mApp->add_flag(inNames, outValue, Shown(inDescription)));
}

OptionGrammar CommandGrammar::Parsed(const char* inNames, const std::string& inDescription,
                                     const std::string& inExpected, TakeText inTake) const
{
    const std::string names = inNames;
    const std::string name = names.substr(names.find("--"));
    return OptionGrammar(mApp->add_option_function<std::string>(
        inNames,
        [name, expected = Shown(inExpected), take = std::move(inTake)](const std::string& inText) {
            if (!take(inText)) {
                throw CLI::ValidationError(
                    name, Shown("$$$/Halcyon/TrHost/Line/FoundExpected=found @0, expected @1",
                                {ToUTF16(inText), ToUTF16(expected)}));
            }
        },
        Shown(inDescription)));
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

void CommandGrammar::ThrowMissingArgument(const std::string& inText)
{
    throw CLI::RequiredError(Shown(inText), CLI::ExitCodes::RequiredError);
}

std::string Shown(std::string_view inText, std::initializer_list<UTF16String> inValues)
{
    return ToUTF8(Text(inText, inValues));
}

std::string Examples(std::initializer_list<Example> inExamples)
{
    constexpr std::size_t kRemarkColumn = 44;
    std::string text = inExamples.size() == 1 ? Shown("$$$/Halcyon/TrHost/Help/Example=Example:")
                                              : Shown("$$$/Halcyon/TrHost/Help/Examples=Examples:");
    for (const Example& example : inExamples) {
        const std::string command = example.command;
        text += "\n  " + command;
        if (example.remark) {
            text +=
                std::string(command.size() < kRemarkColumn - 2 ? kRemarkColumn - command.size() : 2, ' ') +
                Shown(example.remark);
        }
    }
    return text;
}

Grammar::Grammar(const char* inDescription, const std::string& inFooter, const std::string& inVersion)
    : mApp(std::make_unique<CLI::App>(Shown(inDescription), "trhost"))
{
    mApp->footer(Shown(inFooter));
    mApp->require_subcommand(1);
    mApp->formatter(std::make_shared<HelpFormatter>());
    mApp->set_help_flag("-h,--help", Shown("$$$/Halcyon/TrHost/Help/Help=Print this help message and exit"));
    mApp->set_version_flag("--version", inVersion,
                           Shown("$$$/Halcyon/TrHost/Help/Version=Print the version"));
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
                               ? Shown("$$$/Halcyon/TrHost/Line/Unknown=there is no command or option @0",
                                       {ToUTF16(unknown.front())})
                               : Complaint(error.what());
        for (char& letter : text) {
            letter = letter == '\n' ? ' ' : letter;
        }
        std::fprintf(stderr, "trhost: %s\n",
                     Shown("$$$/Halcyon/TrHost/Line/SeeHelp=@0; see trhost --help", {ToUTF16(text)}).c_str());
        return kExit_Usage;
    }
    return std::nullopt;
}

CommandNode Grammar::Describe() const
{
    return DescribeCommand(*mApp);
}

} // namespace trhost
