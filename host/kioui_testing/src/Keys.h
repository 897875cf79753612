#pragma once

#include <QString>

#include <optional>
#include <string_view>
#include <vector>

namespace kioui::testing {

/// A key as the window system reports it: with the text that it types.
struct Key {
    Qt::Key code = Qt::Key_unknown;
    Qt::KeyboardModifiers modifiers;
    QString text;
};

/// Nothing when there is no such key.
std::optional<Key> KeyFromName(std::string_view inName);
/// The keys that type a text, one a character: what is combined stays together.
std::vector<Key> KeysThatType(const QString& inText);

} // namespace kioui::testing
