#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>
#include <kioui/Geometry.h>
#include <kioui_theme/Theme.h>

#include <memory>

namespace kioui::drawbot {

using kiocore::UTF16String;
using kiocore::utility::UTF16View;

/// What of a text too long for its place is left out; "…" stands for it.
enum class TextTruncation {
    kNone = 0,
    kStart = 1,
    kEnd = 2,
    kMiddle = 3, ///< for paths: both the volume and the file's name stay
};

/// A typeface in a size, made by a supplier. Widths are measured without kerning, as drawn.
///
/// Threading: UI thread only.
class KIO_EXPORT Font {
public:
    virtual ~Font();
    /// Advance of the whole text, not rounded; what DrawString needs at most.
    virtual float MeasureWidth(UTF16View inText) const = 0;
    virtual float Ascent() const = 0;
    virtual float Descent() const = 0;
};
/// Empty where there is nothing to draw with.
using FontRef = std::shared_ptr<const Font>;

/// Finds how wide the widest of many texts is, far faster than by measuring each: adds up the widths of
/// letters, which the font remembers, and measures only what its rules or its script may join. The answer is
/// that of measuring all.
///
/// Threading: UI thread only.
class KIO_EXPORT WidestText {
public:
    /// An empty font makes all widths 0.
    explicit WidestText(FontRef inFont);
    ~WidestText();
    WidestText(const WidestText&) = delete;
    WidestText& operator=(const WidestText&) = delete;

    void Add(UTF16View inText);
    /// Width of the widest text so far, rounded up to a whole unit; 0 without texts.
    float RoundedUpWidth() const;

private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
};

/// Draws on one surface, or measures only.
///
/// Threading: UI thread only; a drawing one is valid during the call that hands it over.
class KIO_EXPORT Drawbot {
public:
    virtual ~Drawbot();

    /// Remembers clip and colour; RestoreState is back to them. Nests.
    virtual void SaveState() = 0;
    virtual void RestoreState() = 0;
    /// Draws only what lies in inRect and in the clip so far.
    virtual void Clip(const RectT<float>& inRect) = 0;
    virtual void FillRect(const RectT<float>& inRect, const skins::Color& inColor) = 0;
    /// @param inOrigin  the left end of the base line. An empty font draws nothing.
    virtual void DrawString(UTF16View inText, const FontRef& inFont, const skins::Color& inColor,
                            PointT<float> inOrigin) = 0;
    /// As Font::MeasureWidth; 0 with an empty font.
    virtual float MeasureString(UTF16View inText, const FontRef& inFont) const = 0;
    /// The text, or what of it fits inWidth together with "…" in place of the rest. No surrogate pair or
    /// combined character is split. Nothing at all when not even "…" fits.
    virtual UTF16String TruncateString(UTF16View inText, const FontRef& inFont, float inWidth,
                                       TextTruncation inTruncation) const = 0;
};

/// Clip and colour are what they were once this goes.
class ScDrawState {
public:
    explicit ScDrawState(Drawbot& ioDrawbot) : mDrawbot(ioDrawbot) { mDrawbot.SaveState(); }
    ~ScDrawState() { mDrawbot.RestoreState(); }
    ScDrawState(const ScDrawState&) = delete;
    ScDrawState& operator=(const ScDrawState&) = delete;

private:
    Drawbot& mDrawbot;
};

/// Makes fonts and drawbots for one kind of surface. The node manager owns the default one.
///
/// Threading: UI thread only.
class KIO_EXPORT SupplierInterface {
public:
    virtual ~SupplierInterface();
    /// @param inName  a family name; empty is the user interface's own.
    /// @param inSize  in units, of the em; rounded to whole ones, as letters are drawn in no others. Sizes
    ///     that are not positive or not finite give an empty reference.
    virtual FontRef NewFont(UTF16View inName, float inSize) const = 0;
    /// Draws nowhere: for layouts.
    virtual std::unique_ptr<Drawbot> NewMeasuringDrawbot() const = 0;
};

} // namespace kioui::drawbot

namespace kioui {
using drawbot::Drawbot;
using drawbot::FontRef;
using drawbot::SupplierInterface;
using drawbot::TextTruncation;
} // namespace kioui
