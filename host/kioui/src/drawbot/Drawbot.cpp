#include <kioui/drawbot/Drawbot.h>

#include "ui/ApplicationState.h"

namespace kioui::drawbot {
Font::~Font() = default;
Drawbot::~Drawbot() = default;
SupplierInterface::~SupplierInterface() = default;
std::unique_ptr<SupplierInterface> NewQtSupplier()
{
    return nullptr;
}
} // namespace kioui::drawbot
