#pragma once

// Sizes of windows between runs. Included by sources of kioui only.

#include <QSize>

#include <optional>
#include <string>

namespace kioui::ui {

/// What was kept for a window; nothing when there is none, it cannot be read or makes no sense.
std::optional<QSize> ReadKeptSize(const std::string& inNodeID);
/// Keeps it in the application's settings file, if it has one. Failures leave the file as it was: a window's
/// size is not worth a message.
void KeepSize(const std::string& inNodeID, QSize inSize);

} // namespace kioui::ui
