#pragma once

#include "UiScript.h"

#include <kioui/ui/Window.h>

namespace trhost::ui {

/// Checks what "expect" and "await" say about a window.
/// @throws UiMismatch with what was found and what was expected.
void CheckExpectation(kioui::UI_OSWindow& inWindow, const UiStatement& inStatement);

} // namespace trhost::ui
