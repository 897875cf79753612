#include <PRQ/ApplicationType.h>

#include <kiocore/debug/Trace.h>

#include <atomic>

namespace PRQ {
namespace {

std::atomic<int> sApplicationType{0};

}

int GetApplicationType()
{
    KIO_HOST_CALL("PRQ::GetApplicationType");
    return sApplicationType.load(std::memory_order_relaxed);
}

void SetApplicationType(int inType)
{
    sApplicationType.store(inType, std::memory_order_relaxed);
}

} // namespace PRQ
