#pragma once

#include <kiocore/utility/UTF16String.h>

#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>

namespace trhost {

using kiocore::UTF16String;
using kiocore::UTF16View;

/// What the program's exit statuses mean.
enum ExitStatus : int {
    kExit_Done = 0,
    kExit_Negative = 1, ///< the answer is no: not found, stale, differs
    kExit_Usage = 2,
    kExit_Failed = 3,
};

/// A localised text ("$$$/Key=English default") with "@0", "@1", ... replaced by the values.
UTF16String Text(std::string_view inLocalisedText, std::initializer_list<UTF16String> inValues = {});

/// What an exception says, in the language of the process: modules throw kept texts.
UTF16String Told(const std::exception& inError);

/// Ends a command: a line for standard error and the exit status.
///
/// Threading: a value.
class Failure : public std::exception {
public:
    Failure(ExitStatus inStatus, UTF16String inText);
    const char* what() const noexcept override { return mUTF8.c_str(); }
    const UTF16String& GetText() const noexcept { return mText; }
    ExitStatus GetStatus() const noexcept { return mStatus; }

private:
    ExitStatus mStatus;
    UTF16String mText;
    std::string mUTF8;
};

} // namespace trhost
