#pragma once

// How large a window starts and where. Included by sources of kioui only.

#include <QRect>
#include <QSize>

class QWidget;

namespace kioui::ui {

/// Moves and sizes a window: over the middle of its parent, or else of the screen; as large as asked for, but
/// at least its minimum and at most what the screen has room for.
void PlaceWindow(QWidget& ioWindow, QSize inSize);

/// Where a window of that size lies over the middle of something, moved to where it can be seen whole.
QRect CentredOver(const QRect& inWhat, QSize inSize, const QRect& inScreen);

} // namespace kioui::ui
