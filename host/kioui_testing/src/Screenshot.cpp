#include <kioui_testing/NodeTree.h>

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>

#include <QBuffer>
#include <QPixmap>

namespace kioui::testing {

void SaveScreenshot(ui::UI_OSWindow& inWindow, const std::string& inFileUTF8)
{
    ui::ScApplication::RunPending(); // a layout may be due
    QByteArray bytes;
    if (QWidget* widget = inWindow.GetImpl().widget) {
        QBuffer buffer(&bytes);
        widget->grab().toImage().convertToFormat(QImage::Format_RGB888).save(&buffer, "PNG");
    }
    if (bytes.isEmpty()) {
        throw kiocore::file_exception("draw", inFileUTF8, ENODATA);
    }
    const auto saved = kiocore::filesupport::SaveFileAtomically(
        kiocore::utility::ToUTF16(inFileUTF8), std::string_view(bytes.constData(), std::size_t(bytes.size())),
        kiocore::filesupport::Durability::kNone);
    if (saved.result < 0) {
        throw kiocore::file_exception(saved.failedStep, inFileUTF8, saved.errorNumber);
    }
}

} // namespace kioui::testing
