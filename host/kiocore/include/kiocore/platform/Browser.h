#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <functional>
#include <string>

namespace kiocore::platform {

/// Opens a web page in the user's browser and returns without waiting for it.
/// @param inURL  http or https; nothing else is opened, so that a text from a file or a translation can
///     start no program and show no local file.
/// @return 0 handed to the desktop; -1 no web address (another scheme, white space, control characters);
///     -2 this machine has nothing to open it with.
///
/// Threading: any thread.
KIO_EXPORT int OpenURLInBrowser(utility::UTF16View inURL);

/// Answers in the desktop's place for as long as it lives. Addresses that are refused do not reach it.
/// Nesting is allowed, last in, first out.
class KIO_EXPORT ScReplaceBrowser {
public:
    /// @return what OpenURLInBrowser is to return. Called unlocked, on the thread that opens.
    using Opener = std::function<int(const std::string& inURL)>;
    explicit ScReplaceBrowser(Opener inOpener);
    ~ScReplaceBrowser();
    ScReplaceBrowser(const ScReplaceBrowser&) = delete;
    ScReplaceBrowser& operator=(const ScReplaceBrowser&) = delete;
};

} // namespace kiocore::platform

namespace kiocore::utility {

/// The same for callers that a link was clicked at: what cannot be opened is noted on trace channel "Errors"
/// at level 1, with the address.
KIO_EXPORT void OpenURLInDefaultBrowser(UTF16View inURL);

} // namespace kiocore::utility
