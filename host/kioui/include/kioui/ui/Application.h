#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>
#include <kioui_theme/Theme.h>

#include <memory>
#include <string>

namespace kioui::ui {

/// How a user interface is to look; fixed for the life of the application object.
struct ApplicationSettings {
    kiocore::UTF16String name;    ///< shown by the desktop beside window titles
    std::string settingsFileUTF8; ///< keeps window sizes between runs; empty keeps none
    Theme theme = Theme::kDark;   ///< becomes the default theme provider's
    float scale = 0;              ///< device pixels per unit in place of the desktop's; 0 asks the desktop
    std::string fontFileUTF8;     ///< a font of one's own for all texts; empty is the desktop's
};

/// The user interface of a program: exists once, before any node. Connects the registered main thread
/// (kiocore::threads) with the event loop, so that work posted from other threads runs between events, also
/// while a dialog runs modally, through one wake-up however many posts.
///
/// Threading: made and destroyed on the main thread. All nodes go before it.
class KIO_EXPORT ScApplication {
public:
    /// @throws kio_exception (kError_Startup) naming the reason when no window system can be reached, and
    ///     (kError_BadArgument) when there is an application object already or the font cannot be read.
    explicit ScApplication(const ApplicationSettings& inSettings);
    ~ScApplication();
    ScApplication(const ScApplication&) = delete;
    ScApplication& operator=(const ScApplication&) = delete;

    /// Runs events and posted work until there is nothing left to do right now.
    static void RunPending();
    static bool Exists();

private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
};

} // namespace kioui::ui
