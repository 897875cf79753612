#include <ZOL/BatchOperation.h>

namespace ZOL {

const CFUUIDBytes& IBatchOperation::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x6e, 0x1b, 0x0f, 0x5d, 0x92, 0xc4, 0x4a, 0x37, 0xb8, 0x0e, 0x2f, 0xd3, 0x71, 0xa6, 0x58, 0xc9}};
    return kID;
}

IBatchOperation::~IBatchOperation() = default;
UpdateOperationProgressMessage::~UpdateOperationProgressMessage() = default;
UpdateOperationDescriptionMessage::~UpdateOperationDescriptionMessage() = default;
OperationCompleteMessage::~OperationCompleteMessage() = default;

} // namespace ZOL
