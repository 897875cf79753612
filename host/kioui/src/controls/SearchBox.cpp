#include <kioui/controls/SearchBox.h>

#include "ui/NodeImpl.h"

#include <QAction>
#include <QApplication>
#include <QCompleter>
#include <QIcon>
#include <QLineEdit>
#include <QStringListModel>
#include <QStyle>

#include <utility>

namespace kioui::controls {

using ui::FromQt;
using ui::ToQt;
using ui::WidgetOf;

namespace {

const int kMostRecentSearches = 20;

QIcon Magnifier(const QWidget& inWidget)
{
    return QIcon::fromTheme(QLatin1String("edit-find"),
                            inWidget.style()->standardIcon(QStyle::SP_FileDialogContentsView));
}

/// Offers what is kept in it while a person types.
QStringListModel* OfferRecentSearches(QLineEdit& ioLine)
{
    auto* completer = new QCompleter(&ioLine);
    auto* recent = new QStringListModel(completer);
    completer->setModel(recent);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    ioLine.setCompleter(completer);
    return recent;
}

void Remember(QStringListModel& ioRecent, const QString& inText)
{
    if (inText.isEmpty()) {
        return;
    }
    QStringList texts = ioRecent.stringList();
    texts.removeAll(inText);
    texts.prepend(inText);
    ioRecent.setStringList(texts.mid(0, kMostRecentSearches));
}

} // namespace

struct UI_SearchBox::State {
    ChangedFunction interactive;
    bool isUnknown = false;
    bool isSetting = false; // by the host, which knows
    QString told;           // the text that was set or that the changed function was last called for
    QPointer<QStringListModel> recent;
};

UI_SearchBox::UI_SearchBox(bool inShowsMagnifier, bool inKeepsRecentSearches)
    : UI_Control(ui::NewImpl<QLineEdit>("UI_SearchBox")), mState(std::make_unique<State>())
{
    auto* line = WidgetOf<QLineEdit>(*this);
    line->setClearButtonEnabled(true);
    if (inShowsMagnifier) {
        QAction* magnifier = line->addAction(Magnifier(*line), QLineEdit::LeadingPosition);
        QObject::connect(magnifier, &QAction::triggered, line,
                         [line] { line->setFocus(Qt::MouseFocusReason); });
    }
    if (inKeepsRecentSearches) {
        mState->recent = OfferRecentSearches(*line);
    }
    // Not textEdited: the clear button and the list of recent searches do not count as editing for Qt.
    QObject::connect(line, &QLineEdit::textChanged, GetImpl().watcher.get(), [this] { Edited(); });
    QObject::connect(line, &QLineEdit::returnPressed, GetImpl().watcher.get(), [this] { Finished(); });
    // Not the line's own event: the list of recent searches keeps it back while it is shown.
    QObject::connect(qApp, &QApplication::focusChanged, GetImpl().watcher.get(),
                     [this](QWidget* inBefore, QWidget* inNow) {
                         const QWidget* const own = GetImpl().widget;
                         // Another window does not end an edit.
                         if (own != nullptr && inBefore == own && inNow != nullptr &&
                             inNow->window() == own->window()) {
                             Left();
                         }
                     });
}

UI_SearchBox::~UI_SearchBox() = default;

void UI_SearchBox::Edited()
{
    if (!mState->isSetting) {
        mState->isUnknown = false;
        Notify(mState->interactive);
    }
}

void UI_SearchBox::Left()
{
    if (WidgetOf<QLineEdit>(*this)->text() != mState->told) {
        const ui::ScWidgetEvent event; // of two widgets
        Finished();
    }
}

void UI_SearchBox::Finished()
{
    const QString text = WidgetOf<QLineEdit>(*this)->text();
    mState->told = text;
    if (mState->recent) {
        Remember(*mState->recent, text);
    }
    NotifyChanged();
}

UTF16String UI_SearchBox::GetText() const
{
    const auto* line = WidgetOf<QLineEdit>(*this);
    return line != nullptr ? FromQt(line->text()) : UTF16String();
}

std::optional<UTF16String> UI_SearchBox::GetValue() const
{
    return mState->isUnknown ? std::nullopt : std::optional(GetText());
}

void UI_SearchBox::SetValue(const UTF16String& inText)
{
    if (auto* line = WidgetOf<QLineEdit>(*this)) {
        mState->isUnknown = false;
        mState->isSetting = true;
        line->setText(ToQt(inText));
        mState->isSetting = false;
        mState->told = line->text();
    }
}

void UI_SearchBox::SetValueUnknown()
{
    SetValue({});
    mState->isUnknown = true;
}

void UI_SearchBox::SetUnknownStateText(const UTF16String& inText)
{
    if (auto* line = WidgetOf<QLineEdit>(*this)) {
        line->setPlaceholderText(ToQt(inText));
    }
}

UTF16String UI_SearchBox::GetUnknownStateText() const
{
    const auto* line = WidgetOf<QLineEdit>(*this);
    return line != nullptr ? FromQt(line->placeholderText()) : UTF16String();
}

void UI_SearchBox::SetInteractiveChangeFunction(ChangedFunction inFunction)
{
    mState->interactive = std::move(inFunction);
}

} // namespace kioui::controls
