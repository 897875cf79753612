#pragma once

#include <kioui/controls/Control.h>

#include <optional>

namespace kioui::controls {

/// A line of text to search for, with a button that clears it.
/// Changed means finished: Return was pressed, or the focus left with another text than it came with.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_SearchBox : public UI_Control {
public:
    /// @param inShowsMagnifier      a magnifier stands before the text.
    /// @param inKeepsRecentSearches what was searched for is offered again while typing.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_SearchBox(bool inShowsMagnifier, bool inKeepsRecentSearches);
    ~UI_SearchBox() override;
    const char* GetClassName() const override { return "UI_SearchBox"; }

    /// The text; empty text while the value is unknown.
    UTF16String GetText() const override;
    /// Nothing while the value is unknown: it stands for several that differ. Typing makes it known.
    std::optional<UTF16String> GetValue() const;
    /// The value is empty until it is set; setting it calls neither function.
    void SetValue(const UTF16String& inText);
    void SetValueUnknown();
    /// What is shown, greyed, while there is no text.
    void SetUnknownStateText(const UTF16String& inText);
    UTF16String GetUnknownStateText() const;
    /// Called at every edit: typed, pasted, cleared with the button, taken from recent searches.
    void SetInteractiveChangeFunction(ChangedFunction inFunction);

private:
    void Edited();
    void Left();
    void Finished();

    struct State;
    std::unique_ptr<State> mState;
};
using UI_SearchBoxPtr = boost::intrusive_ptr<UI_SearchBox>;

} // namespace kioui::controls
