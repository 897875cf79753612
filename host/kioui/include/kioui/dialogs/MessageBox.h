#pragma once

#include <kioui/ui/Dialog.h>

#include <functional>
#include <memory>
#include <vector>

namespace kioui::dialogs {

using drawbot::SupplierInterface;
using ui::UI_Node;
using ui::UI_NodePtr;
using ui::UTF16String;

/// Tells something and waits for one of its buttons.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_MessageBox {
public:
    enum class Button { kNone = 0, kOK = 1, kOKCancel = 2, kYesNo = 3, kYesNoCancel = 4 };
    enum class Icon { kInformation = 0, kQuestion = 1, kWarning = 2, kError = 3 };
    /// Told the number of the button that closed the box, counted from 1; 0 when none did.
    using Callback = std::function<void(int)>;

    /// @param inDefaultButton  clicked by Return, counted from 1; 0 is none.
    /// @param inParent         stays behind it and takes no input; may be empty.
    /// @param inHelpID         a help page's number; 0 is none, and all that is supported.
    /// @param inX, inY         where its top left corner lies; both 0 is over the middle of the parent.
    /// @param inCallback       called when the box is answered, before Show returns; may be empty.
    /// @param inTextIsSelectable whether the message can be selected and copied.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_MessageBox(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                  const UTF16String& inMessage, int inDefaultButton, Button inButtons, Icon inIcon,
                  const UI_NodePtr& inParent, unsigned int inHelpID, float inX, float inY,
                  std::shared_ptr<Callback> inCallback, bool inTextIsSelectable);
    /// The same with buttons of one's own, from the first on; empty texts are no buttons.
    UI_MessageBox(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                  const UTF16String& inMessage, int inDefaultButton,
                  const std::vector<UTF16String>& inButtonTexts, Icon inIcon, const UI_NodePtr& inParent);
    virtual ~UI_MessageBox();
    UI_MessageBox(const UI_MessageBox&) = delete;
    UI_MessageBox& operator=(const UI_MessageBox&) = delete;

    /// Shows the box and waits.
    /// @return the number of the button that closed it, counted from 1; 0 when it was closed another way
    ///     (Escape, the window's own means, Close).
    int Show();
    /// Ends a running Show as if the window had been closed.
    void Close();

    /// Puts a node below the message.
    void AddBelowMessage(const UI_NodePtr& inNode);
    /// The window. Its node ID is "MessageBox"; the buttons' are "Button1", "Button2", ..., the message's
    /// "Message".
    ui::UI_Dialog& GetWindow() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

namespace messagebox {

/// Asks a question with up to three buttons over a parent.
/// @param inVariant      how it is dressed up: 0 is the plain one, and the only one.
/// @param inFirst...     the buttons' texts; the first is the one that Return clicks. Empty texts are no
/// buttons.
/// @return the number of the button that closed it, counted from 1; 0 when it was closed another way.
KIO_EXPORT int LatticeDialog(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                             const UTF16String& inMessage, const UI_NodePtr& inParent, int inVariant,
                             const UTF16String& inFirst, const UTF16String& inSecond,
                             const UTF16String& inThird);

/// What a box asks.
struct Question {
    UTF16String title;
    UTF16String message;
    std::vector<UTF16String> buttons;
};

/// Answers message boxes in the user's place for as long as it lives. Nesting is allowed, last in, first out.
/// Works without an application object for boxes that LatticeDialog asks.
class KIO_EXPORT ScAnswer {
public:
    /// @return the number of the button, counted from 1, or 0 for a box closed without one.
    using Answer = std::function<int(const Question&)>;
    explicit ScAnswer(Answer inAnswer);
    ~ScAnswer();
    ScAnswer(const ScAnswer&) = delete;
    ScAnswer& operator=(const ScAnswer&) = delete;

private:
    Answer mAnswer;
    const Answer* mBefore;
};

} // namespace messagebox
} // namespace kioui::dialogs
