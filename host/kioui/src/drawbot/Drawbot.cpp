#include <kioui/drawbot/Drawbot.h>

#include "QtFont.h"
#include "Truncation.h"

#include "ui/ApplicationState.h"
#include "ui/NodeImpl.h"

#include <kiocore/debug/Trace.h>

#include <QApplication>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kioui::drawbot {
namespace {

constexpr std::size_t kMostFonts = 8;
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
        const QFont font = MakeFont(inName, inSize);
        if (FontRef kept = Find(font)) {
            return kept;
        }
        mFonts.push_back(std::make_shared<const QtFont>(font));
        return mFonts.back();
    }
    std::unique_ptr<Drawbot> NewMeasuringDrawbot() const override
    {
        KIO_HOST_CALL("kioui::drawbot::SupplierInterface::NewMeasuringDrawbot");
        return std::make_unique<MeasuringDrawbot>();
    }

private:
    static QFont MakeFont(UTF16View inName, float inSize)
    {
        QFont font = QApplication::font();
        if (!inName.empty()) {
            font.setFamily(ui::ToQt(inName));
        }
        font.setPixelSize(std::max(int(std::round(std::min(inSize, kLargestFont))), 1));
        font.setKerning(false);
        return font;
    }
    FontRef Find(const QFont& inFont) const
    {
        const auto found = std::find_if(mFonts.begin(), mFonts.end(),
                                        [&](const auto& inKept) { return inKept->GetFont() == inFont; });
        if (found != mFonts.end()) {
            return *found;
        }
        if (mFonts.size() >= kMostFonts) {
            mFonts.erase(mFonts.begin());
        }
        return {};
    }

    // Kept, as callers ask for the same few again and again, and fonts remember the widths of their letters.
    mutable std::vector<std::shared_ptr<const QtFont>> mFonts;
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
