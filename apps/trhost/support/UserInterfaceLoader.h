#pragma once

#include "Context.h"

#include <ui/UserInterface.h>

#include <memory>

namespace trhost {

/// How a command's dialogs are to look, and who attends to them. Empty members are the user's preferences.
struct DialogOptions {
    std::string theme; ///< "dark" or "light"
    float scale = 0;   ///< device pixels per unit; 0 is the desktop's
    ui::Attendance attendance = ui::Attendance::kPerson;
    std::string file; ///< picture or script; native path
};

/// The user interface, loaded by the first call: most commands show no window and never load the toolkit.
/// @throws kio_exception (kError_File) when the module is not there or cannot be loaded, kError_Startup when
///     there is no display; Failure (kExit_Failed) when it was built for another version of trhost.
///
/// Threading: main thread. One at a time.
std::unique_ptr<ui::IUserInterface> OpenUserInterface(const Context& inContext,
                                                      const DialogOptions& inOptions);

} // namespace trhost
