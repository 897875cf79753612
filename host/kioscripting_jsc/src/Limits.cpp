#include "Limits.h"

#include "Runtime.h"
#include "platform/Times.h"

#include <kiocore/config/Errors.h>

#include <algorithm>

namespace kioscripting_jsc {
namespace {

constexpr double kIntervalSeconds = 0.02; // processor time; a person who cancels does not notice

} // namespace

bool Limits::IsOn() const
{
    return mRuntime.settings.timeLimitSeconds > 0 || mRuntime.settings.isCancelled;
}

void Limits::BeginRun()
{
    mEnding = Ending::kNone;
    mFailure = nullptr;
    mStart = platform::ThreadSeconds();
    mLastAsked = mStart;
    if (IsOn()) {
        Set();
    }
}

void Limits::Set()
{
    JSContextGroupSetExecutionTimeLimit(mRuntime.group, kIntervalSeconds, &Limits::OnAsked, this);
}

void Limits::EndRun()
{
    if (!IsOn()) {
        return;
    }
    JSContextGroupClearExecutionTimeLimit(mRuntime.group);
    // The engine ends once more what comes next after a run that it ended in a job.
    static constexpr int kMost = 4;
    const JSStringRef nothing = JSStringCreateWithUTF8CString("0");
    for (int i = 0; HasEnded() && i < kMost; ++i) {
        JSValueRef thrown = nullptr;
        JSEvaluateScript(mRuntime.context, nothing, nullptr, nullptr, 1, &thrown);
        if (!thrown) {
            break;
        }
    }
    JSStringRelease(nothing);
}

bool Limits::OnAsked(JSContextRef, void* inLimits)
{
    auto& limits = *static_cast<Limits*>(inLimits);
    limits.Ask();
    if (limits.HasEnded()) {
        return true;
    }
    limits.Set();
    return false;
}

void Limits::Ask() noexcept
{
    if (HasEnded()) {
        return;
    }
    const double now = platform::ThreadSeconds();
    mLastAsked = now;
    const double limit = mRuntime.settings.timeLimitSeconds;
    if (limit > 0 && now - mStart >= limit) {
        mEnding = Ending::kTime;
        return;
    }
    try {
        if (mRuntime.settings.isCancelled && mRuntime.settings.isCancelled()) {
            mEnding = Ending::kCancelled;
        }
    } catch (...) {
        mFailure = std::current_exception();
        mEnding = Ending::kFailed;
    }
}

Limits::Answer Limits::OnTick(std::size_t inWhich)
{
    if (inWhich == 0 && platform::ThreadSeconds() - mLastAsked >= kIntervalSeconds) {
        Ask();
    }
    if (HasEnded()) {
        return Answer::kEnd;
    }
    return mJobs.OnTick(inWhich, platform::SteadySeconds()) ? Answer::kGoOn : Answer::kStop;
}

void Limits::Check() const
{
    if (HasEnded()) {
        throw RunEnded();
    }
}

void Limits::ThrowIfEnded() const
{
    switch (mEnding) {
    case Ending::kNone:
        return;
    case Ending::kTime:
        throw kioscripting::script_exception("The script ran longer than the " +
                                                 std::to_string(mRuntime.settings.timeLimitSeconds) +
                                                 " seconds that it may",
                                             kioscripting::kError_ScriptTimeLimit, {});
    case Ending::kCancelled:
        throw kioscripting::script_exception("The script was cancelled", kiocore::kError_Cancelled, {});
    case Ending::kFailed:
        std::rethrow_exception(mFailure);
    }
}

} // namespace kioscripting_jsc
