#include <kioui/layout/SmartLayout.h>

#include "Lengths.h"

#include "drawbot/QtFont.h"
#include "ui/NodeImpl.h"

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cmath>

namespace kioui::layout {
namespace {

// No display is as large; sums of a few of these are still far from the limits of an int.
constexpr float kLongest = 1'000'000;

int Limited(float inLength, float inLowest)
{
    return std::isnan(inLength) ? int(inLowest) : int(std::clamp(inLength, inLowest, kLongest));
}
int WholeSize(float inLength)
{
    return Limited(std::ceil(inLength), 0);
}
int WholeGap(float inLength)
{
    return Limited(std::round(inLength), 0);
}
int WholePlace(float inPlace)
{
    return Limited(std::round(inPlace), -kLongest);
}
float Factor(float inStretch)
{
    return inStretch > 0 && std::isfinite(inStretch) ? inStretch : 0;
}

/// One node, in the size that it prefers when it is asked, but at least in a given one; or in a size of its
/// own.
class NodeLayout final : public SmartLayout {
public:
    NodeLayout(ui::UI_NodePtr inNode, SizeT<float> inLeast, bool inAsksNode)
        : mNode(std::move(inNode)), mLeast(inLeast), mAsksNode(inAsksNode)
    {}
    SizeT<float> GetMinimumSize() const override
    {
        const SizeT<float> preferred = mAsksNode ? mNode->GetPreferredSize() : SizeT<float>();
        return {std::max(mLeast.width, preferred.width), std::max(mLeast.height, preferred.height)};
    }
    void Apply(const RectT<float>& inBounds) const override { mNode->SetBounds(inBounds); }

private:
    const ui::UI_NodePtr mNode;
    const SizeT<float> mLeast;
    const bool mAsksNode;
};

struct Element {
    SmartLayoutPtr layout; // empty for space
    Stretch stretch;
    int space = 0; // along the direction, where it is space
};

/// Elements behind one another, in whole units.
class RowLayout final : public SmartLayout {
public:
    using Direction = SmartLayoutBuilder::Direction;
    RowLayout(Direction inDirection, CrossAlignment inAlignment, int inMargin,
              std::vector<Element> inElements)
        : mDirection(inDirection), mAlignment(inAlignment), mMargin(inMargin),
          mElements(std::move(inElements))
    {}
    SizeT<float> GetMinimumSize() const override;
    void Apply(const RectT<float>& inBounds) const override;

private:
    struct Extent {
        int start = 0;
        int size = 0;
        int End() const { return start + size; }
    };

    bool IsVertical() const { return mDirection == Direction::kTopToBottom; }
    Length LengthOf(const Element& inElement, SizeT<float> inMinimum) const;
    /// Where something lies across the direction.
    Extent Across(const Element& inElement, SizeT<float> inMinimum, Extent inPlace) const;

    const Direction mDirection;
    const CrossAlignment mAlignment;
    const int mMargin;
    const std::vector<Element> mElements;
};

SizeT<float> MinimumOf(const Element& inElement)
{
    return inElement.layout ? inElement.layout->GetMinimumSize() : SizeT<float>();
}

Length RowLayout::LengthOf(const Element& inElement, SizeT<float> inMinimum) const
{
    const double stretch = IsVertical() ? inElement.stretch.vertical : inElement.stretch.horizontal;
    if (!inElement.layout) {
        return {inElement.space, stretch, true};
    }
    return {WholeSize(IsVertical() ? inMinimum.height : inMinimum.width), stretch, false};
}

RowLayout::Extent RowLayout::Across(const Element& inElement, SizeT<float> inMinimum, Extent inPlace) const
{
    if ((IsVertical() ? inElement.stretch.horizontal : inElement.stretch.vertical) > 0) {
        return inPlace;
    }
    const int wanted = WholeSize(IsVertical() ? inMinimum.width : inMinimum.height);
    const int size = std::min(wanted, inPlace.size);
    switch (mAlignment) {
    case CrossAlignment::kStart:
        break;
    case CrossAlignment::kCentre:
        return {inPlace.start + (inPlace.size - size) / 2, size};
    case CrossAlignment::kEnd:
        return {inPlace.End() - size, size};
    }
    return {inPlace.start, size};
}

SizeT<float> RowLayout::GetMinimumSize() const
{
    int along = 2 * mMargin;
    int across = 0;
    for (const Element& element : mElements) {
        const SizeT<float> minimum = MinimumOf(element);
        along += LengthOf(element, minimum).minimum;
        across = std::max(across, WholeSize(IsVertical() ? minimum.width : minimum.height));
    }
    across += 2 * mMargin;
    return IsVertical() ? SizeT<float>{float(across), float(along)}
                        : SizeT<float>{float(along), float(across)};
}

void RowLayout::Apply(const RectT<float>& inBounds) const
{
    const auto inside = [this](float inStart, float inEnd) {
        const int start = WholePlace(inStart);
        return Extent{start + mMargin, WholePlace(inEnd) - start - 2 * mMargin};
    };
    const Extent horizontal = inside(inBounds.left, inBounds.right);
    const Extent vertical = inside(inBounds.top, inBounds.bottom);
    // Shorter than nothing where the margins are too wide: from the right end there is still a right end.
    const Extent along = IsVertical() ? vertical : horizontal;
    Extent across = IsVertical() ? horizontal : vertical;
    across.size = std::max(across.size, 0);

    std::vector<SizeT<float>> minimums;
    std::vector<Length> lengths;
    for (const Element& element : mElements) {
        minimums.push_back(MinimumOf(element));
        lengths.push_back(LengthOf(element, minimums.back()));
    }
    const std::vector<int> sizes = SolveLengths(lengths, along.size);
    int passed = 0;
    for (std::size_t i = 0; i < mElements.size(); ++i) {
        const Element& element = mElements[i];
        const int size = sizes[i];
        const int start =
            mDirection == Direction::kRightToLeft ? along.End() - passed - size : along.start + passed;
        passed += size;
        if (element.layout) {
            const Extent placed = Across(element, minimums[i], across);
            const Extent x = IsVertical() ? placed : Extent{start, size};
            const Extent y = IsVertical() ? Extent{start, size} : placed;
            element.layout->Apply({float(x.start), float(y.start), float(x.End()), float(y.End())});
        }
    }
}

/// A control in the size it prefers, and never narrower than its text.
SmartLayoutPtr MakeLabelledLayout(const boost::intrusive_ptr<controls::UI_Control>& inControl,
                                  const drawbot::Drawbot& inMeasuring)
{
    SizeT<float> least;
    if (const QWidget* widget = inControl ? inControl->GetImpl().widget.data() : nullptr) {
        const auto font = std::make_shared<const drawbot::QtFont>(widget->font());
        least = {std::ceil(inMeasuring.MeasureString(inControl->GetText(), font)),
                 std::ceil(font->Ascent() + font->Descent())};
    }
    return inControl ? std::make_shared<const NodeLayout>(inControl, least, true) : nullptr;
}

} // namespace

SmartLayout::~SmartLayout() = default;

struct SmartLayoutBuilder::Impl {
    Direction direction;
    CrossAlignment alignment = CrossAlignment::kStart;
    int margin = 0;
    std::vector<Element> elements;
};

SmartLayoutBuilder::SmartLayoutBuilder(Direction inDirection) : mImpl(std::make_unique<Impl>())
{
    KIO_HOST_CALL("kioui::layout::SmartLayoutBuilder::SmartLayoutBuilder", int(inDirection));
    mImpl->direction = inDirection;
}

SmartLayoutBuilder::~SmartLayoutBuilder() = default;

SmartLayoutBuilder& SmartLayoutBuilder::Append(const ui::UI_NodePtr& inNode, Stretch inStretch)
{
    return Append(inNode ? std::make_shared<const NodeLayout>(inNode, SizeT<float>(), true) : nullptr,
                  inStretch);
}

SmartLayoutBuilder& SmartLayoutBuilder::Append(const ui::UI_NodePtr& inNode, SizeT<float> inMinimum,
                                               Stretch inStretch)
{
    return Append(inNode ? std::make_shared<const NodeLayout>(inNode, inMinimum, false) : nullptr, inStretch);
}

SmartLayoutBuilder& SmartLayoutBuilder::Append(SmartLayoutPtr inLayout, Stretch inStretch)
{
    if (inLayout) {
        const Stretch stretch{Factor(inStretch.horizontal), Factor(inStretch.vertical)};
        mImpl->elements.push_back({std::move(inLayout), stretch});
    }
    return *this;
}

SmartLayoutBuilder& SmartLayoutBuilder::AppendSpace(float inSize)
{
    mImpl->elements.push_back({nullptr, {}, WholeGap(inSize)});
    return *this;
}

SmartLayoutBuilder& SmartLayoutBuilder::AppendFlexibleSpace(float inMinimum)
{
    mImpl->elements.push_back({nullptr, {1, 1}, WholeGap(inMinimum)});
    return *this;
}

SmartLayoutBuilder& SmartLayoutBuilder::SetCrossAlignment(CrossAlignment inAlignment)
{
    mImpl->alignment = inAlignment;
    return *this;
}

SmartLayoutBuilder& SmartLayoutBuilder::SetMargin(float inMargin)
{
    mImpl->margin = WholeGap(inMargin);
    return *this;
}

SmartLayoutPtr SmartLayoutBuilder::Build() const
{
    KIO_HOST_CALL("kioui::layout::SmartLayoutBuilder::Build", mImpl->elements.size());
    return std::make_shared<const RowLayout>(mImpl->direction, mImpl->alignment, mImpl->margin,
                                             mImpl->elements);
}

SmartLayoutPtr MakeTextButtonLayout(const controls::UI_TextButtonPtr& inButton,
                                    const drawbot::Drawbot& inMeasuring)
{
    KIO_HOST_CALL("kioui::layout::MakeTextButtonLayout", inButton ? inButton->GetNodeID() : std::string());
    return MakeLabelledLayout(inButton, inMeasuring);
}

SmartLayoutPtr MakeCheckboxLayout(const controls::UI_CheckboxPtr& inCheckbox,
                                  const drawbot::Drawbot& inMeasuring)
{
    KIO_HOST_CALL("kioui::layout::MakeCheckboxLayout", inCheckbox ? inCheckbox->GetNodeID() : std::string());
    return MakeLabelledLayout(inCheckbox, inMeasuring);
}

RectT<float> AlignCentred(SizeT<float> inSize, const RectT<float>& inBounds)
{
    KIO_HOST_CALL("kioui::layout::AlignCentred", inSize.width, inSize.height);
    const float width = std::ceil(inSize.width);
    const float height = std::ceil(inSize.height);
    const float left = std::floor(inBounds.left + (inBounds.Width() - width) / 2);
    const float top = std::floor(inBounds.top + (inBounds.Height() - height) / 2);
    return {left, top, left + width, top + height};
}

} // namespace kioui::layout
