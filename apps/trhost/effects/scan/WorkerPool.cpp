#include "WorkerPool.h"

#include "support/LocalText.h"

#include <kiocore/config/Errors.h>
#include <kiocore/serialization/JSONConvert.h>

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <utility>

namespace trhost::effects {

using namespace kiocore::serialization;
using platform::ChildProcess;

namespace {

/// A program that is still being loaded says nothing of a plug-in, however busy the machine is.
constexpr std::chrono::milliseconds kStartLimit{60'000};

/// Whatever the member holds, as a text.
std::string TextMember(const JSONObject& inObject, const char* inName)
{
    const JSON& member = inObject.at(inName);
    const auto* const text = boost::any_cast<std::string>(&member);
    return text ? *text : Describe(member);
}

} // namespace

WorkerPool::WorkerPool(WorkerSettings inSettings) : mSettings(std::move(inSettings))
{
    const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
    mWorkers.resize(mSettings.workers ? mSettings.workers : processors);
}

WorkerPool::~WorkerPool() = default;

void WorkerPool::Ask(JSONObject inRequest, WorkerTask inTask, Handler inHandler, Sharing inSharing)
{
    const bool isAlone = inSharing == Sharing::kAlone;
    mRequests.push_back({std::move(inRequest), inTask, std::move(inHandler), isAlone, isAlone});
}

bool WorkerPool::IsBusy() const
{
    return std::any_of(mWorkers.begin(), mWorkers.end(),
                       [](const Worker& inWorker) { return inWorker.request.has_value(); });
}

bool WorkerPool::Run(const Interruption& inInterruption)
{
    const auto isInterrupted = [&] {
        return (inInterruption.isWanted && inInterruption.isWanted()) ||
               ChildProcess::IsReadable(inInterruption.wakeFile);
    };
    try {
        while (!mRequests.empty() || IsBusy()) {
            if (isInterrupted()) {
                EndAll();
                return false;
            }
            HandOut();
            Wait(inInterruption.wakeFile);
            for (Worker& worker : mWorkers) {
                if (worker.child) {
                    Hear(worker);
                }
            }
        }
        return true;
    } catch (...) {
        EndAll();
        throw;
    }
}

void WorkerPool::EndAll()
{
    for (Worker& worker : mWorkers) {
        worker = Worker();
    }
    mRequests.clear();
}

void WorkerPool::HandOut()
{
    for (Worker& worker : mWorkers) {
        if (mRequests.empty()) {
            return;
        }
        if (worker.request) {
            continue;
        }
        Request request = std::move(mRequests.front());
        mRequests.pop_front();
        if (worker.child && worker.requestCount > 0 && request.needsFreshChild) {
            worker = Worker();
        }
        if (!worker.child) {
            Start(worker);
        }
        Give(worker, std::move(request));
    }
}

void WorkerPool::Start(Worker& ioWorker)
{
    ioWorker.child = std::make_unique<ChildProcess>(
        mSettings.program,
        std::vector<std::string>{std::to_string(getpid()), std::to_string(mSettings.addressSpaceBytes)});
    ++mStartedCount;
}

void WorkerPool::Give(Worker& ioWorker, Request inRequest)
{
    ioWorker.child->ForgetWords();
    ioWorker.child->Send(GetJSONUTF8String(inRequest.value, false));
    ioWorker.answer = WorkerAnswer();
    ioWorker.request = std::move(inRequest);
    ioWorker.deadline =
        Clock::now() + (ioWorker.isReady ? mSettings.timeLimit : std::max(mSettings.timeLimit, kStartLimit));
    ++ioWorker.requestCount;
}

void WorkerPool::Wait(int inWakeFile)
{
    auto next = Clock::time_point::max();
    std::vector<const ChildProcess*> children;
    for (const Worker& worker : mWorkers) {
        if (worker.child) {
            children.push_back(worker.child.get());
        }
        if (worker.request) {
            next = std::min(next, worker.deadline);
        }
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
    ChildProcess::WaitForAny(children, inWakeFile, left.count());
}

void WorkerPool::Hear(Worker& ioWorker)
{
    std::vector<std::string> lines;
    const bool isOpen = ioWorker.child->Exchange(lines);
    for (const std::string& line : lines) {
        HearLine(ioWorker, line);
        if (!ioWorker.child) {
            return; // what it said was no answer
        }
    }
    if (!isOpen) {
        LoseChild(ioWorker, false);
    } else if (ioWorker.request && Clock::now() >= ioWorker.deadline) {
        LoseChild(ioWorker, true);
    }
}

void WorkerPool::HearLine(Worker& ioWorker, const std::string& inLine)
{
    ioWorker.deadline = Clock::now() + mSettings.timeLimit;
    if (!ioWorker.isReady) {
        ioWorker.isReady = true; // its first line says no more than that
        return;
    }
    if (!ioWorker.request) {
        return; // a plug-in that writes to descriptors which are not its own
    }
    JSONObject said;
    try {
        said = AsObject(GetJSONFromUTF8String(inLine));
    } catch (const not_well_formed_exception& problem) {
        Garbled(ioWorker, problem.what());
        return;
    } catch (const bad_cast_exception& problem) {
        Garbled(ioWorker, problem.what());
        return;
    }
    if (said.count("fatal")) {
        throw kiocore::kio_exception(TextMember(said, "fatal"), kiocore::kError_File);
    }
    if (said.count("error")) {
        Fail(ioWorker,
             {WorkerFailure::Kind::kRefused, ioWorker.request->task, TextMember(said, "error"), {}, 0});
    } else if (said.count("done")) {
        ioWorker.answer.value = std::move(said);
        Finish(ioWorker);
    } else {
        ioWorker.answer.notes.push_back(std::move(said));
    }
}

void WorkerPool::Garbled(Worker& ioWorker, const std::string& inProblem)
{
    ioWorker.child.reset();
    Fail(ioWorker, {WorkerFailure::Kind::kGarbled, ioWorker.request->task, inProblem, {}, 0});
}

void WorkerPool::Finish(Worker& ioWorker)
{
    Request request = std::move(*ioWorker.request);
    WorkerAnswer answer = std::move(ioWorker.answer);
    ioWorker.request.reset();
    if (request.endsChild || !ioWorker.child) {
        ioWorker = Worker();
    }
    request.handler(std::move(answer));
}

void WorkerPool::Fail(Worker& ioWorker, WorkerFailure inFailure)
{
    ioWorker.answer.failure = std::move(inFailure);
    Finish(ioWorker);
}

void WorkerPool::LoseChild(Worker& ioWorker, bool inIsHung)
{
    const platform::ChildEnd end = ioWorker.child->End();
    const std::string words = ioWorker.child->LastWords();
    if (!ioWorker.isReady) {
        // It did not come as far as a plug-in: none is to blame, and the next child would do no better.
        throw kiocore::kio_exception(
            LocalText("$$$/Halcyon/TrHost/WorkerDoesNotStart=@0 does not start (@1): @2",
                      {mSettings.program,
                       end.signal.empty() ? "status " + std::to_string(end.exitStatus) : end.signal, words}),
            kiocore::kError_File);
    }
    ioWorker.child.reset();
    if (!ioWorker.request) {
        ioWorker = Worker(); // died between two requests; the next one gets a new child
        return;
    }
    if (!inIsHung && ioWorker.requestCount > 1) {
        ioWorker.request->needsFreshChild = true;
        mRequests.push_front(std::move(*ioWorker.request));
        ioWorker = Worker();
        return;
    }
    WorkerFailure failure{WorkerFailure::Kind::kCrashed, ioWorker.request->task, end.signal, words, 0};
    if (inIsHung) {
        failure.kind = WorkerFailure::Kind::kHung;
        failure.said.clear();
        failure.limitMs = mSettings.timeLimit.count();
    } else if (end.signal.empty()) {
        failure.kind = WorkerFailure::Kind::kEnded;
        failure.said = std::to_string(end.exitStatus);
    }
    Fail(ioWorker, std::move(failure));
}

} // namespace trhost::effects
