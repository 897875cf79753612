#include "../Commands.h"

#include "CompareOutputs.h"
#include "FolderComparison.h"
#include "PairText.h"
#include "Report.h"

#include "../../support/Failure.h"
#include "../../support/Interrupt.h"
#include "../../support/PictureFile.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

namespace trhost {

namespace {

using namespace compare;
using kiocore::filesupport::FromNative;

UTF16String Absolute(const std::string& inPath)
{
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(inPath, error);
    return FromNative(error ? inPath : absolute.native());
}

/// @throws Failure (kExit_Failed) when there is nothing of that name.
bool IsFolder(const std::string& inPath)
{
    std::error_code error;
    const auto status = std::filesystem::status(inPath, error);
    if (!std::filesystem::exists(status)) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/Compare/NotThere=@0: @1#{@0: a file or folder, @1: why it "
                           "cannot be opened}",
                           {FromNative(inPath), kiocore::SystemErrorText(error ? error.value() : ENOENT)}));
    }
    return std::filesystem::is_directory(status);
}

void TellReport(Context& ioContext, const Report& inReport)
{
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/Report/Written=report: @0", {FromNative(inReport.File())}),
                          JsonLine().Add("report", FromNative(inReport.File())));
}

int CompareFiles(Context& ioContext, const CompareOptions& inOptions, Report* ioReport)
{
    PairRequest request{
        FromNative(inOptions.a), FromNative(inOptions.b), {}, inOptions.tolerance, ioReport != nullptr};
    if (inOptions.difference) {
        request.differencePath = CheckDifferenceFile(*inOptions.difference, inOptions.a, inOptions.b);
    }
    const PairNames names{{}, request.a, request.b};
    const PairResult result = ComparePair(request);
    ThrowIfInterrupted();
    if (ioReport) {
        ioReport->Add(names, result);
        ioReport->Finish(Describe(names, result));
    }
    if (result.outcome == Outcome::kFailed) {
        ioContext.output.Error(result.reason);
        if (ioContext.output.IsJson()) {
            ioContext.output.Result({}, DescribeForPrograms(names, result));
        }
        return kExit_Failed;
    }
    ioContext.output.Result(Describe(names, result), DescribeForPrograms(names, result));
    return result.outcome == Outcome::kSame ? kExit_Done : kExit_Negative;
}

int CompareFolders(Context& ioContext, const CompareOptions& inOptions, Report* ioReport)
{
    FolderRequest request{inOptions.a, inOptions.b, {}, inOptions.tolerance, inOptions.jobs, ioReport};
    if (inOptions.difference) {
        request.differenceFolder = CheckDifferenceFolder(*inOptions.difference, inOptions.a, inOptions.b);
    }
    FolderComparison comparison(ioContext, request);
    comparison.Run();
    if (ioReport && !IsInterrupted()) {
        ioReport->Finish(comparison.Summary());
    }
    ioContext.output.Result(comparison.Summary(), comparison.SummaryForPrograms());
    ThrowIfInterrupted();
    return comparison.ExitStatus();
}

} // namespace

int Compare(Context& ioContext, const CompareOptions& inOptions)
{
    RequireOrdinaryFile(inOptions.a);
    RequireOrdinaryFile(inOptions.b);
    const bool areFolders = IsFolder(inOptions.a);
    if (IsFolder(inOptions.b) != areFolders) {
        throw Failure(
            kExit_Usage,
            areFolders
                ? Text("$$$/Halcyon/TrHost/Compare/FolderAndFile=@0 is a folder and @1 is none; expected "
                       "two files or two folders",
                       {FromNative(inOptions.a), FromNative(inOptions.b)})
                : Text("$$$/Halcyon/TrHost/Compare/FileAndFolder=@1 is a folder and @0 is none; expected "
                       "two files or two folders",
                       {FromNative(inOptions.a), FromNative(inOptions.b)}));
    }
    std::optional<Report> report;
    if (inOptions.report) {
        report.emplace(CheckReportFolder(*inOptions.report), Absolute(inOptions.a), Absolute(inOptions.b));
    }
    const int status =
        (areFolders ? CompareFolders : CompareFiles)(ioContext, inOptions, report ? &*report : nullptr);
    if (report) {
        TellReport(ioContext, *report);
    }
    return status;
}

} // namespace trhost
