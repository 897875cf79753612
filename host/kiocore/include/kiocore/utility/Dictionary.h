#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/ImmutableString.h>

#include <boost/variant.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace kiocore::utility {

/// A few named values, in the order of their keys, each key once. One entry lies in the object itself, so a
/// dictionary of one is made, moved and dropped without memory from the heap.
///
/// Threading: a plain value.
class KIO_EXPORT Dictionary {
public:
    using Value = boost::variant<bool, std::int64_t, double, ImmutableString>;
    struct Entry {
        ImmutableString key;
        Value value;
    };

    Dictionary() noexcept = default;
    Dictionary(ImmutableString inKey, ImmutableString inText) noexcept;
    Dictionary(std::initializer_list<Entry> inEntries);

    /// Replaces the value of a key that is there.
    void Set(ImmutableString inKey, Value inValue);
    /// Null when there is none. Neither allocates nor locks, so a crash handler may ask.
    const Value* Find(std::string_view inKey) const noexcept;
    std::size_t Size() const noexcept;
    const Entry* begin() const noexcept;
    const Entry* end() const noexcept;

    /// {"key": value, ...} as compact JSON, for logs.
    std::string AsJSON() const;

private:
    std::size_t mInlineSize = 0; // 0 or 1; mEntries holds all of them when there are more
    Entry mInline;
    std::vector<Entry> mEntries;
};

} // namespace kiocore::utility
