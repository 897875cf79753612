#pragma once

#include "PairText.h"

#include <kiocore/filesupport/TemporaryFile.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trhost::compare {

/// By this a report is known again, in the first kilobyte of its file.
inline constexpr const char* kReportMark = R"(<meta name="generator" content="trhost compare">)";

/// One page that shows how pictures compare: a file that holds all it needs, so that it can be mailed.
///
/// Pictures are written as they come, so that they need not be kept; the file appears under its name when it
/// is finished.
///
/// Threading: one thread at a time.
class Report {
public:
    /// What all pictures may take together; of the rest the page tells the figures only.
    static constexpr std::uint64_t kMostPictureBytes = std::uint64_t(400) << 20;

    /// Makes the folder when it is not there.
    /// @param inFile  of CheckReportFolder.
    /// @param inA, inB  what was compared, as it was named.
    /// @throws Failure (kExit_Failed); nothing is left behind, as for all that follow.
    Report(std::string inFile, UTF16String inA, UTF16String inB);

    /// Adds one pair and its pictures.
    void Add(const PairNames& inNames, const PairResult& inResult);
    /// Writes the rest.
    /// @param inSummary  one line for people.
    void Finish(const UTF16String& inSummary);

    const std::string& File() const { return mFile; }

private:
    void Write(std::string_view inText);
    void WritePicture(std::size_t inPair, const char* inSide, const std::string& inBase64);
    [[noreturn]] void ThrowNotSaved(int inErrno) const;

    const std::string mFile;
    const UTF16String mA;
    const UTF16String mB;
    kiocore::filesupport::TemporaryFile mTemporary;
    std::vector<JsonLine> mPairs;
    std::uint64_t mPictureBytes = 0;
};

} // namespace trhost::compare
