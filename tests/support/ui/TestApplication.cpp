#include "TestApplication.h"

#include <cstdlib>
#include <utility>

namespace support {
namespace {

kioui::ui::ApplicationSettings WithTestFont(kioui::ui::ApplicationSettings inSettings)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    inSettings.fontFileUTF8 = TEST_FONT_FILE;
    return inSettings;
}

} // namespace

ScTestApplication::ScTestApplication(kioui::ui::ApplicationSettings inSettings)
    : mApplication(WithTestFont(std::move(inSettings)))
{}

} // namespace support
