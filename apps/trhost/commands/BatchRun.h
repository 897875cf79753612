#pragma once

#include "../support/Context.h"

#include <ZOL/BatchOperation.h>
#include <kiocore/classref/InterfaceRef.h>

#include <functional>

namespace trhost {

/// Makes a batch operation, runs it to its end on the shared pool and shows its progress as the station
/// tells it. An interruption aborts it.
/// @throws Failure (kExit_Failed) when it was interrupted; what the operation itself threw passes through.
void RunBatchOperation(Context& ioContext,
                       const std::function<kiocore::InterfaceRef<ZOL::IBatchOperation>()>& inMakeOperation);

} // namespace trhost
