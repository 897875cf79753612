#pragma once

#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Node.h>

namespace kioui::controls {

/// A text to read, plain as it stands. Wraps at its width, and can be selected and copied.
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
    /// Whether the mouse selects it; it does until told otherwise.
    void SetSelectable(bool inSelectable);
    /// One line in place of a wrapped text: what does not fit is left out there, and shown whole as a tool
    /// tip. Such a line is as high with no text, asks for no width, and is not selected. kNone wraps again.
    void SetTruncation(drawbot::TextTruncation inTruncation);
    /// How high the text is when wrapped at that width; 0 for no text.
    float GetHeightForWidth(float inWidth) const;
};
using UI_StaticTextPtr = boost::intrusive_ptr<UI_StaticText>;

} // namespace kioui::controls
