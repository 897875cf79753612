#pragma once

#include <kioui/drawbot/Drawbot.h>

namespace kioui::drawbot {

/// What Drawbot::TruncateString says; wherever it is drawn, it is measured the same. An empty font draws
/// nothing, so that everything fits.
UTF16String Truncate(UTF16View inText, const FontRef& inFont, float inWidth, TextTruncation inTruncation);

} // namespace kioui::drawbot
