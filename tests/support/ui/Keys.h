#pragma once

#include <kioui/ui/Window.h>

#include <ui/NodeImpl.h>

#include <QApplication>
#include <QTest>
#include <gtest/gtest.h>

namespace support {

/// Shows a window and waits until it takes keys.
inline void ShowActive(kioui::ui::UI_OSWindow& inWindow)
{
    inWindow.UI_Show(true);
    ASSERT_TRUE(QTest::qWaitForWindowActive(inWindow.GetImpl().widget)) << inWindow.GetNodeID();
}

/// Presses a key where the focus is.
inline void PressKey(Qt::Key inKey, Qt::KeyboardModifiers inModifiers = Qt::NoModifier)
{
    QWidget* const focused = QApplication::focusWidget();
    QTest::keyClick(focused != nullptr ? focused : QApplication::activeWindow(), inKey, inModifiers);
}

} // namespace support
