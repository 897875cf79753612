#include "WorkerFailure.h"

#include "support/KeptText.h"
#include "support/LocalText.h"

#include <kiocore/serialization/JSONConvert.h>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace trhost::effects {

namespace {

using namespace kiocore::serialization;
using Kind = WorkerFailure::Kind;

constexpr const char* kKindNames[] = {"refused", "crashed", "hung", "ended", "garbled"};
constexpr const char* kTaskNames[] = {"names", "describe", "check"};

template <typename Enum, std::size_t N>
Enum FromName(const char* const (&inNames)[N], const std::string& inName, const char* inExpected)
{
    const auto found = std::find(std::begin(inNames), std::end(inNames), inName);
    if (found == std::end(inNames)) {
        throw bad_cast_exception("the text \"" + inName + "\"", inExpected);
    }
    return static_cast<Enum>(found - std::begin(inNames));
}

std::string TextOf(WorkerTask inTask)
{
    switch (inTask) {
    case WorkerTask::kNames:
        return LocalText("$$$/Halcyon/TrHost/WhileBeingLoaded=while being loaded");
    case WorkerTask::kDescribe:
        return LocalText("$$$/Halcyon/TrHost/WhileBeingDescribed=while being described");
    case WorkerTask::kCheck:
        return LocalText("$$$/Halcyon/TrHost/WhileBeingChecked=while being checked");
    }
    return {};
}

/// "10", "0.25".
std::string Seconds(std::int64_t inMilliseconds)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof(digits), double(inMilliseconds) / 1000).ptr;
    return std::string(digits, end);
}

std::string WhatHappened(const WorkerFailure& inFailure)
{
    const std::string during = TextOf(inFailure.task);
    switch (inFailure.kind) {
    case Kind::kRefused:
        return ToldText(inFailure.said);
    case Kind::kCrashed:
        return LocalText(
            "$$$/Halcyon/TrHost/WorkerCrashed=crashed with @0 @1#{@0: SIGSEGV, @1: while being described}",
            {inFailure.said, during});
    case Kind::kHung:
        return LocalText(
            "$$$/Halcyon/TrHost/WorkerHung=did not answer for @0 s @1#{@1: while being described}",
            {Seconds(inFailure.limitMs), during});
    case Kind::kEnded:
        return LocalText("$$$/Halcyon/TrHost/WorkerEnded=ended the process with status @0 @1"
                         "#{@1: while being described}",
                         {inFailure.said, during});
    case Kind::kGarbled:
        return LocalText("$$$/Halcyon/TrHost/WorkerGarbled=garbled the answer of its process @0: @1"
                         "#{@0: while being described}",
                         {during, inFailure.said});
    }
    return {};
}

} // namespace

std::string TextOf(const WorkerFailure& inFailure)
{
    const std::string text = WhatHappened(inFailure);
    if (inFailure.lastWords.empty() || inFailure.kind == Kind::kRefused) {
        return text;
    }
    return LocalText("$$$/Halcyon/TrHost/WorkerLastWords=@0; it had said \"@1\"",
                     {text, inFailure.lastWords});
}

JSON ToJSON(const WorkerFailure& inFailure)
{
    JSONObject object;
    AddMember(object, "kind", std::string(kKindNames[static_cast<std::size_t>(inFailure.kind)]));
    AddMember(object, "task", std::string(kTaskNames[static_cast<std::size_t>(inFailure.task)]));
    AddMember(object, "said", inFailure.said);
    AddMember(object, "lastWords", inFailure.lastWords);
    AddMember(object, "limitMs", inFailure.limitMs);
    return object;
}

WorkerFailure WorkerFailureFromJSON(const JSON& inValue)
{
    const JSONObject& object = AsObject(inValue);
    WorkerFailure failure;
    failure.kind =
        FromName<Kind>(kKindNames, GetMember<std::string>(object, "kind"), "a kind of worker failure");
    failure.task =
        FromName<WorkerTask>(kTaskNames, GetMember<std::string>(object, "task"), "a task of workers");
    ReadMember(object, "said", failure.said);
    ReadMember(object, "lastWords", failure.lastWords);
    ReadMember(object, "limitMs", failure.limitMs);
    return failure;
}

} // namespace trhost::effects
