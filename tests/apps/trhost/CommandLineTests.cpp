#include "ProgramRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace trhosttest {

using testing::HasSubstr;

TEST(CommandLine, AnswersWithItsExitStatusAndOneLine)
{
    const Workplace place;
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        const char* error;
    } kCases[] = {
        {"nothing said", {}, 2, "subcommand is required"},
        {"unknown command", {"injest"}, 2, "injest"},
        {"unknown option", {"cache", "list", "--jsn"}, 2, "--jsn"},
        {"missing argument", {"cache", "show"}, 2, "media is required"},
        {"age without unit", {"cache", "prune", "--older-than", "90"}, 2, "expected an age"},
        {"prune without a limit", {"cache", "prune"}, 2, "--older-than AGE"},
        {"dry run of nothing", {"cache", "verify", "--dry-run"}, 2, "--repair"},
        {"delete-all with nobody to ask", {"cache", "delete-all"}, 2, "no terminal"},
        {"bad suite version", {"--suite-version", "x", "cache", "list"}, 2, "digits and single dots"},
        {"bad trace level", {"--trace", "Host:11", "cache", "list"}, 2, "Host:11"},
        {"unknown preference", {"prefs", "set", "colour", "red"}, 2, "colour"},
        {"bad preference", {"prefs", "set", "durability", "granite"}, 2, "full, file or none"},
        {"media without record", {"cache", "show", "/nowhere/a.wav"}, 1, "/nowhere/a.wav"},
        {"missing media", {"ingest", "/nowhere/a.wav"}, 3, "No such file"},
        {"folder without media", {"ingest", place.Media("")}, 1, "no media files"},
        {"missing record file", {"cache", "dump", "/nowhere/a.mcdb"}, 3, "/nowhere/a.mcdb"},
        {"an empty cache", {"cache", "list"}, 0, ""},
        {"help", {"--help"}, 0, ""},
        {"help of a command", {"cache", "prune", "--help"}, 0, ""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = place.Run(test.arguments);
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(run.err, HasSubstr(test.error));
        if (test.status != 0) {
            EXPECT_EQ(CountLines(run.err, "trhost: "), CountLines(run.err, "")) << run.err;
        }
    }
}

TEST(CommandLine, GlobalOptionsStandBeforeAndAfterTheCommand)
{
    const Workplace place;
    const std::string expected = place.Run({"--json", "prefs", "show"}).out;
    EXPECT_THAT(expected, HasSubstr(R"({"key":"durability","value":"file"})"));
    EXPECT_EQ(place.Run({"prefs", "--json", "show"}).out, expected);
    EXPECT_EQ(place.Run({"prefs", "show", "--json"}).out, expected);
}

TEST(CommandLine, PreferencesOutliveTheRun)
{
    const Workplace place;
    ASSERT_EQ(place.Run({"prefs", "set", "cache-folder", place.Root() / "elsewhere"}).status, 0);
    ASSERT_EQ(place.Run({"prefs", "set", "side-by-side", "on"}).status, 0);
    ASSERT_EQ(place.Run({"prefs", "set", "memory-budget", "1M"}).status, 0);
    const std::string shown = place.Run({"prefs", "show"}).out;
    EXPECT_THAT(shown, HasSubstr("cache-folder = " + (place.Root() / "elsewhere").native()));
    EXPECT_THAT(shown, HasSubstr("side-by-side = on"));
    EXPECT_THAT(shown, HasSubstr("memory-budget = 1048576"));
}

TEST(CommandLine, TheTraceShowsTheStartInOrder)
{
    const Workplace place;
    const std::string trace = place.Run({"cache", "list", "--trace", "Host"}).err;
    std::size_t at = 0;
    for (const char* call :
         {"RegisterMainThread", "SetClientName", "SetSuiteClientVersion", "IPreferences::Load",
          "SetDefaultsBelow", "RegisterDirectory(\"kioshared.documents\"", "BE::Initialize",
          "ProcessorSupportsSSE", "CreateCPUBoundExecutor", "WaitForPostedWork", "BE::Shutdown",
          "UnregisterMainThread"}) {
        const std::size_t found = trace.find(call, at);
        ASSERT_NE(found, std::string::npos) << call << " is not there, or too early, in\n" << trace;
        at = found;
    }
}

TEST(CommandLine, CompletionOffersWhatTheParserKnows)
{
    const Workplace place;
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        SCOPED_TRACE(shell);
        const RunResult run = place.Run({"completion", shell});
        EXPECT_EQ(run.status, 0);
        for (const char* word : {"ingest", "delete-all", "older-than", "suite-version"}) {
            EXPECT_THAT(run.out, HasSubstr(word));
        }
    }
    std::ofstream(place.Root() / "script") << place.Run({"completion", "bash"}).out
                                           << "COMP_WORDS=(trhost --json cache pr); COMP_CWORD=3; _trhost\n"
                                              "echo \"${COMPREPLY[*]}\"\n";
    EXPECT_EQ(Child("/bin/bash", {place.Root() / "script"}).Wait().out, "prune\n");
    EXPECT_EQ(place.Run({"completion", "dos"}).status, 2);
}

} // namespace trhosttest
