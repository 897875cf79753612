#include "threads/QueueBase.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include "debug/TypeName.h"

#include <exception>

namespace kiocore::threads {

AsyncExecutor::~AsyncExecutor() = default;

void ReportException(std::string_view inWhere) noexcept
{
    try {
        std::string text(inWhere);
        text += " threw ";
        const std::type_info* type = abi::__cxa_current_exception_type();
        text += type ? debug::TypeName(*type) : "something unknown";
        try {
            throw;
        } catch (const kio_exception& exception) {
            text.append(": ").append(exception.what());
            if (const std::string place = exception.Place(); !place.empty()) {
                text.append(" [").append(place).append("]");
            }
        } catch (const std::exception& exception) {
            text.append(": ").append(exception.what());
        } catch (...) {
            // has no text
        }
        debug::Trace(1, "Threads", text);
    } catch (...) {
        // No memory for a report; the work goes on.
    }
}

int QueueBase::Submit(Task inTask)
{
    KIO_HOST_CALL("kiocore::threads::AsyncExecutor::Submit", mName);
    return Accept(std::move(inTask));
}

void RunTask(AsyncExecutor::Task& ioTask, std::string_view inExecutor) noexcept
{
    try {
        ioTask();
    } catch (...) {
        ReportException("A task of the " + std::string(inExecutor) + " executor");
    }
    ioTask = nullptr;
}

} // namespace kiocore::threads
