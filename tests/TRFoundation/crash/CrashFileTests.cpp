#include <TR/EffectPluginManagerCrashDetection.h>

#include "CrashFileFixture.h"
#include "SpecimenModules.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/CrashContext.h>
#include <kiocore/debug/CrashHandling.h>
#include <kiocore/debug/DebugDatabase.h>
#include <kiocore/exceptions/Trail.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <gmock/gmock.h>

#include <csignal>
#include <functional>

namespace {

using crash::Contents;
using kiocore::ImmutableString;
using kiocore::classref::MakeObject;
using kiocore::debug::DebugDatabase;
using kiocore::serialization::Serializer;
using kiocore::utility::Dictionary;
using namespace specimen;

using CrashFile = crash::CrashFileTest;

void Push(const char* inKey, const char* inText)
{
    kiocore::debug::PushCrashContextForCurrentThread(Dictionary(inKey, ImmutableString(inText)));
}

TEST_F(CrashFile, HoldsTheInnermostDescriptionOfTheThreadThatAsks)
{
    const struct {
        const char* name;
        std::function<void()> prepare; // in the child, before the file is written
        std::optional<std::string> expected;
    } kCases[] = {
        {"no plug-in runs", [] {}, std::nullopt},
        {"one plug-in", [] { Push(TR::kCrashContextMetadataKey, "{\"a\":1}"); }, "{\"a\":1}"},
        {"the inner of two",
         [] {
             Push(TR::kCrashContextMetadataKey, "outer");
             Push(TR::kCrashContextMetadataKey, "inner");
         },
         "inner"},
        {"entries of others are passed over",
         [] {
             Push(TR::kCrashContextMetadataKey, "plug-in");
             Push("another key", "no");
         },
         "plug-in"},
        {"an empty description, and a good one outside it", // the innermost counts, good or not
         [] {
             Push(TR::kCrashContextMetadataKey, "outer");
             Push(TR::kCrashContextMetadataKey, "");
         },
         std::nullopt},
        {"an empty description does not count as a report",
         [] {
             Push(TR::kCrashContextMetadataKey, "outer");
             Push(TR::kCrashContextMetadataKey, "");
             TR::WriteCrashedEffectPluginFile();
             kiocore::debug::PopCrashContextForCurrentThread();
         },
         "outer"},
        {"only the first report of a process",
         [] {
             Push(TR::kCrashContextMetadataKey, "first");
             TR::WriteCrashedEffectPluginFile();
             std::filesystem::remove(crash::PreferencesFolder::CrashFile());
             Push(TR::kCrashContextMetadataKey, "second");
         },
         std::nullopt},
        {"an older report stays, and counts as the process's one",
         [] {
             crash::Write("older");
             Push(TR::kCrashContextMetadataKey, "newer");
         },
         "older"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::filesystem::remove(crash::PreferencesFolder::CrashFile());
        EXPECT_EXIT(
            {
                test.prepare();
                TR::WriteCrashedEffectPluginFile();
                std::_Exit(0);
            },
            testing::ExitedWithCode(0), "");
        EXPECT_EQ(Contents(), test.expected);
    }
}

TEST_F(CrashFile, IsWrittenWhenThePluginKillsTheProcess)
{
    EXPECT_EXIT(
        {
            kiocore::debug::InstallCrashHandling();
            kiocore::debug::AddCrashCallback(&TR::WriteCrashedEffectPluginFile);
            const TR::ScSetCurrentPluginModule sentinel(MakeObject<FilterModule>("kills.a"), 0);
            std::raise(SIGSEGV);
        },
        testing::KilledBySignal(SIGSEGV), "");
    EXPECT_EQ(Contents(), ExpectedJSON("kills.a"));
}

/// @return why consuming failed, "code text"; empty with the record in outPlugin.
std::string Consume(TR::CrashedEffectPlugin& outPlugin)
{
    try {
        outPlugin = TR::ConsumeCrashedEffectPluginFile().Get();
        return "";
    } catch (const kiocore::kio_exception& error) {
        return std::to_string(error.Code()) + " " + kiocore::utility::ToUTF8(error.Text());
    } catch (const kiocore::serialization::bad_cast_exception&) {
        return "bad cast";
    } catch (const std::exception& error) {
        return error.what();
    }
}

TEST_F(CrashFile, IsReadOnceAndDeletedWhateverItHolds)
{
    const struct {
        const char* name;
        std::string text;
        std::string expectedError; // its beginning
        std::string expectedMatchName;
        std::string expectedVersion;
    } kCases[] = {
        {"a whole record", ExpectedJSON("whole.a", "s"), "", "whole.a", "1.2"},
        {"a match name alone", R"({"matchName":"alone.a"})", "", "alone.a", ""},
        {"members that nobody knows", R"({"matchName":"x","later":[1,{}]})", "", "x", ""},
        {"no members", "{}", "", "", ""},
        {"an empty file", "", "JSON not well-formed", "", ""},
        {"cut short", R"({"matchName":"x)", "JSON not well-formed", "", ""},
        {"a member twice", R"({"type":"","type":""})", "JSON not well-formed", "", ""},
        {"a list", R"(["matchName"])", "bad cast", "", ""},
        {"a member of another type", R"({"isFirstParty":"yes"})", "bad cast", "", ""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        crash::Write(test.text);
        TR::CrashedEffectPlugin plugin;
        const std::string error = Consume(plugin);
        EXPECT_THAT(error, testing::StartsWith(test.expectedError));
        EXPECT_EQ(error.empty(), test.expectedError.empty()) << error;
        EXPECT_EQ(plugin.matchName, test.expectedMatchName);
        EXPECT_EQ(plugin.version, test.expectedVersion);
        EXPECT_FALSE(plugin.isFirstParty);
        EXPECT_EQ(Contents(), std::nullopt);
    }
}

TEST_F(CrashFile, ThatIsNotThereFailsNamingTheCondition)
{
    const auto future = TR::ConsumeCrashedEffectPluginFile();
    try {
        future.Get();
        FAIL() << "consumed a file that is not there";
    } catch (const kiocore::kio_exception& error) {
        EXPECT_EQ(error.Code(), 0xA00F0003u);
        EXPECT_EQ(error.Text(), u"Crashed plugin file does not exist");
        EXPECT_STREQ(error.Source(), "EffectPluginManagerCrashDetection");
        EXPECT_STREQ(error.FailedCondition(), "!file.Exists()");
    }
}

TEST_F(CrashFile, RecordsReadBackAsTheyWere)
{
    TR::CrashedEffectPlugin plugin;
    plugin.matchName = "m \"quoted\"";
    plugin.displayName = "Weichzeichner \xC3\xBC";
    plugin.pluginHostTechnology = "t";
    plugin.categoryName = "c";
    plugin.isFirstParty = true;
    plugin.version = "v";
    plugin.author = "a";
    plugin.type = "y";
    plugin.sessionID = "s\n";
    using Plugins = Serializer<TR::CrashedEffectPlugin>;
    const std::string text = Plugins::ToUTF8String(plugin);
    EXPECT_EQ(text, R"({"author":"a","categoryName":"c","displayName":"Weichzeichner )"
                    "\xC3\xBC"
                    R"(","isFirstParty":true,"matchName":"m \"quoted\"","pluginHostTechnology":"t",)"
                    R"("sessionID":"s\n","type":"y","version":"v"})");
    EXPECT_EQ(Plugins::ToUTF8String(Plugins::FromUTF8String(text)), text);
}

/// Runs a sentinel with the switch on.
void Provoke(const char* inMatchName)
{
    DebugDatabase::Set(TR::kProvokeCrashKey, true);
    const TR::ScSetCurrentPluginModule sentinel(MakeObject<FilterModule>(inMatchName), 0);
}

TEST_F(CrashFile, AProvokedFaultIsReportedAndThePluginRuns)
{
    EXPECT_EXIT(
        {
            Provoke("frei0r.glow");
            const auto trail = kiocore::exceptions::GetTrail();
            std::fprintf(stderr, "%zu %s %d\n", trail.size(), trail.front().AsJSON().c_str(),
                         DebugDatabase::GetBool(TR::kProvokeCrashKey, true));
            std::_Exit(0);
        },
        testing::ExitedWithCode(0),
        R"(^1 \{"category":"exception","checkpoint":"Machine Exception","exception":11,"level":"error"\} 0)");
    EXPECT_EQ(Contents(), ExpectedJSON("frei0r.glow"));
}

TEST_F(CrashFile, AProvokedFaultEndsAProcessThatIsToEndOfIt)
{
    EXPECT_EXIT(
        {
            kiocore::debug::InstallCrashHandling();
            kiocore::debug::AddCrashCallback(&TR::WriteCrashedEffectPluginFile);
            kiocore::exceptions::SetShouldCrashOnMachineException(true);
            Provoke("avfilter.hflip");
        },
        testing::KilledBySignal(SIGABRT), "Machine Exception");
    EXPECT_EQ(Contents(), ExpectedJSON("avfilter.hflip"));
}

TEST_F(CrashFile, OnlyTheNineCanBeProvoked)
{
    EXPECT_EXIT(
        {
            Provoke("frei0r.sobel");
            std::_Exit(DebugDatabase::GetBool(TR::kProvokeCrashKey, false) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(Contents(), std::nullopt);
}

TEST_F(CrashFile, CannotBeReadOnceTheProcessEnds)
{
    EXPECT_EXIT(
        {
            crash::Write(ExpectedJSON("late.a"));
            const auto before = TR::ConsumeCrashedEffectPluginFile();
            kiocore::threads::TerminateExecutors(); // waits for what was begun
            if (!before.IsReady() || before.Get().matchName != "late.a") {
                std::_Exit(1);
            }
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace

int main(int inCount, char** inArguments)
{
    testing::InitGoogleTest(&inCount, inArguments);
    testing::AddGlobalTestEnvironment(new crash::PreferencesFolder(true));
    return RUN_ALL_TESTS();
}
