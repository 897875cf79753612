#pragma once

#include "WorkerFailure.h"
#include "platform/ChildProcess.h"

#include <kiocore/serialization/JSON.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trhost::effects {

/// How a wait is broken off: by the question, which is asked whenever something happens, and by a file that
/// becomes readable (-1: none), which also ends a wait in which nothing happens.
struct Interruption {
    std::function<bool()> isWanted;
    int wakeFile = -1;
};

struct WorkerSettings {
    std::string program;  ///< native path of trhost-effect-worker
    unsigned workers = 0; ///< most children at once; 0 is one for each processor
    /// How long a child may say nothing while it has something to do.
    std::chrono::milliseconds timeLimit{10'000};
    std::uint64_t addressSpaceBytes = 0; ///< most for each child; 0 is no limit
};

/// What came of one request.
struct WorkerAnswer {
    kiocore::serialization::JSONObject value; ///< empty after a failure
    std::vector<kiocore::serialization::JSONObject>
        notes; ///< what was told on the way, also before a failure
    std::optional<WorkerFailure> failure;
};

/// Children that try plug-ins out, so that none can hurt this process. They start when there is something to
/// do, each does one thing at a time; one that crashes or does not answer in time is ended and replaced, and
/// only what it was doing fails. A crash in a child that has had other plug-ins in it counts only when it
/// happens again in a fresh one, so that nobody is blamed for what another has left behind.
///
/// Threading: one thread, the one that made it: the children end when that thread does.
class WorkerPool {
public:
    explicit WorkerPool(WorkerSettings inSettings);
    ~WorkerPool(); ///< ends all children and waits for that; what was not answered is dropped
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    enum class Sharing {
        kShared, ///< any child will do
        kAlone,  ///< in a fresh child, which ends afterwards
    };
    /// Called in Run, and may ask for more.
    using Handler = std::function<void(WorkerAnswer&& ioAnswer)>;

    /// Queues a request ({"do":...}, see worker/Requests.h).
    void Ask(kiocore::serialization::JSONObject inRequest, WorkerTask inTask, Handler inHandler,
             Sharing inSharing = Sharing::kShared);
    /// Works until everything is answered.
    /// @return false when it was broken off: the children are ended, and what was not answered is dropped.
    /// @throws kio_exception (kError_File) when no child can be started or load the engine; what handlers
    ///     throw. All as when broken off.
    bool Run(const Interruption& inInterruption);

    /// Children that were started so far.
    int StartedCount() const { return mStartedCount; }

private:
    using Clock = std::chrono::steady_clock;
    struct Request {
        kiocore::serialization::JSONObject value;
        WorkerTask task = WorkerTask::kNames;
        Handler handler;
        bool needsFreshChild = false;
        bool endsChild = false;
    };
    struct Worker {
        std::unique_ptr<platform::ChildProcess> child; // empty: not started
        std::optional<Request> request;
        WorkerAnswer answer;
        Clock::time_point deadline;
        int requestCount = 0;
        bool isReady = false; // it has said so
    };

    void HandOut();
    void Start(Worker& ioWorker);
    void Give(Worker& ioWorker, Request inRequest);
    void Wait(int inWakeFile);
    void Hear(Worker& ioWorker);
    void HearLine(Worker& ioWorker, const std::string& inLine);
    void Garbled(Worker& ioWorker, const std::string& inProblem);
    void Finish(Worker& ioWorker);
    void Fail(Worker& ioWorker, WorkerFailure inFailure);
    void LoseChild(Worker& ioWorker, bool inIsHung);
    void EndAll();
    bool IsBusy() const;

    const WorkerSettings mSettings;
    std::vector<Worker> mWorkers;
    std::deque<Request> mRequests;
    int mStartedCount = 0;
};

} // namespace trhost::effects
