#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/ImmutableString.h>

#include <boost/variant.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kiocore::utility {

/// A few named values, in the order of their keys, each key once. One entry lies in the object itself, so a
/// dictionary of one is made, moved and dropped without memory from the heap. Moving leaves an empty one.
///
/// Threading: a plain value.
class KIO_EXPORT Dictionary {
public:
    using Value = boost::variant<bool, std::int64_t, double, ImmutableString>;

    /// What a value is kept as: any integer as std::int64_t, any text as ImmutableString. A variant that is
    /// given a literal would choose bool.
    template <typename T>
    static Value AsValue(T&& inValue)
    {
        using Plain = std::decay_t<T>;
        if constexpr (std::is_same_v<Plain, bool>) {
            return Value(bool(inValue));
        } else if constexpr (std::is_integral_v<Plain> || std::is_enum_v<Plain>) {
            return Value(static_cast<std::int64_t>(inValue));
        } else if constexpr (std::is_floating_point_v<Plain>) {
            return Value(static_cast<double>(inValue));
        } else if constexpr (std::is_same_v<Plain, Value>) {
            return std::forward<T>(inValue);
        } else {
            return Value(ImmutableString(std::forward<T>(inValue)));
        }
    }

    struct Entry {
        Entry() noexcept = default;
        template <typename T>
        Entry(ImmutableString inKey, T&& inValue)
            : key(std::move(inKey)), value(AsValue(std::forward<T>(inValue)))
        {}

        ImmutableString key;
        Value value;
    };

    Dictionary() noexcept = default;
    Dictionary(ImmutableString inKey, ImmutableString inText) noexcept
        : mHasInline(true), mInline(std::move(inKey), std::move(inText))
    {}
    /// Of entries with the same key the last one counts.
    Dictionary(std::initializer_list<Entry> inEntries);
    Dictionary(const Dictionary& inOther);
    Dictionary(Dictionary&& inOther) noexcept
        : mHasInline(std::exchange(inOther.mHasInline, false)), mInline(std::move(inOther.mInline)),
          mEntries(std::move(inOther.mEntries))
    {}
    Dictionary& operator=(const Dictionary& inOther) { return *this = Dictionary(inOther); }
    Dictionary& operator=(Dictionary&& inOther) noexcept;
    ~Dictionary() = default;

    /// Replaces the value of a key that is there.
    template <typename T>
    void Set(ImmutableString inKey, T&& inValue)
    {
        SetEntry(Entry(std::move(inKey), std::forward<T>(inValue)));
    }
    /// Null when there is none. Neither allocates nor locks, so a crash handler may ask.
    const Value* Find(std::string_view inKey) const noexcept;
    std::size_t Size() const noexcept { return static_cast<std::size_t>(end() - begin()); }
    const Entry* begin() const noexcept { return mEntries ? mEntries->data() : &mInline; }
    const Entry* end() const noexcept
    {
        return mEntries ? mEntries->data() + mEntries->size() : &mInline + mHasInline;
    }

    /// Whether this is one text, and key and text are copies of these (see ImmutableString::IsCopyOf).
    bool IsCopyOf(const ImmutableString& inKey, const ImmutableString& inText) const noexcept
    {
        const auto* text = boost::get<ImmutableString>(&mInline.value);
        return mHasInline && text && text->IsCopyOf(inText) && mInline.key.IsCopyOf(inKey);
    }

    /// {"key": value, ...} as compact JSON, for logs: bytes that are no UTF-8 show as U+FFFD, a number that
    /// is not finite as null.
    std::string AsJSON() const;

private:
    void SetEntry(Entry inEntry);

    bool mHasInline = false;
    Entry mInline;
    std::unique_ptr<std::vector<Entry>> mEntries; // all of them, when there are more than one
};

} // namespace kiocore::utility
