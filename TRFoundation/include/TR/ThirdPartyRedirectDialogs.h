#pragma once

#include <TR/PluginRedirect.h>

#include <kioui/controls/HotText.h>
#include <kioui/dialogs/MessageBox.h>

namespace TR {

/// Tells the user that Blackmagic RAW needs a plug-in of the format's maker, and where to find it. In
/// applications of type 1 (PRQ::GetApplicationType) requests that come before the CPU-bound executor got
/// round to a task show one box, in others each request shows one.
///
/// Threading: UI thread only; returns when the box is closed.
KIO_EXPORT void ShowBlackmagicRAWRedirectURL();

/// A message box with a link below its message, which leads to a page about plug-ins. The page comes from the
/// localiser, so that a language may have its own.
///
/// Threading: UI thread only.
class KIO_EXPORT GoURL_MessageBox : public virtual kioui::dialogs::UI_MessageBox {
public:
    /// The parameters are the message box's.
    GoURL_MessageBox(const kioui::SupplierInterface* inSupplier, const kiocore::UTF16String& inTitle,
                     const kiocore::UTF16String& inMessage, int inDefaultButton, Button inButtons,
                     Icon inIcon, const kioui::UI_NodePtr& inParent, unsigned int inHelpID, float inX,
                     float inY, std::shared_ptr<Callback> inCallback, bool inTextIsSelectable);
    ~GoURL_MessageBox() override;

private:
    void OpenGoURLMsg(kioui::UI_ControlChangedMessage* inMessage);

    kioui::controls::UI_HotTextButtonPtr mGoURL;
};

} // namespace TR
