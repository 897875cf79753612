#pragma once

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Node.h>

#include <memory>
#include <vector>

namespace kioui::layout {

/// Says where nodes lie in a rectangle. Gaps and margins are kept exactly, to the unit, at every scale; what
/// is left over is shared out by stretch factors, in whole units, so that nothing is lost or overlaps.
///
/// Nodes that are hidden keep their place; build a layout without those that went for good.
///
/// Threading: UI thread only. Shares the nodes it lays out.
class KIO_EXPORT SmartLayout {
public:
    virtual ~SmartLayout();
    /// The least size in which nothing is squeezed.
    virtual SizeT<float> GetMinimumSize() const = 0;
    /// Sets the bounds of all nodes, which must lie in one parent, in whose coordinates inBounds is. In a
    /// rectangle that is too small, nodes that stretch become smaller first (never below 0), then those at
    /// the end are cut off; gaps stay.
    virtual void Apply(const RectT<float>& inBounds) const = 0;
};
using SmartLayoutPtr = std::shared_ptr<const SmartLayout>;

/// How much an element takes of what is left over, across and along; 0 keeps the size it asks for.
struct Stretch {
    float horizontal = 0;
    float vertical = 0;
};

/// Where elements lie across the direction they are put in, if they do not stretch that way.
enum class CrossAlignment { kStart, kCentre, kEnd };

/// Puts elements behind one another in one direction.
///
/// Threading: UI thread only.
class KIO_EXPORT SmartLayoutBuilder {
public:
    enum class Direction { kLeftToRight, kRightToLeft, kTopToBottom };

    explicit SmartLayoutBuilder(Direction inDirection);
    ~SmartLayoutBuilder();
    SmartLayoutBuilder(const SmartLayoutBuilder&) = delete;
    SmartLayoutBuilder& operator=(const SmartLayoutBuilder&) = delete;

    /// What is empty is left out.
    /// @param inMinimum  the least size; by default the one that the node prefers whenever the layout is
    ///     applied.
    /// @param inStretch  factors that are not above 0, or not finite, are 0.
    SmartLayoutBuilder& Append(const ui::UI_NodePtr& inNode, Stretch inStretch = {});
    SmartLayoutBuilder& Append(const ui::UI_NodePtr& inNode, SizeT<float> inMinimum, Stretch inStretch);
    SmartLayoutBuilder& Append(SmartLayoutPtr inLayout, Stretch inStretch = {});
    SmartLayoutBuilder& AppendSpace(float inSize);
    /// At least inMinimum, however little room there is; takes what is left over, beside other elements as if
    /// by a stretch factor of 1.
    SmartLayoutBuilder& AppendFlexibleSpace(float inMinimum);
    SmartLayoutBuilder& SetCrossAlignment(CrossAlignment inAlignment);
    /// Around everything, on all four sides.
    SmartLayoutBuilder& SetMargin(float inMargin);

    /// The layout of what was appended so far.
    SmartLayoutPtr Build() const;

private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
};

/// A button in the size that its text and the theme ask for, as the drawbot measures it.
KIO_EXPORT SmartLayoutPtr MakeTextButtonLayout(const controls::UI_TextButtonPtr& inButton,
                                               const drawbot::Drawbot& inMeasuring);
KIO_EXPORT SmartLayoutPtr MakeCheckboxLayout(const controls::UI_CheckboxPtr& inCheckbox,
                                             const drawbot::Drawbot& inMeasuring);

/// Where something of that size lies in the middle of a rectangle, snapped to whole units.
KIO_EXPORT RectT<float> AlignCentred(SizeT<float> inSize, const RectT<float>& inBounds);

} // namespace kioui::layout
