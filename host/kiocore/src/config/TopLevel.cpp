#include <kiocore/config/TopLevel.h>

#include <kiocore/debug/Trace.h>
#include <kiocore/threads/AsyncExecutor.h>

namespace kiocore::config {

bool ExecuteTopLevelFunction(const char* inWhere, const std::function<void()>& inFunction)
{
    KIO_HOST_CALL("kiocore::config::ExecuteTopLevelFunction", inWhere);
    try {
        inFunction();
        return true;
    } catch (...) {
        threads::ReportException(inWhere);
        return false;
    }
}

} // namespace kiocore::config
