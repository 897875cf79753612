#include "FolderComparison.h"

#include "DifferencePicture.h"
#include "FolderPairs.h"

#include "../../support/Interrupt.h"
#include "../../support/Quantities.h"

#include <kiocore/filesupport/NativePath.h>
#include <kiocore/threads/AsyncExecutor.h>
#include <kiocore/threads/Clock.h>

#include <chrono>
#include <exception>

namespace trhost::compare {

using kiocore::filesupport::FromNative;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

namespace {

std::string WithSeparator(const std::string& inFolder)
{
    return inFolder.ends_with('/') ? inFolder : inFolder + "/";
}

} // namespace

FolderComparison::FolderComparison(Context& ioContext, const FolderRequest& inRequest)
    : mContext(ioContext), mRequest(inRequest)
{}

void FolderComparison::Run()
{
    auto& clock = kiocore::threads::GetClock();
    const auto start = clock.SteadyTime();
    FindItems();
    Submit();
    ProgressBar bar(mContext.output, Text("$$$/Halcyon/TrHost/Compare/Comparing=comparing"));
    // Also after an interruption: what was begun must have ended before we go.
    while (!mContext.mainThread->RunUntil([this] { return mDone == mItems.size(); },
                                          clock.SteadyTime() + std::chrono::milliseconds(100))) {
        bar.Show(double(mDone) / double(mItems.size()),
                 Text("$$$/Halcyon/TrHost/Compare/PairsOf=@0 of @1 pairs",
                      {DecimalText(mDone), DecimalText(mItems.size())}));
    }
    mSeconds = std::chrono::duration<double>(clock.SteadyTime() - start).count();
    if (mReportError) {
        std::rethrow_exception(mReportError);
    }
}

void FolderComparison::FindItems()
{
    const std::string a = WithSeparator(mRequest.a);
    const std::string b = WithSeparator(mRequest.b);
    FolderPairs found = FindPairs(a, b);
    mLeftOut = found.leftOut;
    for (FolderPair& pair : found.pairs) {
        Item& item = mItems.emplace_back();
        item.names.name = FromNative(pair.name);
        if (pair.isInA) {
            item.names.a = item.request.a = FromNative(a + pair.name);
        }
        if (pair.isInB) {
            item.names.b = item.request.b = FromNative(b + pair.name);
        }
        if (!mRequest.differenceFolder.empty()) {
            item.request.differencePath =
                FromNative(mRequest.differenceFolder + "/" + DifferenceName(pair.name));
        }
        item.request.tolerance = mRequest.tolerance;
        item.request.wantsPictures = mRequest.report != nullptr;
    }
}

void FolderComparison::Submit()
{
    // A queue of its own yields to the pool's other work now and then, which pictures are also made of.
    const auto queue = kiocore::threads::CreateSubExecutor(kiocore::threads::GetCPUBoundExecutor(),
                                                           mRequest.jobs > 0 ? mRequest.jobs : -1);
    for (std::size_t i = 0; i < mItems.size(); ++i) {
        Item& item = mItems[i];
        if (item.names.a.empty() || item.names.b.empty()) {
            item.result.outcome = item.names.b.empty() ? Outcome::kOnlyInA : Outcome::kOnlyInB;
            mContext.mainThread->Post([this, i] { Take(i); });
            continue;
        }
        const auto work = [this, i, &item] {
            item.result = ComparePair(item.request);
            mContext.mainThread->Post([this, i] { Take(i); });
        };
        if (!queue || queue->Submit(work) < 0) {
            work();
        }
    }
}

void FolderComparison::Take(std::size_t inItem)
{
    Item& item = mItems[inItem];
    item.isDone = true;
    ++mDone;
    ++mCounts[std::size_t(item.result.outcome)];
    if (mRequest.report && !mReportError && item.result.outcome != Outcome::kNotDone) {
        try {
            mRequest.report->Add(item.names, item.result);
        } catch (const Failure&) {
            mReportError = std::current_exception(); // the figures are wanted all the same
        }
    }
    item.result.pictures = {};
    TellDone();
}

void FolderComparison::TellDone()
{
    for (; mTold < mItems.size() && mItems[mTold].isDone; ++mTold) {
        Tell(mItems[mTold]);
    }
}

void FolderComparison::Tell(const Item& inItem)
{
    Output& output = mContext.output;
    const PairResult& result = inItem.result;
    switch (result.outcome) {
    case Outcome::kFailed:
        output.Error(result.reason);
        break;
    case Outcome::kDifferent:
    case Outcome::kOnlyInA:
    case Outcome::kOnlyInB:
        output.Line(Describe(inItem.names, result));
        break;
    case Outcome::kSame: // for people the last line counts them
        break;
    case Outcome::kNotDone:
        return;
    }
    if (output.IsJson()) {
        output.Result({}, DescribeForPrograms(inItem.names, result));
    }
}

UTF16String FolderComparison::Summary() const
{
    UTF16String rest;
    if (const std::size_t lone = Count(Outcome::kOnlyInA) + Count(Outcome::kOnlyInB)) {
        rest += Text("$$$/Halcyon/TrHost/Compare/CountLone=, @0 in one folder only", {DecimalText(lone)});
    }
    if (const std::size_t failed = Count(Outcome::kFailed)) {
        rest += Text("$$$/Halcyon/TrHost/Compare/CountFailed=, @0 failed", {DecimalText(failed)});
    }
    if (const std::size_t notDone = Count(Outcome::kNotDone)) {
        rest += Text("$$$/Halcyon/TrHost/CountCancelled=, @0 not done", {DecimalText(notDone)});
    }
    if (mLeftOut > 0) {
        rest += Text("$$$/Halcyon/TrHost/Compare/CountLeftOut=, @0 other files left out",
                     {DecimalText(mLeftOut)});
    }
    return Text("$$$/Halcyon/TrHost/Compare/Summary=@0 pictures: @1 the same, @2 different@3 (@4)#{@3: more, "
                "such as \", 1 failed\", @4: a duration}",
                {DecimalText(mItems.size()), DecimalText(Count(Outcome::kSame)),
                 DecimalText(Count(Outcome::kDifferent)), rest, ToUTF16(FormatDuration(mSeconds))});
}

JsonLine FolderComparison::SummaryForPrograms() const
{
    return JsonLine()
        .Add("summary", true)
        .Add("pictures", mItems.size())
        .Add("same", Count(Outcome::kSame))
        .Add("different", Count(Outcome::kDifferent))
        .Add("onlyInA", Count(Outcome::kOnlyInA))
        .Add("onlyInB", Count(Outcome::kOnlyInB))
        .Add("failed", Count(Outcome::kFailed))
        .Add("notDone", Count(Outcome::kNotDone))
        .Add("leftOut", mLeftOut)
        .Add("seconds", mSeconds);
}

int FolderComparison::ExitStatus() const
{
    if (Count(Outcome::kFailed) + Count(Outcome::kNotDone) > 0) {
        return kExit_Failed;
    }
    return Count(Outcome::kSame) == mItems.size() ? kExit_Done : kExit_Negative;
}

} // namespace trhost::compare
