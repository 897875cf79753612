#include "Commands.h"
#include "IngestFile.h"

#include "../support/CacheFileKinds.h"
#include "../support/Failure.h"
#include "../support/Interrupt.h"
#include "../support/KeptText.h"
#include "../support/Quantities.h"

#include <TR/SharedThreads.h>
#include <ZOL/FolderSearch.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/threads/Clock.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <set>
#include <sys/stat.h>

namespace trhost {

namespace {

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;
using Kind = IngestOutcome::Kind;

struct Job {
    UTF16String path;
    double bytes = 0;
    std::atomic<double> fraction{0};
    IngestOutcome outcome;
};

const char* NameOf(Kind inKind)
{
    switch (inKind) {
    case Kind::kMade:
        return "made";
    case Kind::kUpToDate:
        return "upToDate";
    case Kind::kSkipped:
        return "skipped";
    case Kind::kFailed:
        return "failed";
    case Kind::kCancelled:
        return "cancelled";
    }
    return "";
}

/// The media files that were named, or lie in the folders that were named: each once.
class MediaList {
public:
    explicit MediaList(std::deque<Job>& outJobs) : mJobs(outJobs) {}

    void Add(const std::string& inPath)
    {
        struct stat status;
        if (stat(inPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
            const ZOL::FileList files =
                ZOL::FolderSearch::FindFiles(kiocore::filesupport::FromNative(inPath), MediaExtensions());
            for (std::size_t i = 0; i < files.Size(); ++i) {
                AddFile(kiocore::filesupport::ToNative(files.GetPath(i)));
            }
        } else {
            AddFile(inPath);
        }
    }

private:
    void AddFile(const std::string& inPath)
    {
        char canonical[PATH_MAX];
        // What cannot be resolved is ingested under the name given, to be reported with its reason.
        const bool resolved = realpath(inPath.c_str(), canonical) != nullptr;
        if (!mSeen.insert(resolved ? canonical : inPath).second) {
            return;
        }
        struct stat status;
        Job& job = mJobs.emplace_back();
        job.path = kiocore::filesupport::FromNative(inPath);
        job.bytes = stat(inPath.c_str(), &status) == 0 ? double(status.st_size) : 0;
    }

    std::deque<Job>& mJobs;
    std::set<std::string> mSeen;
};

/// Runs the jobs on the shared queue and reports each on the main thread as it ends.
class IngestRun {
public:
    IngestRun(Context& ioContext, const IngestOptions& inOptions, std::deque<Job>& ioJobs)
        : mContext(ioContext), mOptions(inOptions), mJobs(ioJobs)
    {
        for (const Job& job : mJobs) {
            mTotalBytes += job.bytes;
        }
    }

    void Run()
    {
        std::shared_ptr<kiocore::threads::AsyncExecutor> queue = TR::sNormalPriorityRenderQueue;
        if (mOptions.jobs > 0) {
            queue = kiocore::threads::CreateSubExecutor(queue, mOptions.jobs);
        }
        for (Job& job : mJobs) {
            const auto work = [this, &job] {
                job.outcome = IngestFile(job.path, mOptions.force, [&job](double inFraction) {
                    job.fraction.store(inFraction, std::memory_order_relaxed);
                });
                job.fraction = 1;
                mContext.mainThread->Post([this, &job] { Report(job); });
            };
            if (!queue || queue->Submit(work) < 0) {
                work();
            }
        }
        ProgressBar bar(mContext.output, Text("$$$/Halcyon/TrHost/Conforming=conforming"), mTotalBytes);
        auto& clock = kiocore::threads::GetClock();
        // Also after an interruption: the work stops by itself, and must have stopped before we go.
        while (!mContext.mainThread->RunUntil([this] { return mReported == mJobs.size(); },
                                              clock.SteadyTime() + std::chrono::milliseconds(100))) {
            ShowProgress(bar);
        }
    }

    std::size_t Count(Kind inKind) const { return mCounts[std::size_t(inKind)]; }

private:
    void Report(const Job& inJob)
    {
        ++mReported;
        ++mCounts[std::size_t(inJob.outcome.kind)];
        const IngestOutcome& outcome = inJob.outcome;
        Output& output = mContext.output;
        JsonLine object;
        object.Add("media", inJob.path).Add("outcome", NameOf(outcome.kind));
        if (!outcome.reason.empty()) {
            object.Add("reason", outcome.reason);
        }
        std::vector<JsonLine> files;
        for (const UTF16String& file : outcome.files) {
            files.push_back(JsonLine().Add("path", file));
        }
        object.Add("files", files).Add("seconds", outcome.seconds);
        switch (outcome.kind) {
        case Kind::kMade:
            output.Note(Text("$$$/Halcyon/TrHost/Made=made @0 (@1 cache files, @2)",
                             {inJob.path, DecimalText(outcome.files.size()),
                              ToUTF16(FormatDuration(outcome.seconds))}),
                        object);
            break;
        case Kind::kSkipped:
            output.Note(Text("$$$/Halcyon/TrHost/Skipped=skipped @0: @1", {inJob.path, outcome.reason}),
                        object);
            break;
        case Kind::kFailed:
            output.Error(inJob.path + u": " + outcome.reason);
            [[fallthrough]];
        case Kind::kUpToDate:
        case Kind::kCancelled:
            if (output.IsJson()) {
                output.Note({}, object); // for people the last line counts them
            }
            break;
        }
        if (!output.IsQuiet()) {
            for (const std::string& warning : outcome.warnings) {
                output.Error(ToUTF16(ToldText(warning)));
            }
        }
    }

    void ShowProgress(ProgressBar& ioBar) const
    {
        double done = 0;
        for (const Job& job : mJobs) {
            done += job.bytes * job.fraction.load(std::memory_order_relaxed);
        }
        ioBar.Show(mTotalBytes > 0 ? done / mTotalBytes : 0,
                   Text("$$$/Halcyon/TrHost/FilesOf=@0 of @1 files",
                        {DecimalText(mReported), DecimalText(mJobs.size())}));
    }

    Context& mContext;
    const IngestOptions& mOptions;
    std::deque<Job>& mJobs;
    double mTotalBytes = 0;
    std::size_t mReported = 0;
    std::size_t mCounts[5] = {};
};

UTF16String SummaryLine(const IngestRun& inRun, std::size_t inFiles, double inSeconds)
{
    const UTF16String files = inFiles == 1
                                  ? Text("$$$/Halcyon/TrHost/OneFile=1 file")
                                  : Text("$$$/Halcyon/TrHost/ManyFiles=@0 files", {DecimalText(inFiles)});
    const UTF16String duration = ToUTF16(FormatDuration(inSeconds));
    if (inRun.Count(Kind::kUpToDate) == inFiles) {
        return Text("$$$/Halcyon/TrHost/AllUpToDate=@0: all up to date (@1)", {files, duration});
    }
    UTF16String rest;
    if (const std::size_t skipped = inRun.Count(Kind::kSkipped)) {
        rest += Text("$$$/Halcyon/TrHost/CountSkipped=, @0 skipped", {DecimalText(skipped)});
    }
    if (const std::size_t cancelled = inRun.Count(Kind::kCancelled)) {
        rest += Text("$$$/Halcyon/TrHost/CountCancelled=, @0 not done", {DecimalText(cancelled)});
    }
    return Text("$$$/Halcyon/TrHost/IngestSummary=@0: @1 made, @2 up to date@3, @4 failed (@5)",
                {files, DecimalText(inRun.Count(Kind::kMade)), DecimalText(inRun.Count(Kind::kUpToDate)),
                 rest, DecimalText(inRun.Count(Kind::kFailed)), duration});
}

} // namespace

int Ingest(Context& ioContext, const IngestOptions& inOptions)
{
    auto& clock = kiocore::threads::GetClock();
    const auto start = clock.SteadyTime();
    std::deque<Job> jobs;
    MediaList list(jobs);
    for (const std::string& path : inOptions.paths) {
        list.Add(path);
    }
    if (jobs.empty()) {
        throw Failure(kExit_Negative, Text("$$$/Halcyon/TrHost/NoMedia=no media files were found below @0",
                                           {kiocore::filesupport::FromNative(inOptions.paths.front())}));
    }
    IngestRun run(ioContext, inOptions, jobs);
    run.Run();

    const double seconds = std::chrono::duration<double>(clock.SteadyTime() - start).count();
    ioContext.output.Note(SummaryLine(run, jobs.size(), seconds),
                          JsonLine()
                              .Add("summary", true)
                              .Add("files", jobs.size())
                              .Add("made", run.Count(Kind::kMade))
                              .Add("upToDate", run.Count(Kind::kUpToDate))
                              .Add("skipped", run.Count(Kind::kSkipped))
                              .Add("cancelled", run.Count(Kind::kCancelled))
                              .Add("failed", run.Count(Kind::kFailed))
                              .Add("seconds", seconds));
    ThrowIfInterrupted();
    return run.Count(Kind::kFailed) > 0 ? kExit_Failed : kExit_Done;
}

} // namespace trhost
