#include <kioui/drawbot/Drawbot.h>

#include "QtFont.h"
#include "Truncation.h"

#include "ui/ApplicationState.h"
#include "ui/NodeImpl.h"

#include <kiocore/debug/Trace.h>

#include <QApplication>

#include <algorithm>
#include <cmath>

namespace kioui::drawbot {
namespace {

constexpr float kLargestFont = 4096; // beyond, not even one letter fits a screen

class MeasuringDrawbot final : public Drawbot {
public:
    void SaveState() override {}
    void RestoreState() override {}
    void Clip(const RectT<float>&) override {}
    void FillRect(const RectT<float>&, const skins::Color&) override {}
    void DrawString(UTF16View, const FontRef&, const skins::Color&, PointT<float>) override {}
    float MeasureString(UTF16View inText, const FontRef& inFont) const override
    {
        return inFont ? inFont->MeasureWidth(inText) : 0;
    }
    UTF16String TruncateString(UTF16View inText, const FontRef& inFont, float inWidth,
                               TextTruncation inTruncation) const override
    {
        return Truncate(inText, inFont, inWidth, inTruncation);
    }
};

class QtSupplier final : public SupplierInterface {
public:
    FontRef NewFont(UTF16View inName, float inSize) const override
    {
        KIO_HOST_CALL("kioui::drawbot::SupplierInterface::NewFont", UTF16String(inName), inSize);
        if (!(inSize > 0) || !std::isfinite(inSize)) {
            return {};
        }
        QFont font = QApplication::font();
        if (!inName.empty()) {
            font.setFamily(ui::ToQt(inName));
        }
        font.setPixelSize(std::max(int(std::round(std::min(inSize, kLargestFont))), 1));
        return std::make_shared<const QtFont>(font);
    }
    std::unique_ptr<Drawbot> NewMeasuringDrawbot() const override
    {
        KIO_HOST_CALL("kioui::drawbot::SupplierInterface::NewMeasuringDrawbot");
        return std::make_unique<MeasuringDrawbot>();
    }
};

} // namespace

Font::~Font() = default;
Drawbot::~Drawbot() = default;
SupplierInterface::~SupplierInterface() = default;

std::unique_ptr<SupplierInterface> NewQtSupplier()
{
    return std::make_unique<QtSupplier>();
}

} // namespace kioui::drawbot
