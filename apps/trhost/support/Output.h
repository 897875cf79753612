#pragma once

#include "JsonLine.h"

#include <kiocore/utility/UTF16String.h>

#include <string>

namespace trhost {

class ProgressBar;

/// Where a command says what it found: for people, or one JSON object a line. File names come out as the
/// bytes that they are on disk, also those that are no UTF-8.
///
/// Threading: main thread only; work on other threads posts what it has to say there.
class Output {
public:
    Output(bool inJson, bool inQuiet) : mJson(inJson), mQuiet(inQuiet) {}

    bool IsJson() const { return mJson; }
    bool IsQuiet() const { return mQuiet; }

    /// An answer that was asked for, in one of its two forms.
    void Result(kiocore::UTF16View inLine, const JsonLine& inObject);
    /// Something that happened on the way; people who said --quiet do not hear it, programs do.
    void Note(kiocore::UTF16View inLine, const JsonLine& inObject);
    /// A line of an answer that has no form for programs.
    void Line(kiocore::UTF16View inLine);
    /// An answer that is a JSON document, in one piece; whoever makes it asks IsJson whether it is to stand
    /// on one line.
    void Document(const std::string& inJson) { Write(inJson); }
    /// "trhost: ..." on standard error, always.
    void Error(kiocore::UTF16View inLine);

private:
    friend class ProgressBar;
    void Write(const std::string& inLine);

    const bool mJson;
    const bool mQuiet;
    ProgressBar* mBar = nullptr; // hidden while we write
};

/// A progress bar with rate and time left on standard error, while that is a terminal and people read.
/// Otherwise all members do nothing.
///
/// Threading: main thread only.
class ProgressBar {
public:
    /// @param inTotalBytes  what fraction 1 stands for; 0 shows no rate.
    ProgressBar(Output& ioOutput, kiocore::UTF16String inLabel, double inTotalBytes = 0);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Draws it, at most ten times a second.
    /// @param inDetail  shown behind the label, may change.
    void Show(double inFraction, const kiocore::UTF16String& inDetail = {});
    void SetLabel(kiocore::UTF16String inLabel) { mLabel = std::move(inLabel); }
    void Hide();

private:
    double SecondsSinceStart() const;

    Output& mOutput;
    kiocore::UTF16String mLabel;
    const double mTotalBytes;
    const bool mVisible;
    double mStartSeconds = 0;
    double mLastDrawn = -1;
    bool mOnScreen = false;
};

} // namespace trhost
