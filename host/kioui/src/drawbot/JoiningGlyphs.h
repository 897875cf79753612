#pragma once

// Which of a typeface's glyphs may change beside others. Included by sources of kioui only.

#include <QByteArray>

#include <bitset>
#include <cstdint>

namespace kioui::drawbot {

/// All glyphs that a font names in rules about several glyphs: ligatures, contexts, cursive joints. Where of
/// two neighbours one is not among them, the two are as wide as each alone; that holds whatever has become
/// of them by earlier rules, as those name their neighbours too.
/// Left out are rules that only move marks, kerning (switched off), and those that nobody asks for.
///
/// Threading: none of its own; not changed after it was made.
class JoiningGlyphs {
public:
    /// @param inSubstitutions  the table "GSUB", empty where the font has none; what is damaged in it counts
    ///     as if all glyphs were named.
    /// @param inPositions  the table "GPOS" likewise.
    JoiningGlyphs(const QByteArray& inSubstitutions, const QByteArray& inPositions);

    bool Contains(std::uint32_t inGlyph) const { return inGlyph >= kGlyphs || mIsNamed[inGlyph]; }

private:
    static constexpr std::size_t kGlyphs = 65536;
    std::bitset<kGlyphs> mIsNamed;
};

} // namespace kioui::drawbot
