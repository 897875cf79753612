#include "MessageIcon.h"

#include "ui/NodeImpl.h"

#include <QIcon>
#include <QLabel>
#include <QStyle>

namespace kioui::dialogs {
namespace {

QStyle::StandardPixmap ToQt(UI_MessageBox::Icon inIcon)
{
    switch (inIcon) {
    case UI_MessageBox::Icon::kInformation:
        return QStyle::SP_MessageBoxInformation;
    case UI_MessageBox::Icon::kQuestion:
        return QStyle::SP_MessageBoxQuestion;
    case UI_MessageBox::Icon::kWarning:
        return QStyle::SP_MessageBoxWarning;
    case UI_MessageBox::Icon::kError:
        return QStyle::SP_MessageBoxCritical;
    }
    return QStyle::SP_MessageBoxInformation;
}

} // namespace

MessageIcon::MessageIcon(UI_MessageBox::Icon inIcon) : UI_Node(ui::NewImpl<QLabel>("MessageIcon"))
{
    auto* label = ui::WidgetOf<QLabel>(*this);
    const int size = label->style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, label);
    const QIcon icon = label->style()->standardIcon(ToQt(inIcon), nullptr, label);
    label->setPixmap(icon.pixmap(QSize(size, size), label->devicePixelRatioF()));
}

MessageIcon::~MessageIcon() = default;

} // namespace kioui::dialogs
