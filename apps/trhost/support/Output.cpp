#include "Output.h"

#include "Failure.h"
#include "Quantities.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

namespace trhost {

namespace {

constexpr int kBarCells = 24;

double SteadySeconds()
{
    return std::chrono::duration<double>(kiocore::threads::GetClock().SteadyTime().time_since_epoch())
        .count();
}

/// One line and nothing else: a file name may hold a line feed or a terminal's escape sequence.
std::string ForPeople(kiocore::UTF16View inLine)
{
    std::string line;
    for (char letter : kiocore::filesupport::ToNative(inLine)) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte < 0x20 || byte == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\x%02x", unsigned(byte));
            line += escape;
        } else {
            line += letter;
        }
    }
    return line;
}

/// How many columns the terminal has.
std::size_t TerminalWidth()
{
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

/// Cuts UTF-8 to a number of characters, in front, where paths differ least.
std::string KeepEnd(const std::string& inText, std::size_t inCharacters)
{
    std::size_t begin = inText.size();
    for (std::size_t kept = 0; begin > 0 && kept < inCharacters; ++kept) {
        --begin;
        while (begin > 0 && (static_cast<unsigned char>(inText[begin]) & 0xC0) == 0x80) {
            --begin;
        }
    }
    return inText.substr(begin);
}

} // namespace

void Output::Write(const std::string& inLine)
{
    if (mBar) {
        mBar->Hide();
    }
    std::fwrite(inLine.data(), 1, inLine.size(), stdout);
    std::fputc('\n', stdout);
    // Whoever reads through a pipe sees each line when it is true; a lost reader or a full disk is told.
    if (std::fflush(stdout) != 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/OutputFailed=cannot write to standard output: @0",
                           {kiocore::SystemErrorText(errno)}));
    }
}

void Output::Result(kiocore::UTF16View inLine, const JsonLine& inObject)
{
    Write(mJson ? inObject.GetText() : ForPeople(inLine));
}

void Output::Note(kiocore::UTF16View inLine, const JsonLine& inObject)
{
    if (mJson || !mQuiet) {
        Result(inLine, inObject);
    }
}

void Output::Line(kiocore::UTF16View inLine)
{
    if (!mJson) {
        Write(ForPeople(inLine));
    }
}

void Output::Error(kiocore::UTF16View inLine)
{
    if (mBar) {
        mBar->Hide();
    }
    std::fprintf(stderr, "trhost: %s\n", ForPeople(inLine).c_str());
}

ProgressBar::ProgressBar(Output& ioOutput, kiocore::UTF16String inLabel, double inTotalBytes)
    : mOutput(ioOutput), mLabel(std::move(inLabel)), mTotalBytes(inTotalBytes),
      mVisible(!ioOutput.IsJson() && !ioOutput.IsQuiet() && isatty(STDERR_FILENO) == 1),
      mStartSeconds(SteadySeconds())
{
    mOutput.mBar = this;
}

ProgressBar::~ProgressBar()
{
    Hide();
    mOutput.mBar = nullptr;
}

double ProgressBar::SecondsSinceStart() const
{
    return SteadySeconds() - mStartSeconds;
}

void ProgressBar::Show(double inFraction, const kiocore::UTF16String& inDetail)
{
    const double seconds = SecondsSinceStart();
    if (!mVisible || (mOnScreen && seconds - mLastDrawn < 0.1)) {
        return;
    }
    mLastDrawn = seconds;
    const double fraction = std::clamp(inFraction, 0.0, 1.0);
    const int full = int(fraction * kBarCells);
    std::string line =
        "[" + std::string(std::size_t(full), '#') + std::string(std::size_t(kBarCells - full), '.') + "]";
    char percent[16];
    std::snprintf(percent, sizeof(percent), " %3d %%", int(fraction * 100));
    line += percent;
    // The first moments tell nothing about the rest.
    if (seconds > 0.5 && fraction > 0) {
        if (mTotalBytes > 0) {
            line += "  " + FormatSize(std::uint64_t(mTotalBytes * fraction / seconds)) + "/s";
        }
        line +=
            "  " +
            ForPeople(Text("$$$/Halcyon/TrHost/TimeLeft=@0 left#{@0: a duration, 4.2 s}",
                           {kiocore::utility::ToUTF16(FormatDuration(seconds * (1 - fraction) / fraction))}));
    }
    std::string words = "  " + ForPeople(mLabel);
    if (!inDetail.empty()) {
        words += " " + ForPeople(inDetail);
    }
    const std::size_t width = TerminalWidth();
    line += line.size() + 1 < width ? KeepEnd(words, width - 1 - line.size()) : "";
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
    std::fflush(stderr);
    mOnScreen = true;
}

void ProgressBar::Hide()
{
    if (mOnScreen) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        mOnScreen = false;
    }
}

} // namespace trhost
