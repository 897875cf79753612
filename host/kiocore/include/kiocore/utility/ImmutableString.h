#pragma once

#include <kiocore/Export.h>

#include <atomic>
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
/// itself (serialization keys do), longer texts are shared. Ordered by plain comparison of bytes.
///
/// Threading: a plain value; copies of one text may be used on different threads.
class KIO_EXPORT ImmutableString {
public:
    static constexpr std::size_t kInlineCapacity = 22;

    ImmutableString() noexcept { SetInline({}); }
    ImmutableString(std::string_view inText);
    ImmutableString(const char* inText) : ImmutableString(std::string_view(inText)) {}
    ImmutableString(const std::string& inText) : ImmutableString(std::string_view(inText)) {}
    ImmutableString(const ImmutableString& inOther) noexcept;
    ImmutableString(ImmutableString&& inOther) noexcept;
    ImmutableString& operator=(const ImmutableString& inOther) noexcept;
    ImmutableString& operator=(ImmutableString&& inOther) noexcept;
    ~ImmutableString()
    {
        if (IsShared()) {
            Release();
        }
    }

    /// The one empty value.
    static const ImmutableString& Empty();

    std::string_view View() const noexcept
    {
        return IsShared() ? SharedView()
                          : std::string_view(mBytes, static_cast<unsigned char>(mBytes[kSizeAt]));
    }
    operator std::string_view() const noexcept { return View(); }
    std::string AsString() const { return std::string(View()); }
    /// Terminated with a zero byte.
    const char* CString() const noexcept { return IsShared() ? SharedView().data() : mBytes; }
    std::size_t Size() const noexcept { return View().size(); }
    bool IsEmpty() const noexcept { return Size() == 0; }

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
    struct Shared;
    static constexpr std::size_t kSizeAt = kInlineCapacity + 1;
    static constexpr char kIsShared = static_cast<char>(0xFF);

    bool IsShared() const noexcept { return mBytes[kSizeAt] == kIsShared; }
    std::string_view SharedView() const noexcept;
    Shared* Get() const noexcept;
    void SetInline(std::string_view inText) noexcept
    {
        std::memset(mBytes, 0, sizeof(mBytes));
        inText.copy(mBytes, inText.size()); // memcpy takes no null, not even for nothing
        mBytes[kSizeAt] = static_cast<char>(inText.size());
    }
    void Release() noexcept;

    // Inline: text, zero bytes, size in the last byte. Shared: a pointer, and kIsShared there.
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
