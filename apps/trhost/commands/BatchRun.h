#pragma once

#include "../support/Context.h"

#include <ZOL/BatchOperation.h>
#include <kiocore/classref/InterfaceRef.h>

#include <functional>

namespace trhost {

using MakeOperation = std::function<kiocore::InterfaceRef<ZOL::IBatchOperation>()>;

/// Makes a batch operation, runs it to its end on the shared pool and shows its progress as the station
/// tells it. An interruption aborts it.
/// @throws Failure (kExit_Failed) when it was interrupted; what the operation itself threw passes through.
void RunBatchOperation(Context& ioContext, const MakeOperation& inMakeOperation);
/// The same in a window, where it can be cancelled too.
/// @throws as the other, and Failure (kExit_Failed) when it was cancelled.
void RunBatchOperationInDialog(Context& ioContext, const kiocore::UTF16String& inTitle,
                               const MakeOperation& inMakeOperation);

} // namespace trhost
