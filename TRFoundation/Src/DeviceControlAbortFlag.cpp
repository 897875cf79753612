#include <TR/DeviceControlAbortFlag.h>

namespace TR {
namespace {

bool sUserAbort = false;

}

void SetDeviceControlAbortFlag(bool inAbort)
{
    sUserAbort = inAbort;
}
bool GetDeviceControlAbortFlag()
{
    return sUserAbort;
}

} // namespace TR
