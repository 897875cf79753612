#include "support/MediaCacheFixture.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>
#include <sstream>

namespace {

using kiocore::Guid;
using kiocore::UTF16String;
using support::NumberedGuid;

const Guid kState("11111111-2222-3333-4444-555555555555"); // the worker's

/// A running worker process and the pipe that it answers on.
class Worker {
public:
    explicit Worker(std::vector<std::string> inArguments)
    {
        inArguments.insert(inArguments.begin(), MEDIA_CACHE_WORKER);
        std::vector<char*> arguments;
        for (std::string& argument : inArguments) {
            arguments.push_back(argument.data());
        }
        arguments.push_back(nullptr);
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        const int error =
            posix_spawn(&mProcess, MEDIA_CACHE_WORKER, &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        mAnswers = ends[0];
        if (error != 0) {
            throw std::runtime_error("cannot start " MEDIA_CACHE_WORKER);
        }
    }
    ~Worker()
    {
        if (mProcess > 0) {
            Kill();
        }
        close(mAnswers);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Reads at least that many answers.
    void ReadAnswers(std::size_t inCount)
    {
        char buffer[4096];
        while (static_cast<std::size_t>(std::count(mText.begin(), mText.end(), '\n')) < inCount) {
            const ssize_t got = read(mAnswers, buffer, sizeof(buffer));
            if (got <= 0) {
                throw std::runtime_error("the worker ended");
            }
            mText.append(buffer, static_cast<std::size_t>(got));
        }
    }
    /// @return the wait status.
    int Kill()
    {
        kill(mProcess, SIGKILL);
        return Wait();
    }
    int Wait()
    {
        int status = 0;
        waitpid(mProcess, &status, 0);
        mProcess = 0;
        char buffer[4096];
        for (ssize_t got = read(mAnswers, buffer, sizeof(buffer)); got > 0;
             got = read(mAnswers, buffer, sizeof(buffer))) {
            mText.append(buffer, static_cast<std::size_t>(got));
        }
        return status;
    }
    bool IsRunning() const { return waitpid(mProcess, nullptr, WNOHANG) == 0; }
    /// Whole lines only: an answer that was cut off was not given.
    std::vector<std::pair<unsigned, unsigned long>> Answers() const
    {
        std::istringstream lines(mText.substr(0, mText.rfind('\n') + 1));
        std::vector<std::pair<unsigned, unsigned long>> answers;
        unsigned document;
        unsigned long stream;
        while (lines >> document >> stream) {
            answers.emplace_back(document, stream);
        }
        return answers;
    }

private:
    pid_t mProcess = 0;
    int mAnswers = -1;
    std::string mText;
};

class ProcessFaults : public support::MediaCacheFixture {
protected:
    ProcessFaults() { MakeCacheFile("shared.cfa"); }
    std::string State() const { return mFolder.Path().string(); }
};

TEST_F(ProcessFaults, TwoProcessesWithThreadsLoseNoAdd)
{
    Worker first({State(), "add", "0", "0", "60", "3"});
    Worker second({State(), "add", "0", "1000", "60", "3"});
    const UTF16String file = support::UTF16(CacheFolder() / "shared.cfa");
    for (unsigned i = 0; i < 30; ++i) { // and we are the third
        ASSERT_EQ(mDatabase->Add(NumberedGuid(0), kState, u"/media/shared.wav", 2000ul + i, u"k", file, true),
                  0);
    }
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(TR::MediaAcceleratorDatabase::ReadEntry(NumberedGuid(0), kState)->GetItemCount(), 150u);
}

TEST_F(ProcessFaults, KilledWritersLoseNothingThatWasAnswered)
{
    constexpr unsigned kDocuments = 3;
    const char* const rounds = std::getenv("TR_KILL_ROUNDS");
    const int kills = rounds ? std::atoi(rounds) : 12;
    std::mt19937 random(20);
    std::vector<std::set<unsigned long>> answered(kDocuments);
    unsigned long first = 0;
    Worker reader({State(), "read-forever", std::to_string(kDocuments)});
    const auto start = [&] {
        first += 100000;
        return std::make_unique<Worker>(std::vector<std::string>{
            State(), "add-forever", std::to_string(kDocuments), std::to_string(first)});
    };
    std::vector<std::unique_ptr<Worker>> writers;
    for (int i = 0; i < 3; ++i) {
        writers.push_back(start());
    }
    for (int round = 0; round < kills; ++round) {
        auto& victim = writers[random() % writers.size()];
        victim->ReadAnswers(1 + random() % 8);
        victim->Kill();
        for (const auto& [document, stream] : victim->Answers()) {
            answered[document].insert(stream);
        }
        victim = start();
    }
    for (auto& writer : writers) {
        writer->Kill();
        for (const auto& [document, stream] : writer->Answers()) {
            answered[document].insert(stream);
        }
    }
    EXPECT_TRUE(reader.IsRunning()) << "the reader met a damaged record or lost items";
    std::size_t checked = 0;
    for (unsigned document = 0; document < kDocuments; ++document) {
        for (const unsigned long stream : answered[document]) {
            UTF16String path;
            ASSERT_EQ(mDatabase->Find(NumberedGuid(document), kState, stream, u"k", path), 0)
                << "document " << document << " stream " << stream;
            ++checked;
        }
    }
    EXPECT_GT(checked, static_cast<std::size_t>(kills));
}

} // namespace
