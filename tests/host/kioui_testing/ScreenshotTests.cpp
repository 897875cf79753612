#include <kioui/ui/Window.h>
#include <kioui_testing/NodeTree.h>

#include "ui/NodeImpl.h"

#include <support/TemporaryFolder.h>
#include <support/ui/TestApplication.h>

#include <QImage>

#include <gmock/gmock.h>

using namespace kioui;

TEST(Screenshot, ShowsTheWindowInDevicePixels)
{
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        SCOPED_TRACE(scale);
        ui::ApplicationSettings settings;
        settings.scale = scale;
        const support::ScTestApplication application(settings);
        const support::TemporaryFolder folder;
        boost::intrusive_ptr<ui::UI_OSWindow> window(new ui::UI_OSWindow(u"Window", nullptr));
        window->SetSize({120, 80});
        QWidget* const widget = window->GetImpl().widget;
        widget->setPalette(QColor(10, 200, 30));
        window->UI_Show(true);
        const std::string file = (folder / "shot.png").string();
        kioui::testing::SaveScreenshot(*window, file);
        const QImage image(QString::fromStdString(file));
        EXPECT_EQ(image.width(), int(120 * scale));
        EXPECT_EQ(image.height(), int(80 * scale));
        EXPECT_EQ(image.pixelColor(image.width() - 1, image.height() - 1), QColor(10, 200, 30));
    }
}

TEST(Screenshot, AFileThatCannotBeWrittenIsNamed)
{
    const support::ScTestApplication application;
    const support::TemporaryFolder folder;
    boost::intrusive_ptr<ui::UI_OSWindow> window(new ui::UI_OSWindow(u"Window", nullptr));
    window->UI_Show(true);
    const std::string file = (folder / "missing" / "shot.png").string();
    try {
        kioui::testing::SaveScreenshot(*window, file);
        FAIL() << "written";
    } catch (const kiocore::file_exception& error) {
        EXPECT_EQ(error.Errno(), ENOENT);
        EXPECT_THAT(error.what(), ::testing::HasSubstr(file));
    }
}
