#pragma once

#include <kiocore/Export.h>
#include <kiocore/config/Errors.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace kiocore::async {

template <typename T>
class Promise;

/// The result of asynchronous work: a value or an exception, set once by a Promise.
///
/// Threading: any thread; copies share the one result. Continuations run unlocked, on the thread that
/// sets the result (or at once, on the caller's, when it is set already), or on the executor given.
template <typename T>
class Future {
public:
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    Future() = default;
    bool IsValid() const { return mState != nullptr; }
    bool IsReady() const;
    void Wait() const;
    /// @return false when the time passed first.
    bool WaitFor(std::chrono::milliseconds inLimit) const;
    /// Waits, then gives a copy of the value or throws what the work threw.
    T Get() const;
    /// Runs inContinuation(Future<T>) when the result is there.
    void OnReady(std::function<void(const Future<T>&)> inContinuation) const;
    /// A future of what inFunction makes of the value. An exception skips it and passes on.
    template <typename Function>
    auto Then(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function inFunction) const;

private:
    friend class Promise<T>;
    struct State;
    std::shared_ptr<State> mState;
};

} // namespace kiocore::async
