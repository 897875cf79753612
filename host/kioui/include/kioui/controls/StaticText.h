#pragma once

#include <kioui/ui/Node.h>

namespace kioui::controls {

/// A text to read; it can be selected and copied. Wraps at its width.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_StaticText : public ui::UI_Node {
public:
    /// @throws kio_exception (kError_BadArgument) without an application object.
    explicit UI_StaticText(const ui::UTF16String& inText);
    ~UI_StaticText() override;
    const char* GetClassName() const override { return "UI_StaticText"; }

    ui::UTF16String GetText() const override;
    void SetText(const ui::UTF16String& inText);
    /// Heavier than other texts, for the one that matters most.
    void SetBold(bool inBold);
    /// How high the text is when wrapped at that width.
    float GetHeightForWidth(float inWidth) const;
};
using UI_StaticTextPtr = boost::intrusive_ptr<UI_StaticText>;

} // namespace kioui::controls
