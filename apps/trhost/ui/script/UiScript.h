#pragma once

#include <kioui/Geometry.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trhost::ui {

/// A column as a script names it: by its title, or by "#id".
struct UiColumn {
    std::string title;
    std::optional<std::uint32_t> id;

    std::string AsText() const;
};

/// What of a window a statement is about.
struct UiTarget {
    enum class Kind { kNode, kRow, kCell, kTitle };
    Kind kind = Kind::kNode;
    std::string node;            ///< its ID; empty for the title of the only tree there is
    std::string rowText;         ///< one of its cells says so
    std::uint32_t rowNumber = 0; ///< in the order shown, from 1; 0 where the text says it
    UiColumn column;
    std::optional<kioui::PointT<float>> at; ///< from its left top corner; below 0 from its right and bottom

    std::string AsText() const;
};

/// One line of a script.
struct UiStatement {
    enum class Verb {
        kClick,
        kDoubleClick,
        kPress,
        kRelease,
        kMove,
        kDrag,
        kWheel,
        kKey,
        kType,
        kExpect,
        kAwait,
        kDump,
        kScreenshot,
        kEnd,
    };
    /// What kExpect and kAwait ask about.
    enum class Aspect { kText, kName, kRows, kColumns, kWidth, kState, kFocus, kWindow };

    Verb verb = Verb::kEnd;
    int line = 0;
    UiTarget target;
    UiTarget to; ///< kDrag
    Aspect aspect = Aspect::kText;
    std::string text;               ///< kKey, kType, what is expected, or a file; UTF-8
    std::int64_t number = 0;        ///< kWheel, or what is expected
    std::vector<std::string> words; ///< expected states or titles of columns
};

struct UiScriptError {
    int line = 0;
    std::string text; ///< for people, UTF-8
};

/// A script that was read; it is sound when there are no errors. The language is described in
/// docs/ui-scripts.md.
struct UiScript {
    std::vector<UiStatement> statements;
    std::vector<UiScriptError> errors; ///< all of them, in the order of their lines
};

UiScript ParseUiScript(std::string_view inTextUTF8);

/// A state word of scripts: which state of nodes it is about, and whether that is to hold. Nothing for other
/// words.
struct UiStateWord {
    std::string state;
    bool holds = true;
};
std::optional<UiStateWord> FindStateWord(std::string_view inWord);

} // namespace trhost::ui
