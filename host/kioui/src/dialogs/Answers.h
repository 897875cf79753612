#pragma once

// What stands in the user's place. Included by sources of kioui only.

#include <kioui/dialogs/MessageBox.h>

#include <optional>

namespace kioui::dialogs::messagebox {

/// The answer that is given in the user's place; nothing when the user is to be asked.
/// @throws kio_exception (kError_BadArgument) when it is no button of the question.
std::optional<int> AnswerInTheUsersPlace(const Question& inQuestion);

} // namespace kioui::dialogs::messagebox
