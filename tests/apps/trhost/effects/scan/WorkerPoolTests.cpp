#include "Specimens.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/serialization/JSONConvert.h>
#include <support/KeptText.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sys/resource.h>
#include <unistd.h>

namespace trhost::effects {
namespace {

using namespace kiocore::serialization;
using testing::HasSubstr;
using testing::MatchesRegex;

class Pool : public testing::Test {
protected:
    Pool() { setenv("TMPDIR", mWorkFolders.Path().c_str(), 1); }
    ~Pool() override { unsetenv("TMPDIR"); }

    JSONObject Request(const char* inWhat, const std::string& inFile, const std::string& inName = {}) const
    {
        JSONObject request{
            {"do", std::string(inWhat)}, {"engine", std::string(SPECIMEN_MODULE)}, {"file", inFile}};
        AddMember(request, "name", inName);
        return request;
    }
    void AskToDescribe(WorkerPool& ioPool, const std::string& inName)
    {
        const PluginFile file = specimens::WritePlugins(mFolder, "plugins", {});
        ioPool.Ask(Request("describe", file.file, inName), WorkerTask::kDescribe,
                   [this, inName](WorkerAnswer&& inAnswer) {
                       EXPECT_EQ(mAnswers.count(inName), 0u) << inName << " was answered twice";
                       mAnswers[inName] = inAnswer.failure ? TextOf(*inAnswer.failure) : "described";
                   });
    }
    bool IsWorkFolderEmpty() const { return std::filesystem::is_empty(mWorkFolders.Path()); }

    support::TemporaryFolder mFolder;
    support::TemporaryFolder mWorkFolders;
    std::map<std::string, std::string> mAnswers;
};

TEST_F(Pool, APluginThatFailsIsListedWithTheReasonAndHurtsNoOther)
{
    const int filesBefore = specimens::OpenFileCount();
    {
        WorkerSettings settings = specimens::Worker(specimens::kShortLimit);
        WorkerPool pool(settings);
        for (const char* name : {"good 1", "crash", "good 2", "hang", "good 3", "exit", "abort loudly",
                                 "throw", "print", "good 4", "crash again", "good 5"}) {
            AskToDescribe(pool, name);
        }
        ASSERT_TRUE(pool.Run({}));
        EXPECT_EQ(specimens::HasChildren(), true); // they stay for what comes next
    }
    const struct {
        const char* name;
        const char* answer;
    } kExpected[] = {
        {"good 1", "described"},
        {"good 2", "described"},
        {"good 3", "described"},
        {"good 4", "described"},
        {"good 5", "described"},
        {"print", "described"},
        {"crash", "crashed with SIGSEGV while being described"},
        {"crash again", "crashed with SIGSEGV while being described"},
        {"hang", "did not answer for 0.5 s while being described"},
        {"exit", "ended the process with status 7 while being described"},
        {"abort loudly", "crashed with SIGABRT while being described; it had said \"plug-in: ring buffer is "
                         "upside down\""},
        {"throw", "no licence was found"},
    };
    for (const auto& expected : kExpected) {
        EXPECT_EQ(mAnswers[expected.name], expected.answer) << expected.name;
    }
    EXPECT_EQ(mAnswers.size(), std::size(kExpected));
    EXPECT_FALSE(specimens::HasChildren());
    EXPECT_EQ(specimens::OpenFileCount(), filesBefore);
    EXPECT_TRUE(IsWorkFolderEmpty());
}

TEST_F(Pool, AFileThatCrashesWhenAskedWhatItHoldsCostsOneChild)
{
    WorkerSettings settings = specimens::Worker();
    settings.workers = 1;
    WorkerPool pool(settings);
    std::vector<std::string> answers;
    for (const char* first : {"crash", "fine"}) {
        const PluginFile file = specimens::WritePlugins(mFolder, first, {first, "another"});
        pool.Ask(Request("names", file.file), WorkerTask::kNames, [&](WorkerAnswer&& inAnswer) {
            answers.push_back(inAnswer.failure ? TextOf(*inAnswer.failure)
                                               : GetJSONUTF8String(inAnswer.value.at("names"), false));
        });
    }
    ASSERT_TRUE(pool.Run({}));
    EXPECT_THAT(answers,
                testing::ElementsAre("crashed with SIGSEGV while being loaded", "[\"fine\",\"another\"]"));
    EXPECT_EQ(pool.StartedCount(), 2);
}

TEST_F(Pool, NobodyIsBlamedForWhatAnotherPluginHasLeftBehind)
{
    WorkerSettings settings = specimens::Worker();
    settings.workers = 1;
    WorkerPool pool(settings);
    for (const char* name : {"first", "second", "third"}) {
        AskToDescribe(pool, name);
    }
    ASSERT_TRUE(pool.Run({}));
    EXPECT_EQ(mAnswers["second"], "described");
    EXPECT_EQ(mAnswers["third"], "described");
    EXPECT_EQ(pool.StartedCount(), 2);
}

TEST_F(Pool, HandlersMayAskForMore)
{
    WorkerPool pool(specimens::Worker());
    const PluginFile file = specimens::WritePlugins(mFolder, "two", {"a", "b"});
    pool.Ask(Request("names", file.file), WorkerTask::kNames, [&](WorkerAnswer&& inAnswer) {
        for (const auto& name : GetMember<std::vector<std::string>>(inAnswer.value, "names")) {
            AskToDescribe(pool, name);
        }
    });
    ASSERT_TRUE(pool.Run({}));
    EXPECT_EQ(mAnswers.size(), 2u);
}

TEST_F(Pool, BreakingOffEndsTheChildrenAtOnce)
{
    const struct {
        const char* name;
        bool byFile;
    } kCases[] = {{"by a file that becomes readable", true}, {"by the question", false}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        mAnswers.clear();
        WorkerPool pool(specimens::Worker()); // whose limit would outlast the test's
        AskToDescribe(pool, "good");
        AskToDescribe(pool, "hang");
        int wake[2];
        ASSERT_EQ(pipe(wake), 0);
        Interruption interruption;
        if (test.byFile) {
            interruption.wakeFile = wake[0];
            pool.Ask(Request("names", specimens::WritePlugins(mFolder, "f", {"a"}).file), WorkerTask::kNames,
                     [&](WorkerAnswer&&) { ASSERT_EQ(write(wake[1], "", 1), 1); });
        } else {
            interruption.isWanted = [&] { return mAnswers.count("good") > 0; };
        }
        EXPECT_FALSE(pool.Run(interruption));
        EXPECT_EQ(mAnswers.count("hang"), 0u);
        EXPECT_FALSE(specimens::HasChildren());
        EXPECT_TRUE(IsWorkFolderEmpty());
        close(wake[0]);
        close(wake[1]);
        EXPECT_TRUE(pool.Run({})); // nothing is left to do
    }
}

TEST_F(Pool, ChildrenHaveNoMoreMemoryThanAllowed)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers take terabytes of address space themselves";
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "sanitizers take terabytes of address space themselves";
#endif
#endif
    WorkerSettings settings = specimens::Worker();
    settings.addressSpaceBytes = std::uint64_t(2) << 30;
    WorkerPool pool(settings);
    AskToDescribe(pool, "greedy");
    AskToDescribe(pool, "modest");
    ASSERT_TRUE(pool.Run({}));
    EXPECT_EQ(mAnswers["greedy"], "std::bad_alloc");
    EXPECT_EQ(mAnswers["modest"], "described");
}

TEST_F(Pool, WhatNoRequestCanSucceedWithoutIsAnErrorAndNoPluginsFault)
{
    const struct {
        const char* name;
        std::string program;
        std::string engine;
        const char* text;
    } kCases[] = {
        {"no program", (mFolder / "no-such-worker").native(), SPECIMEN_MODULE,
         "no-such-worker: No such file"},
        {"a program that ends at once", "/bin/false", SPECIMEN_MODULE,
         "/bin/false does not start \\(status 1\\)"},
        {"no engine", WORKER_PROGRAM, (mFolder / "no-such-engine.so").native(), "no-such-engine.so"},
        {"a module that is no engine", WORKER_PROGRAM, "libm.so.6", "trhost_effect_engine"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        WorkerSettings settings = specimens::Worker();
        settings.program = test.program;
        WorkerPool pool(settings);
        JSONObject request = Request("names", "any");
        request["engine"] = test.engine;
        pool.Ask(request, WorkerTask::kNames, [](WorkerAnswer&&) { FAIL() << "a plug-in was blamed"; });
        try {
            pool.Run({});
            ADD_FAILURE() << "ran";
        } catch (const kiocore::kio_exception& problem) {
            EXPECT_THAT(trhost::ToldText(problem.what()), testing::ContainsRegex(test.text));
            EXPECT_EQ(problem.Code(), kiocore::kError_File);
        }
        EXPECT_FALSE(specimens::HasChildren());
    }
}

} // namespace
} // namespace trhost::effects
