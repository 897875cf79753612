#include <kioui/controls/StaticText.h>

#include "ui/NodeImpl.h"

#include <kiocore/debug/Trace.h>

#include <QLabel>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace kioui::controls {
namespace {

using drawbot::TextTruncation;
using ui::FromQt;
using ui::ToQt;
using ui::WidgetOf;

Qt::TextElideMode ToQt(TextTruncation inTruncation)
{
    switch (inTruncation) {
    case TextTruncation::kNone:
        return Qt::ElideNone;
    case TextTruncation::kStart:
        return Qt::ElideLeft;
    case TextTruncation::kEnd:
        return Qt::ElideRight;
    case TextTruncation::kMiddle:
        return Qt::ElideMiddle;
    }
    return Qt::ElideNone;
}

/// A label that can also be one shortened line.
class TextWidget final : public QLabel {
public:
    explicit TextWidget(const QString& inText)
    {
        setTextFormat(Qt::PlainText); // whatever it looks like
        setWordWrap(true);
        setAlignment(Qt::AlignLeft | Qt::AlignTop);
        setText(inText);
        FollowInteraction();
    }

    void SetElision(Qt::TextElideMode inElision)
    {
        mElision = inElision;
        setWordWrap(!IsOneLine());
        FollowInteraction();
        FollowText();
    }
    void SetSelectable(bool inSelectable)
    {
        mIsSelectable = inSelectable;
        FollowInteraction();
    }
    /// After the text or the size has changed.
    void FollowText()
    {
        setToolTip(IsOneLine() && Shortened() != text() ? text() : QString());
        updateGeometry();
    }

    QSize sizeHint() const override
    {
        return IsOneLine() ? QSize(0, fontMetrics().height()) : QLabel::sizeHint();
    }
    QSize minimumSizeHint() const override { return IsOneLine() ? sizeHint() : QLabel::minimumSizeHint(); }

protected:
    void paintEvent(QPaintEvent* inEvent) override
    {
        if (!IsOneLine()) {
            QLabel::paintEvent(inEvent);
            return;
        }
        QPainter painter(this);
        style()->drawItemText(&painter, contentsRect(), int(Qt::AlignLeft | Qt::AlignVCenter), palette(),
                              isEnabled(), Shortened(), foregroundRole());
    }
    void resizeEvent(QResizeEvent* inEvent) override
    {
        QLabel::resizeEvent(inEvent);
        FollowText();
    }

private:
    bool IsOneLine() const { return mElision != Qt::ElideNone; }
    QString Shortened() const
    {
        QString line = text();
        line.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return fontMetrics().elidedText(line, mElision, contentsRect().width());
    }
    void FollowInteraction()
    {
        setTextInteractionFlags(mIsSelectable && !IsOneLine()
                                    ? Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard
                                    : Qt::NoTextInteraction);
    }

    Qt::TextElideMode mElision = Qt::ElideNone;
    bool mIsSelectable = true;
};

} // namespace

UI_StaticText::UI_StaticText(const ui::UTF16String& inText)
    : UI_Node(ui::NewImpl<TextWidget>("UI_StaticText", ToQt(inText)))
{
    KIO_HOST_CALL("kioui::controls::UI_StaticText::UI_StaticText", inText);
}

UI_StaticText::~UI_StaticText() = default;

ui::UTF16String UI_StaticText::GetText() const
{
    const auto* label = WidgetOf<TextWidget>(*this);
    return label != nullptr ? FromQt(label->text()) : ui::UTF16String();
}

void UI_StaticText::SetText(const ui::UTF16String& inText)
{
    KIO_HOST_CALL("kioui::controls::UI_StaticText::SetText", inText);
    if (auto* label = WidgetOf<TextWidget>(*this)) {
        label->setText(ToQt(inText));
        label->FollowText();
    }
}

void UI_StaticText::SetBold(bool inBold)
{
    KIO_HOST_CALL("kioui::controls::UI_StaticText::SetBold", inBold);
    if (auto* label = WidgetOf<TextWidget>(*this)) {
        QFont font = label->font();
        font.setBold(inBold);
        label->setFont(font);
        label->FollowText();
    }
}

void UI_StaticText::SetSelectable(bool inSelectable)
{
    KIO_HOST_CALL("kioui::controls::UI_StaticText::SetSelectable", inSelectable);
    if (auto* label = WidgetOf<TextWidget>(*this)) {
        label->SetSelectable(inSelectable);
    }
}

void UI_StaticText::SetTruncation(TextTruncation inTruncation)
{
    KIO_HOST_CALL("kioui::controls::UI_StaticText::SetTruncation", int(inTruncation));
    if (auto* label = WidgetOf<TextWidget>(*this)) {
        label->SetElision(ToQt(inTruncation));
    }
}

float UI_StaticText::GetHeightForWidth(float inWidth) const
{
    const auto* label = WidgetOf<TextWidget>(*this);
    if (label == nullptr || label->text().isEmpty()) {
        return 0;
    }
    label->ensurePolished();
    const int wrapped = label->heightForWidth(int(std::floor(inWidth)));
    return float(wrapped >= 0 ? wrapped : label->sizeHint().height()); // one line has no other
}

} // namespace kioui::controls
