#pragma once

#include <kiocore/Export.h>

#include <array>
#include <atomic>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace kiocore::utility {

/// A UTF-8 text that never changes. Copying is cheap: up to kInlineCapacity bytes lie in the object
/// itself (serialization keys do), longer texts are shared and counted. Ordered by plain comparison of bytes.
/// Moving leaves the empty text behind.
///
/// Threading: a plain value; copies of one text may be used on different threads.
class KIO_EXPORT ImmutableString {
public:
    static constexpr std::size_t kInlineCapacity = 22;

    ImmutableString() noexcept { SetInline({}); }
    ImmutableString(std::string_view inText);
    ImmutableString(const char* inText) : ImmutableString(std::string_view(inText)) {}
    ImmutableString(const std::string& inText) : ImmutableString(std::string_view(inText)) {}
    ImmutableString(const ImmutableString& inOther) noexcept : ImmutableString(inOther, Bitwise())
    {
        if (IsShared()) {
            References().fetch_add(1, std::memory_order_relaxed);
        }
    }
    ImmutableString(ImmutableString&& inOther) noexcept : ImmutableString(inOther, Bitwise())
    {
        inOther.SetInline({});
    }
    ImmutableString& operator=(const ImmutableString& inOther) noexcept;
    ImmutableString& operator=(ImmutableString&& inOther) noexcept;
    ~ImmutableString()
    {
        if (IsShared()) {
            Release();
        }
    }

    /// Stands for a text that lives as long as the process, without copying it. A long text that many threads
    /// keep copying (a key) is best made so: nothing is counted, so they share no cache line that is written.
    template <std::size_t kSizeWithZero>
    static ImmutableString FromLiteral(const char (&inText)[kSizeWithZero]) noexcept
    {
        return FromPermanent({inText, kSizeWithZero - 1});
    }
    /// The same for a text that was made while the process runs.
    /// @param inText  followed by a zero byte; never goes.
    static ImmutableString FromPermanent(std::string_view inText) noexcept
    {
        ImmutableString text{Raw()};
        text.SetElsewhere({inText.data(), inText.size(), kIsLiteral});
        return text;
    }

    /// The one empty value.
    static const ImmutableString& Empty();

    std::string_view View() const noexcept
    {
        if (IsInline()) {
            return std::string_view(mBytes, static_cast<unsigned char>(mBytes[kKindAt]));
        }
        const Elsewhere elsewhere = GetElsewhere();
        return {elsewhere.text, elsewhere.size};
    }
    operator std::string_view() const noexcept { return View(); }
    std::string AsString() const { return std::string(View()); }
    /// Terminated with a zero byte.
    const char* CString() const noexcept { return View().data(); }
    std::size_t Size() const noexcept { return View().size(); }
    bool IsEmpty() const noexcept { return Size() == 0; }

    /// Whether one is a copy of the other, or both are short and equal: what == takes reading long texts for.
    /// Long texts may be equal without being copies.
    bool IsCopyOf(const ImmutableString& inOther) const noexcept
    {
        return std::memcmp(mBytes, inOther.mBytes, sizeof(mBytes)) == 0;
    }

    friend bool operator==(const ImmutableString& inA, const ImmutableString& inB) noexcept
    {
        return inA.View() == inB.View();
    }
    friend std::strong_ordering operator<=>(const ImmutableString& inA, const ImmutableString& inB) noexcept
    {
        return inA.View().compare(inB.View()) <=> 0;
    }
    friend std::ostream& operator<<(std::ostream& ioStream, const ImmutableString& inText)
    {
        return ioStream << inText.View();
    }

private:
    static constexpr std::size_t kKindAt = kInlineCapacity + 1;

    // The last word of a text that lies elsewhere: its kind in the last byte. Written as a whole, because
    // reading a word of which one byte has just been written stalls the processor.
    using LastWord = std::array<unsigned char, 8>;
    static constexpr auto kIsLiteral = std::bit_cast<std::uint64_t>(LastWord{0, 0, 0, 0, 0, 0, 0, 0xFE});
    static constexpr auto kIsShared = std::bit_cast<std::uint64_t>(LastWord{0, 0, 0, 0, 0, 0, 0, 0xFF});

    /// What mBytes hold when the text lies elsewhere.
    struct Elsewhere {
        const char* text; // a shared one follows its counter
        std::uint64_t size;
        std::uint64_t kind;
    };

    struct Raw {};
    explicit ImmutableString(Raw) noexcept {}
    struct Bitwise {};
    ImmutableString(const ImmutableString& inOther, Bitwise) noexcept
    {
        std::memcpy(mBytes, inOther.mBytes, sizeof(mBytes));
    }

    bool IsInline() const noexcept { return static_cast<unsigned char>(mBytes[kKindAt]) <= kInlineCapacity; }
    bool IsShared() const noexcept { return static_cast<unsigned char>(mBytes[kKindAt]) == 0xFF; }
    Elsewhere GetElsewhere() const noexcept
    {
        Elsewhere elsewhere;
        std::memcpy(&elsewhere, mBytes, sizeof(elsewhere));
        return elsewhere;
    }
    void SetElsewhere(const Elsewhere& inElsewhere) noexcept
    {
        static_assert(sizeof(Elsewhere) == sizeof(mBytes));
        std::memcpy(mBytes, &inElsewhere, sizeof(mBytes));
    }
    std::atomic<std::size_t>& References() const noexcept
    {
        return reinterpret_cast<std::atomic<std::size_t>*>(const_cast<char*>(GetElsewhere().text))[-1];
    }
    void SetInline(std::string_view inText) noexcept
    {
        std::memset(mBytes, 0, sizeof(mBytes));
        inText.copy(mBytes, inText.size()); // memcpy takes no null, not even for nothing
        mBytes[kKindAt] = static_cast<char>(inText.size());
    }
    void Release() noexcept;

    // Inline: text, zero bytes, size in the last byte. Otherwise an Elsewhere.
    alignas(void*) char mBytes[kInlineCapacity + 2];
};

} // namespace kiocore::utility

namespace kiocore {
using utility::ImmutableString;
}

template <>
struct std::hash<kiocore::utility::ImmutableString> {
    std::size_t operator()(const kiocore::utility::ImmutableString& inText) const noexcept
    {
        return std::hash<std::string_view>()(inText.View());
    }
};
