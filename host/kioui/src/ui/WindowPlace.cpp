#include "WindowPlace.h"

#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace kioui::ui {

QRect CentredOver(const QRect& inWhat, QSize inSize, const QRect& inScreen)
{
    QRect place({0, 0}, inSize);
    place.moveCenter(inWhat.center());
    place.moveLeft(std::max(inScreen.left(), std::min(place.left(), inScreen.right() + 1 - inSize.width())));
    place.moveTop(std::max(inScreen.top(), std::min(place.top(), inScreen.bottom() + 1 - inSize.height())));
    return place;
}

void PlaceWindow(QWidget& ioWindow, QSize inSize)
{
    const QWidget* const parent = ioWindow.parentWidget();
    const QScreen* const screen = parent != nullptr ? parent->screen() : ioWindow.screen();
    const QRect room = screen->availableGeometry();
    const QSize size = inSize.boundedTo(room.size()).expandedTo(ioWindow.minimumSize());
    const bool isOverParent = parent != nullptr && parent->isVisible();
    ioWindow.setGeometry(CentredOver(isOverParent ? parent->window()->frameGeometry() : room, size, room));
}

} // namespace kioui::ui
