#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/UnknownBase.h>
#include <kiocore/messaging/Messaging.h>
#include <kiocore/utility/UTF16String.h>

namespace ZOL {

using kiocore::UTF16String;
using kiocore::messaging::StationID;

/// Long work that runs on an executor and tells a station how far it is. Messages arrive on the UI thread.
class KIO_EXPORT IBatchOperation : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IBatchOperation() override;

    /// Submits the work. @return the executor's answer, 0 or more when it was accepted.
    virtual int Start() = 0;
    /// Asks the work to stop and waits until it has. @return the finished flag, 1.
    virtual int Abort() = 0;
    virtual StationID GetStationID() const = 0;
    /// What the work does, for people.
    virtual UTF16String GetDescription() const = 0;
};

/// How far an operation is, from 0 to 1.
class KIO_EXPORT UpdateOperationProgressMessage : public kiocore::messaging::Message {
public:
    explicit UpdateOperationProgressMessage(float inProgress) : mProgress(inProgress) {}
    ~UpdateOperationProgressMessage() override;
    float GetProgress() const { return mProgress; }

private:
    float mProgress;
};

/// The description of the work changed.
class KIO_EXPORT UpdateOperationDescriptionMessage : public kiocore::messaging::Message {
public:
    explicit UpdateOperationDescriptionMessage(UTF16String inDescription)
        : mDescription(std::move(inDescription))
    {}
    ~UpdateOperationDescriptionMessage() override;
    const UTF16String& GetDescription() const { return mDescription; }

private:
    UTF16String mDescription;
};

/// The operation is over, also when it was aborted.
class KIO_EXPORT OperationCompleteMessage : public kiocore::messaging::Message {
public:
    ~OperationCompleteMessage() override;
};

} // namespace ZOL
