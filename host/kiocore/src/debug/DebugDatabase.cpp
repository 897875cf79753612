#include <kiocore/debug/DebugDatabase.h>

#include <kiocore/debug/Trace.h>

#include <charconv>
#include <cmath>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>

namespace kiocore::debug {
namespace {

using utility::ImmutableString;

std::atomic<std::uint32_t> sChangeCount{1};

struct Values {
    std::mutex lock; // guards byKey; the count moves under it too
    std::map<ImmutableString, DebugDatabase::Value> byKey;

    // Within the lock, so that who sees the new count and then asks finds the new value.
    void CountChange()
    {
        if (sChangeCount.fetch_add(1, std::memory_order_relaxed) + 1 == 0) {
            sChangeCount.fetch_add(1, std::memory_order_relaxed);
        }
    }
};

// Leaked on purpose: asked until the very end of the process.
Values& TheValues()
{
    static Values* const values = new Values;
    return *values;
}

template <typename T>
std::optional<T> Find(const ImmutableString& inKey)
{
    Values& values = TheValues();
    std::lock_guard lock(values.lock);
    const auto found = values.byKey.find(inKey);
    const T* const value = found == values.byKey.end() ? nullptr : boost::get<T>(&found->second);
    return value ? std::optional<T>(*value) : std::nullopt;
}

template <typename Number>
bool ParseWhole(std::string_view inText, Number& outNumber)
{
    const char* const end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, outNumber);
    return error == std::errc() && stop == end;
}

DebugDatabase::Value ValueFromText(std::string_view inText)
{
    if (inText == "true" || inText == "false") {
        return inText == "true";
    }
    std::int64_t integer = 0;
    if (ParseWhole(inText, integer)) {
        return integer;
    }
    double number = 0;
    // "nan" and "inf" are words here.
    if (ParseWhole(inText, number) && std::isfinite(number)) {
        return number;
    }
    return ImmutableString(inText);
}

} // namespace

void DebugDatabase::Set(const ImmutableString& inKey, Value inValue)
{
    KIO_HOST_CALL("kiocore::debug::DebugDatabase::Set", inKey);
    Values& values = TheValues();
    std::lock_guard lock(values.lock);
    values.byKey[inKey].swap(inValue);
    values.CountChange();
}

void DebugDatabase::SetFromText(const ImmutableString& inKey, std::string_view inText)
{
    Set(inKey, ValueFromText(inText));
}

void DebugDatabase::Remove(const ImmutableString& inKey)
{
    KIO_HOST_CALL("kiocore::debug::DebugDatabase::Remove", inKey);
    Values& values = TheValues();
    std::lock_guard lock(values.lock);
    if (values.byKey.erase(inKey) > 0) {
        values.CountChange();
    }
}

bool DebugDatabase::GetBool(const ImmutableString& inKey, bool inDefault)
{
    KIO_HOST_CALL("kiocore::debug::DebugDatabase::GetBool", inKey, inDefault);
    return Find<bool>(inKey).value_or(inDefault);
}

std::int64_t DebugDatabase::GetInteger(const ImmutableString& inKey, std::int64_t inDefault)
{
    KIO_HOST_CALL("kiocore::debug::DebugDatabase::GetInteger", inKey, inDefault);
    return Find<std::int64_t>(inKey).value_or(inDefault);
}

std::string DebugDatabase::GetText(const ImmutableString& inKey, std::string_view inDefault)
{
    KIO_HOST_CALL("kiocore::debug::DebugDatabase::GetText", inKey, inDefault);
    const auto found = Find<ImmutableString>(inKey);
    return found ? found->AsString() : std::string(inDefault);
}

std::uint32_t DebugDatabase::GetChangeCount() noexcept
{
    return sChangeCount.load(std::memory_order_relaxed);
}

bool CachedDebugBool::Get() const
{
    const std::uint64_t seen = mSeen.load(std::memory_order_relaxed);
    const std::uint32_t count = DebugDatabase::GetChangeCount();
    if (seen >> 1 == count) {
        return (seen & 1) != 0;
    }
    // The count from before the value: a change in between makes the next call look again.
    const bool value = DebugDatabase::GetBool(mKey, mDefault);
    mSeen.store(std::uint64_t{count} << 1 | (value ? 1 : 0), std::memory_order_relaxed);
    return value;
}

} // namespace kiocore::debug
