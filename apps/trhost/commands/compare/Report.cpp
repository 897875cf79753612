#include "Report.h"

#include "ReportPage.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>

#include <cerrno>
#include <chrono>

namespace trhost::compare {

using kiocore::filesupport::FromNative;
using kiocore::filesupport::GetFileCalls;

Report::Report(std::string inFile, UTF16String inA, UTF16String inB)
    : mFile(std::move(inFile)), mA(std::move(inA)), mB(std::move(inB))
{
    const std::string folder = mFile.substr(0, mFile.find_last_of('/'));
    if (GetFileCalls().MakeFolder(folder.c_str(), 0777) != 0 && errno != EEXIST) {
        ThrowNotSaved(errno);
    }
    if (mTemporary.Create(mFile, 0666) != 0) {
        ThrowNotSaved(errno);
    }
    Write(ReportPageStart());
}

void Report::Add(const PairNames& inNames, const PairResult& inResult)
{
    JsonLine pair = DescribeForPrograms(inNames, inResult);
    pair.Add("line", Describe(inNames, inResult));
    const ReportPictures& pictures = inResult.pictures;
    const std::uint64_t bytes = pictures.a.size() + pictures.b.size() + pictures.difference.size();
    const bool fits = bytes > 0 && mPictureBytes + bytes <= kMostPictureBytes;
    if (fits) {
        const std::size_t number = mPairs.size();
        WritePicture(number, "a", pictures.a);
        WritePicture(number, "b", pictures.b);
        WritePicture(number, "difference", pictures.difference);
        mPictureBytes += bytes;
    }
    pair.Add("pictures", fits);
    pair.Add("leftOut", bytes > 0 && !fits);
    pair.Add("scaled", fits && inResult.width > kReportPictureWidth);
    mPairs.push_back(std::move(pair));
}

void Report::Finish(const UTF16String& inSummary)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    JsonLine data;
    data.Add("a", mA)
        .Add("b", mB)
        .Add("made", std::chrono::duration_cast<std::chrono::milliseconds>(now).count())
        .Add("summary", inSummary)
        .Add("pairs", mPairs);
    Write(ReportPageEnd(data));
    if (mTemporary.Close() != 0 || mTemporary.RenameTo(mFile.c_str()) != 0) {
        ThrowNotSaved(errno);
    }
}

void Report::Write(std::string_view inText)
{
    if (kiocore::filesupport::WriteAll(mTemporary.Descriptor(), inText.data(), inText.size()) != 0) {
        ThrowNotSaved(errno);
    }
}

void Report::WritePicture(std::size_t inPair, const char* inSide, const std::string& inBase64)
{
    // A script element of an unknown type is text that the browser leaves alone until it is wanted.
    Write("<script type=\"text/plain\" id=\"picture-" + std::to_string(inPair) + "-" + inSide + "\">");
    Write(inBase64);
    Write("</script>\n");
}

void Report::ThrowNotSaved(int inErrno) const
{
    throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NotSaved=@0 could not be saved: @1",
                                     {FromNative(mFile), kiocore::SystemErrorText(inErrno)}));
}

} // namespace trhost::compare
