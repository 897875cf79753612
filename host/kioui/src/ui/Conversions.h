#pragma once

// What Qt and the toolkit's headers have different types for. Included by sources of kioui only.

#include <kioui/ui/Node.h>

#include <QRect>
#include <QString>
#include <QtGlobal>

class QMouseEvent;

namespace kioui::ui {

/// QString and UTF16String hold the same units.
inline QString ToQt(kiocore::utility::UTF16View inText)
{
    return QString(reinterpret_cast<const QChar*>(inText.data()), qsizetype(inText.size()));
}
inline UTF16String FromQt(const QString& inText)
{
    return UTF16String(reinterpret_cast<const char16_t*>(inText.utf16()), std::size_t(inText.size()));
}

RectT<float> FromQt(const QRect& inRect);
/// Snapped edge by edge, so that what touches goes on touching.
QRect ToQt(const RectT<float>& inRect);
Qt::FocusReason ToQt(FocusChangeReason inReason);
FocusChangeReason FromQt(Qt::FocusReason inReason);
MouseButton FromQt(Qt::MouseButton inButton);
MouseEventType TypeOf(const QMouseEvent& inEvent);

/// Qt takes "&" in a button's text for a mnemonic and "&&" for "&".
inline QString ToButtonText(kiocore::utility::UTF16View inText)
{
    return ToQt(inText).replace(QLatin1Char('&'), QLatin1String("&&"));
}
inline UTF16String FromButtonText(QString inText)
{
    return FromQt(inText.replace(QLatin1String("&&"), QLatin1String("&")));
}

/// Qt takes "[*]" in a title for the place of a mark for unsaved changes and "[*][*]" for "[*]".
inline QString ToTitle(kiocore::utility::UTF16View inText)
{
    return ToQt(inText).replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}
inline UTF16String FromTitle(QString inText)
{
    return FromQt(inText.replace(QLatin1String("[*][*]"), QLatin1String("[*]")));
}

} // namespace kioui::ui
