#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Dictionary.h>
#include <kiocore/utility/ImmutableString.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace kiocore::debug {

/// Switches for those who look for faults, by name: "TR.EffectPluginManager.ProvokeCrash". They live as long
/// as the process.
///
/// Threading: any thread.
class KIO_EXPORT DebugDatabase {
public:
    using Value = utility::Dictionary::Value;

    /// Setting a value that is there already counts as a change too.
    static void Set(const utility::ImmutableString& inKey, Value inValue);
    /// Takes the value as text: "true", "false", a whole number, a number, else a text.
    static void SetFromText(const utility::ImmutableString& inKey, std::string_view inText);
    static void Remove(const utility::ImmutableString& inKey);
    /// The default when there is no value, or one of another type.
    static bool GetBool(const utility::ImmutableString& inKey, bool inDefault);
    static std::int64_t GetInteger(const utility::ImmutableString& inKey, std::int64_t inDefault);
    static std::string GetText(const utility::ImmutableString& inKey, std::string_view inDefault);
    /// Moves with every change; never 0. One relaxed load.
    static std::uint32_t GetChangeCount() noexcept;
};

/// A switch that is asked for often: looked up again only after the database changed.
///
/// Threading: any thread. A change is seen by the first Get() that begins after it on the same thread, and
/// soon on others.
class KIO_EXPORT CachedDebugBool {
public:
    /// @param inKey  must outlive this (a literal).
    constexpr CachedDebugBool(const char* inKey, bool inDefault) noexcept : mKey(inKey), mDefault(inDefault)
    {}
    bool Get() const;
    const char* Key() const noexcept { return mKey; }

private:
    const char* const mKey;
    const bool mDefault;
    // Change count above, value in the lowest bit, so that the two are never seen apart.
    mutable std::atomic<std::uint64_t> mSeen{0};
};

} // namespace kiocore::debug
