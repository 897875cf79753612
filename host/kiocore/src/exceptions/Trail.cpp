#include <kiocore/exceptions/Trail.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/exceptions/MachineException.h>

#include "debug/TypeName.h"
#include "platform/StandardError.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>

namespace kiocore::exceptions {
namespace {

std::atomic<bool> sShouldCrash{false};

struct Entries {
    std::mutex lock; // guards last
    std::deque<utility::Dictionary> last;
};

// Leaked on purpose: objects that are destroyed at exit may still leave a trail.
Entries& TheEntries()
{
    static Entries* entries = new Entries;
    return *entries;
}

std::string Describe(const std::exception& inException)
{
    std::string text = debug::TypeName(typeid(inException)) + ": " + inException.what();
    if (const auto* exception = dynamic_cast<const kio_exception*>(&inException)) {
        char code[32];
        std::snprintf(code, sizeof(code), " (code 0x%08X)", static_cast<unsigned>(exception->Code()));
        text += code;
        if (const std::string place = exception->Place(); !place.empty()) {
            text += " [" + place + "]";
        }
    } else if (const auto signal = GetMachineExceptionCode(inException)) {
        text += " (code " + std::to_string(*signal) + ")";
    }
    return text;
}

} // namespace

bool GetShouldCrashOnMachineException() noexcept
{
    KIO_HOST_CALL("kiocore::exceptions::GetShouldCrashOnMachineException");
    return sShouldCrash.load();
}

void SetShouldCrashOnMachineException(bool inShouldCrash) noexcept
{
    sShouldCrash.store(inShouldCrash);
}

void Panic(const utility::Dictionary& inWhy)
{
    try {
        const std::string why = inWhy.AsJSON();
        KIO_HOST_CALL("kiocore::exceptions::Panic", why);
        debug::Trace(1, "Panic", why);
        platform::WriteLineToStandardError("Panic: " + why);
    } catch (...) {
        // The process ends, with words or without.
    }
    std::abort();
}

void LeaveTrail(const utility::Dictionary& inEntry)
{
    const std::string text = inEntry.AsJSON();
    KIO_HOST_CALL("kiocore::exceptions::LeaveTrail", text);
    debug::Trace(1, "Trail", text);
    Entries& entries = TheEntries();
    std::lock_guard lock(entries.lock);
    entries.last.push_back(inEntry);
    if (entries.last.size() > kTrailLength) {
        entries.last.pop_front();
    }
}

std::vector<utility::Dictionary> GetTrail()
{
    Entries& entries = TheEntries();
    std::lock_guard lock(entries.lock);
    return {entries.last.begin(), entries.last.end()};
}

void LogException(const std::exception& inException, std::string_view inWhere) noexcept
{
    try {
        const std::string text = Describe(inException);
        KIO_HOST_CALL("kiocore::exceptions::LogException", text, inWhere);
        debug::Trace(1, "Exceptions", text + " in " + std::string(inWhere));
    } catch (...) {
        // Whoever logs is in the middle of handling something worse.
    }
}

} // namespace kiocore::exceptions
