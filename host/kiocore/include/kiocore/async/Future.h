#pragma once

#include <kiocore/Export.h>
#include <kiocore/config/Errors.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kiocore::async {

template <typename T>
class Future;
template <typename T>
class Promise;

namespace detail {

template <typename T>
using ValueOf = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

/// What a promise and its futures share. The result is written once, before isReady, and only read
/// after it; so it is read without the lock.
template <typename T>
struct State {
    using Continuation = std::function<void(const Future<T>&)>;

    std::mutex lock; // guards the members below until the result is there
    std::condition_variable arrived;
    bool isReady = false;
    std::optional<ValueOf<T>> value;
    std::exception_ptr exception;
    std::vector<Continuation> continuations;
};

template <typename T>
struct IsFuture : std::false_type {};
template <typename T>
struct IsFuture<Future<T>> : std::true_type {
    using Inner = T;
};

/// The type of what inFunction makes of a T.
template <typename T, typename Function>
struct ResultOf {
    using Type = std::invoke_result_t<Function&, const T&>;
};
template <typename Function>
struct ResultOf<void, Function> {
    using Type = std::invoke_result_t<Function&>;
};

/// A function that gives a Future<U> makes a Future<U>, not a future of one.
template <typename T>
struct Flat {
    using Type = T;
};
template <typename T>
struct Flat<Future<T>> {
    using Type = T;
};

} // namespace detail

/// The result of asynchronous work: a value or an exception, set once by a Promise.
///
/// Threading: any thread; copies share the one result. Continuations run unlocked, in the order in which
/// they were added, on the thread that sets the result (or at once, on the caller's, when it is set
/// already), or on the executor given. One that throws is reported on trace channel "Threads".
/// All but IsValid throws null_reference_exception when it was made without a promise.
template <typename T>
class Future {
public:
    using Value = detail::ValueOf<T>;

    Future() = default;
    bool IsValid() const { return mState != nullptr; }
    bool IsReady() const;
    void Wait() const;
    /// @return false when the time passed first.
    bool WaitFor(std::chrono::milliseconds inLimit) const;
    /// Waits, then gives a copy of the value or throws what the work threw.
    T Get() const;
    /// Waits; empty when there is a value.
    std::exception_ptr GetException() const;
    /// Runs inContinuation(const Future<T>&) when the result is there.
    void OnReady(std::function<void(const Future<T>&)> inContinuation) const;
    /// A future of what inFunction(value) gives; inFunction() when T is void. A function that gives a
    /// future is waited for, so that its value is the result. An exception skips the function and passes
    /// on. Runs on the executor; where the result is set when that is empty. An executor that refuses
    /// makes it fail with kError_ExecutorTerminated, one that drops the task with kError_BrokenPromise.
    template <typename Function>
    auto Then(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function inFunction) const;

private:
    friend class Promise<T>;
    template <typename U>
    friend class Future;
    using State = detail::State<T>;

    explicit Future(std::shared_ptr<State> inState) : mState(std::move(inState)) {}
    State& Required() const
    {
        if (!mState) {
            throw null_reference_exception("kiocore::async::Promise");
        }
        return *mState;
    }

    std::shared_ptr<State> mState;
};

/// Sets the result of its futures. One that goes without having set it fails them with
/// kError_BrokenPromise, so that nobody waits forever.
///
/// Threading: as a plain value; its futures may be anywhere.
template <typename T>
class Promise {
public:
    Promise() : mState(std::make_shared<detail::State<T>>()) {}
    ~Promise() { Break(); }
    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&& inOther) noexcept
    {
        if (this != &inOther) {
            Break();
            mState = std::move(inOther.mState);
        }
        return *this;
    }

    /// @throws null_reference_exception, as the other members, when it was moved from.
    async::Future<T> Future() const { return async::Future<T>(Required()); }

    /// @throws kio_exception (kError_BadArgument) when the result was set before; that one stays.
    void SetValue(detail::ValueOf<T> inValue) requires(!std::is_void_v<T>)
    {
        Set([&](detail::State<T>& state) { state.value.emplace(std::move(inValue)); });
    }
    void SetValue() requires std::is_void_v<T>
    {
        Set([](detail::State<T>& state) { state.value.emplace(); });
    }
    void SetException(std::exception_ptr inException)
    {
        Set([&](detail::State<T>& state) { state.exception = std::move(inException); });
    }

    /// Sets what inFunction(inArguments...) gives, or throws.
    template <typename Function, typename... Arguments>
    void SetResultOf(Function& inFunction, const Arguments&... inArguments);

private:
    const std::shared_ptr<detail::State<T>>& Required() const
    {
        if (!mState) {
            throw null_reference_exception("kiocore::async::Promise");
        }
        return mState;
    }
    template <typename Setter>
    void Set(Setter inSetter);
    void Break() noexcept;

    std::shared_ptr<detail::State<T>> mState;
};

/// Runs inFunction() on the executor; a future of what it gives, flattened as by Then. A refusal makes the
/// future fail with kError_ExecutorTerminated.
/// @param inPriority  for callers that rank their work; changes nothing, as executors run tasks in the order
///     of submission.
/// @throws null_reference_exception when inExecutor is empty.
template <typename Function>
auto CallAsync(const std::shared_ptr<threads::AsyncExecutor>& inExecutor, Function inFunction,
               int inPriority = 0);

// ---------------------------------------------------------------------------------------------

template <typename T>
bool Future<T>::IsReady() const
{
    State& state = Required();
    std::lock_guard lock(state.lock);
    return state.isReady;
}

template <typename T>
void Future<T>::Wait() const
{
    State& state = Required();
    std::unique_lock lock(state.lock);
    state.arrived.wait(lock, [&] { return state.isReady; });
}

template <typename T>
bool Future<T>::WaitFor(std::chrono::milliseconds inLimit) const
{
    State& state = Required();
    std::unique_lock lock(state.lock);
    return state.arrived.wait_for(lock, inLimit, [&] { return state.isReady; });
}

template <typename T>
T Future<T>::Get() const
{
    Wait();
    if (mState->exception) {
        std::rethrow_exception(mState->exception);
    }
    if constexpr (!std::is_void_v<T>) {
        return *mState->value;
    }
}

template <typename T>
std::exception_ptr Future<T>::GetException() const
{
    Wait();
    return mState->exception;
}

namespace detail {

template <typename T>
void RunContinuation(const std::function<void(const Future<T>&)>& inContinuation,
                     const Future<T>& inFuture) noexcept
{
    try {
        inContinuation(inFuture);
    } catch (...) {
        threads::ReportException("A continuation of a future");
    }
}

} // namespace detail

template <typename T>
void Future<T>::OnReady(std::function<void(const Future<T>&)> inContinuation) const
{
    State& state = Required();
    {
        std::lock_guard lock(state.lock);
        if (!state.isReady) {
            state.continuations.push_back(std::move(inContinuation));
            return;
        }
    }
    detail::RunContinuation<T>(inContinuation, *this);
}

template <typename T>
template <typename Setter>
void Promise<T>::Set(Setter inSetter)
{
    // Held here, as a continuation may destroy this promise.
    const std::shared_ptr<detail::State<T>> state = Required();
    std::vector<typename detail::State<T>::Continuation> continuations;
    {
        std::lock_guard lock(state->lock);
        if (state->isReady) {
            throw kio_exception("The result of a promise was set twice", kError_BadArgument);
        }
        inSetter(*state);
        state->isReady = true;
        continuations.swap(state->continuations);
    }
    state->arrived.notify_all();
    const async::Future<T> future(state);
    for (const auto& continuation : continuations) {
        detail::RunContinuation<T>(continuation, future);
    }
}

template <typename T>
void Promise<T>::Break() noexcept
{
    if (!mState) {
        return;
    }
    {
        std::lock_guard lock(mState->lock);
        if (mState->isReady) {
            return;
        }
    }
    SetException(std::make_exception_ptr(kio_exception(
        "The work that should have given a result went away without one", kError_BrokenPromise)));
}

template <typename T>
template <typename Function, typename... Arguments>
void Promise<T>::SetResultOf(Function& inFunction, const Arguments&... inArguments)
{
    using Result = std::invoke_result_t<Function&, const Arguments&...>;
    // Only what the function throws becomes the result, not what continuations do.
    std::exception_ptr exception;
    if constexpr (detail::IsFuture<Result>::value) {
        try {
            Result inner = inFunction(inArguments...);
            auto outer = std::make_shared<Promise>(std::move(*this));
            inner.OnReady([outer](const Result& ready) {
                if (std::exception_ptr thrown = ready.GetException()) {
                    outer->SetException(std::move(thrown));
                } else if constexpr (std::is_void_v<T>) {
                    outer->SetValue();
                } else {
                    outer->SetValue(ready.Get());
                }
            });
            return;
        } catch (...) {
            exception = std::current_exception();
        }
    } else if constexpr (std::is_void_v<T>) {
        try {
            inFunction(inArguments...);
        } catch (...) {
            exception = std::current_exception();
        }
        if (!exception) {
            SetValue();
            return;
        }
    } else {
        std::optional<T> value;
        try {
            value.emplace(inFunction(inArguments...));
        } catch (...) {
            exception = std::current_exception();
        }
        if (value) {
            SetValue(std::move(*value));
            return;
        }
    }
    SetException(std::move(exception));
}

namespace detail {

/// Runs inWork(promise) on the executor, or here when that is empty. inWork must be copyable, as tasks are.
template <typename T, typename Work>
void RunOn(const std::shared_ptr<threads::AsyncExecutor>& inExecutor, std::shared_ptr<Promise<T>> inPromise,
           Work inWork)
{
    if (!inExecutor) {
        inWork(*inPromise);
        return;
    }
    // The executor gets the only handle but ours: a task that it drops breaks the promise.
    if (inExecutor->Submit([promise = inPromise, inWork]() mutable { inWork(*promise); }) < 0) {
        inPromise->SetException(
            std::make_exception_ptr(kio_exception("Executor Is Terminated", kError_ExecutorTerminated)));
    }
}

} // namespace detail

template <typename T>
template <typename Function>
auto Future<T>::Then(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function inFunction) const
{
    using Result = typename detail::Flat<typename detail::ResultOf<T, Function>::Type>::Type;
    auto promise = std::make_shared<Promise<Result>>();
    const async::Future<Result> result = promise->Future();
    OnReady([executor = std::move(inExecutor), promise = std::move(promise),
             function = std::move(inFunction)](const Future<T>& ready) mutable {
        if (std::exception_ptr exception = ready.GetException()) {
            promise->SetException(std::move(exception));
            return;
        }
        detail::RunOn<Result>(executor, std::move(promise),
                              [ready, function = std::move(function)](Promise<Result>& ioPromise) mutable {
                                  if constexpr (std::is_void_v<T>) {
                                      ioPromise.SetResultOf(function);
                                  } else {
                                      ioPromise.SetResultOf(function, *ready.mState->value);
                                  }
                              });
    });
    return result;
}

template <typename Function>
auto CallAsync(const std::shared_ptr<threads::AsyncExecutor>& inExecutor, Function inFunction, int)
{
    using Result = typename detail::Flat<std::invoke_result_t<Function&>>::Type;
    if (!inExecutor) {
        throw null_reference_exception("kiocore::threads::AsyncExecutor");
    }
    auto promise = std::make_shared<Promise<Result>>();
    const Future<Result> result = promise->Future();
    detail::RunOn<Result>(inExecutor, std::move(promise),
                          [function = std::move(inFunction)](Promise<Result>& ioPromise) mutable {
                              ioPromise.SetResultOf(function);
                          });
    return result;
}

} // namespace kiocore::async
