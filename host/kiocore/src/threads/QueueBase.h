#pragma once

#include <kiocore/threads/AsyncExecutor.h>

#include <string>
#include <string_view>
#include <utility>

namespace kiocore::threads {

/// Runs a task, reports what it throws, and lets go of what it holds.
/// @param inExecutor  for the report, as in "CPU-bound".
void RunTask(AsyncExecutor::Task& ioTask, std::string_view inExecutor) noexcept;

/// What our own executors share: a name, a trace of what callers submit (and not of what executors
/// hand to each other), and the knowledge of having been ended.
class QueueBase : public AsyncExecutor {
public:
    explicit QueueBase(std::string inName) : mName(std::move(inName)) {}

    int Submit(Task inTask) final;
    /// Submits without a trace line.
    virtual int Accept(Task inTask) = 0;
    /// False once whatever is submitted will be refused.
    virtual bool IsOpen() const = 0;
    const std::string& Name() const { return mName; }

protected:
    void Run(Task& ioTask) const noexcept { RunTask(ioTask, mName); }

private:
    const std::string mName;
};

} // namespace kiocore::threads
