#pragma once

#include <kiocore/threads/AsyncExecutor.h>

#include <string>

namespace kiocore::threads {

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
    /// Runs a task, reports what it throws, and lets go of what it holds.
    void Run(Task& ioTask) const noexcept;

private:
    const std::string mName;
};

} // namespace kiocore::threads
