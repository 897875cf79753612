#pragma once

// Widths of texts from remembered advances. Included by sources of kioui only.

#include "JoiningGlyphs.h"

#include <kioui/drawbot/Drawbot.h>

#include <QFont>
#include <QFontMetricsF>
#include <QRawFont>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace kioui::drawbot {

/// Says exactly how wide a text is in Qt's layout, mostly without it: Qt lays out each run of one script by
/// itself, and within it a letter that no rule of the font joins with its neighbour is as wide as alone, so
/// that advances can be remembered and added. Letters that may be joined ("ffi", an accent on its letter) are
/// measured together once and remembered too. All else is measured: texts from right to left, scripts
/// whose letters change with their neighbours, control characters, letters that the fonts have not.
///
/// Threading: UI thread only.
class TextWidths {
public:
    /// @param inFont  without kerning.
    explicit TextWidths(const QFont& inFont);
    ~TextWidths();
    TextWidths(const TextWidths&) = delete;
    TextWidths& operator=(const TextWidths&) = delete;

    /// In 64ths of a unit, in which advances are whole numbers.
    std::int64_t Measure(UTF16View inText);

private:
    enum class Kind : std::uint8_t {
        kUnknown,
        kPlain,       // as wide as alone, whatever stands beside it
        kJoinable,    // beside another joinable one, the two may be another width than alone
        kJoining,     // a mark or the like: changes what it stands behind
        kOtherScript, // belongs to a run of another script, whose index stands for the advance
        kMeasured,    // a text with it is measured as a whole
    };
    struct Character {
        std::int32_t advance = 0;
        Kind kind = Kind::kUnknown;
    };
    struct Placed {
        std::size_t start = 0;
        Character character;
    };
    using Page = std::array<Character, 256>;
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(UTF16View inText) const { return std::hash<UTF16View>()(inText); }
    };
    using Memory = std::unordered_map<UTF16String, std::optional<std::int64_t>, TextHash, std::equal_to<>>;
    /// What is known of characters in runs of one script.
    struct Script {
        char32_t anchor = 0; // a letter of the script, measured before what has no script of its own; 0: none
        std::array<std::unique_ptr<Page>, 256> pages;
        std::unordered_map<char32_t, Character> beyondPages;
        Memory joined;
    };
    struct Face {
        QRawFont font;
        std::unique_ptr<const JoiningGlyphs> joining;
    };

    /// Nothing when the text is one to be measured as a whole.
    std::optional<std::int64_t> SumUp(UTF16View inText);
    std::optional<std::int64_t> SumUpRun(Script& ioScript, UTF16View inText, std::size_t inEnd);
    /// Letters that are joined, or may be.
    std::optional<std::int64_t> MeasureJoined(Script& ioScript, UTF16View inLetters);
    std::int64_t MeasureWhole(UTF16View inText);

    const Character& Find(Script& ioScript, char32_t inCharacter);
    Character Learn(Script& ioScript, char32_t inCharacter);
    /// What letters of a script have to be measured behind so that they are taken for that script's: nothing
    /// when one of them belongs to it, else the anchor, if there is one that is joined with nothing.
    std::optional<UTF16String> BeginningFor(Script& ioScript, UTF16View inLetters);
    const JoiningGlyphs& JoiningOf(const QRawFont& inFont);
    std::int64_t Ask(UTF16View inText) const;

    const QFont mFont;
    const QFontMetricsF mMetrics;
    std::vector<Script> mScripts;
    std::vector<Face> mFaces;
    Memory mWhole;
    std::vector<Placed> mRun; // of the text being summed up
};

} // namespace kioui::drawbot
