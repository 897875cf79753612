#include <TR/ThirdPartyRedirectDialogs.h>

#include <PRQ/ApplicationType.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/platform/Browser.h>
#include <kiocore/threads/AsyncExecutor.h>
#include <kioui/ui/NodeManager.h>
#include <kioui/ui/Window.h>

#include <memory>

namespace TR {

using kiocore::UTF16String;
using kiocore::config::Localizer;
using kioui::UI_NodeManager;

namespace {

// Written by the UI thread and by the task; a lost write shows one box too many or too few.
bool sShowBRAWDialog = false;

constexpr int kApplicationThatAsksInBursts = 1;
constexpr int kFirstButton = 1;
constexpr float kLinkFontSize = 14;

void ShowBox()
{
    const auto box = std::make_unique<GoURL_MessageBox>(
        UI_NodeManager::GetDefaultDrawSupplier(),
        Localizer::GetText(
            "$$$/Halcyon/Tracery/TRFoundation/3rdPartyRequirement=Third party plugin required"),
        Localizer::GetText(
            "$$$/Halcyon/Tracery/TRFoundation/BlackMagicRawRequired=Blackmagic RAW video support "
            "requires a plugin. For more information go to"),
        kFirstButton, kioui::dialogs::UI_MessageBox::Button::kOK,
        kioui::dialogs::UI_MessageBox::Icon::kInformation, UI_NodeManager::GetMainTopLevelWindow(), 0, 0.0f,
        0.0f, nullptr, true);
    box->Show();
}

} // namespace

void ShowBlackmagicRAWRedirectURL()
{
    if (!sShowBRAWDialog) {
        ShowBox();
    }
    if (PRQ::GetApplicationType() == kApplicationThatAsksInBursts && !sShowBRAWDialog) {
        sShowBRAWDialog = true;
        kiocore::threads::GetCPUBoundExecutor()->Submit([] { sShowBRAWDialog = false; });
    }
}

GoURL_MessageBox::GoURL_MessageBox(const kioui::SupplierInterface* inSupplier, const UTF16String& inTitle,
                                   const UTF16String& inMessage, int inDefaultButton, Button inButtons,
                                   Icon inIcon, const kioui::UI_NodePtr& inParent, unsigned int inHelpID,
                                   float inX, float inY, std::shared_ptr<Callback> inCallback,
                                   bool inTextIsSelectable)
    : UI_MessageBox(inSupplier, inTitle, inMessage, inDefaultButton, inButtons, inIcon, inParent, inHelpID,
                    inX, inY, std::move(inCallback), inTextIsSelectable)
{
    const UI_NodeManager::SetModalWindow window(GetWindow());
    mGoURL = new kioui::controls::UI_HotTextButton(Localizer::Format(
        Localizer::GetText("$$$/Halcyon/Tracery/TRFoundation/GoTo=Go to @0"), {GetPluginRedirectURL()}));
    mGoURL->SetFontSize(kLinkFontSize);
    mGoURL->SetNodeID("GoURL");
    mGoURL->SetChangedFunction([this](kioui::UI_ControlChangedMessage* inClick) { OpenGoURLMsg(inClick); });
    AddBelowMessage(mGoURL);
}

GoURL_MessageBox::~GoURL_MessageBox() = default;

void GoURL_MessageBox::OpenGoURLMsg(kioui::UI_ControlChangedMessage*)
{
    kiocore::utility::OpenURLInDefaultBrowser(GetPluginRedirectURL());
}

} // namespace TR
