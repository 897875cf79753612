#include "debug/TerminateHandler.h"

#include "debug/TypeName.h"
#include "platform/StandardError.h"

#include <cxxabi.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <string>

namespace kiocore::debug {
namespace {

std::terminate_handler sBefore = nullptr; // set while ours is installed

std::string DescribeCurrentException()
{
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (!type) {
        return "terminate called without an active exception";
    }
    std::string line = "terminate called after throwing an instance of '" + TypeName(*type) + "'";
    try {
        throw;
    } catch (const std::exception& exception) {
        line.append(": ").append(exception.what());
    } catch (...) {
        // its type says it all
    }
    return line;
}

[[noreturn]] void OnTerminate() noexcept
{
    // What describing throws, or an exception destroyed on the way, must not bring us here again.
    static std::atomic<bool> sIsHere{false};
    if (!sIsHere.exchange(true)) {
        platform::WriteLineToStandardError(DescribeCurrentException());
    }
    std::abort();
}

} // namespace

void InstallTerminateHandler() noexcept
{
    if (!sBefore && std::get_terminate() == __gnu_cxx::__verbose_terminate_handler) {
        sBefore = std::set_terminate(&OnTerminate);
    }
}

void UninstallTerminateHandler() noexcept
{
    if (sBefore && std::get_terminate() == &OnTerminate) {
        std::set_terminate(sBefore);
    }
    sBefore = nullptr;
}

} // namespace kiocore::debug
