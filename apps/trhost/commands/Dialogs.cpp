#include "Dialogs.h"

#include "../support/Failure.h"

#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/config/Errors.h>
#include <kiocore/messaging/Messaging.h>

namespace trhost {

namespace {

using kiocore::classref::UnknownBase;
using kiocore::messaging::PostNewMessageToUIThread;

/// Work that stands still on its way until it is aborted, for looking at the progress dialog.
class StandingOperation final : public UnknownBase, public ZOL::IBatchOperation {
public:
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == ZOL::IBatchOperation::InterfaceID() ? static_cast<ZOL::IBatchOperation*>(this)
                                                                    : UnknownBase::QueryMap(inInterfaceID);
    }
    int Start() override
    {
        constexpr float kOnTheWay = 0.4567f;
        PostNewMessageToUIThread<ZOL::UpdateOperationProgressMessage>(mStation, kOnTheWay);
        PostNewMessageToUIThread<ZOL::UpdateOperationDescriptionMessage>(
            mStation,
            UTF16String(
                u"/media/projects/documentary/day 07/A-camera/interview-with-the-lighthouse-keeper.mov"));
        return 0;
    }
    int Abort() override
    {
        PostNewMessageToUIThread<ZOL::OperationCompleteMessage>(mStation);
        return 1;
    }
    kiocore::messaging::StationID GetStationID() const override { return mStation; }
    UTF16String GetDescription() const override
    {
        return Text("$$$/Halcyon/TrHost/Standing/Message=Cleaning up the media cache database");
    }

private:
    const kiocore::messaging::StationID mStation = kiocore::messaging::CreateUniqueStation();
};

} // namespace

void FinishAttending(Context& ioContext, ui::IUserInterface& inUserInterface)
{
    std::string dump;
    try {
        dump = inUserInterface.FinishAttending();
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() == kiocore::kError_Generic) {
            throw Failure(kExit_Negative, error.Text());
        }
        throw;
    }
    if (!dump.empty()) {
        ioContext.output.Document(dump);
    }
}

/// A script that is wrong is a wrong argument.
std::unique_ptr<ui::IUserInterface> OpenUserInterfaceForCommand(const Context& inContext,
                                                                const DialogOptions& inOptions)
{
    try {
        return OpenUserInterface(inContext, inOptions);
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() == kiocore::kError_BadArgument) {
            throw Failure(kExit_Usage, error.Text());
        }
        throw;
    }
}

int ShowDialog(Context& ioContext, const ShowDialogOptions& inOptions)
{
    if (inOptions.name == "effects-manage") {
        return EffectsManage(ioContext, inOptions.search, inOptions.dialog);
    }
    const auto userInterface = OpenUserInterfaceForCommand(ioContext, inOptions.dialog);
    if (inOptions.name == "restart-prompt") {
        userInterface->AskForRestart(inOptions.changedInAnotherApp);
    } else if (inOptions.name == "progress") {
        const auto operation = kiocore::classref::MakeObject<StandingOperation>();
        userInterface->RunOperation(Text("$$$/Halcyon/TrHost/CleanTitle=Cleaning the media cache"),
                                    operation->GetDescription(), operation);
    } else {
        userInterface->ShowBlackmagicRAWRedirect();
    }
    FinishAttending(ioContext, *userInterface);
    return kExit_Done;
}

} // namespace trhost
