#pragma once

#include <ZOL/BatchOperation.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace TR {

/// What the library's batch operations have in common: their station, and the two flags by which the thread
/// that works and the thread that asks it to stop know of each other. An operation that was never started
/// counts as finished.
///
/// Threading: Start, Abort and GetStationID from any thread; the rest from the working thread.
class BatchRun {
public:
    BatchRun();
    ~BatchRun();
    BatchRun(const BatchRun&) = delete;
    BatchRun& operator=(const BatchRun&) = delete;

    const ZOL::StationID& GetStationID() const { return mStation; }
    /// Submits the work to the CPU-bound executor. @return its answer; 0 when there is no executor.
    int Start(std::function<void()> inProcess);
    /// Leaves the request for the work to find and waits for the work to end; at once when none is running.
    int Abort();

    /// Takes the request away if there is one.
    bool ConsumeAbort();
    /// Posts the progress when it is far enough beyond the last one posted.
    /// @param inMeasured  what is compared and remembered, from 0 to 1.
    /// @param inShown     what is posted.
    void Progress(float inMeasured, float inShown);
    void ResetProgress() { mLastProgress = 0.0f; }
    void PostComplete();

    /// Ends the run on every way out of the work.
    class ScFinish {
    public:
        explicit ScFinish(BatchRun& inRun) : mRun(inRun) {}
        ~ScFinish() { mRun.mFinished.exchange(1); }
        ScFinish(const ScFinish&) = delete;
        ScFinish& operator=(const ScFinish&) = delete;

    private:
        BatchRun& mRun;
    };

private:
    const ZOL::StationID mStation;
    std::shared_ptr<kiocore::threads::AsyncExecutor> mExecutor;
    std::atomic<std::int32_t> mFinished{1};
    std::atomic<std::int32_t> mAbort{0};
    float mLastProgress = 0.0f;
};

} // namespace TR
