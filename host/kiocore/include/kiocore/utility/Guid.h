#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kiocore::utility {

/// A 16-byte identifier, in the byte order in which its text is written. All zero by default.
///
/// Threading: a plain value.
class Guid {
public:
    using Bytes = std::array<std::uint8_t, 16>;
    static constexpr std::size_t kTextLength = 36;

    constexpr Guid() = default;
    explicit constexpr Guid(const Bytes& inBytes) : mBytes(inBytes) {}
    /// @param inText  as in "102BFB4C-1980-4e77-87DF-17B03D5B09DB", either case.
    /// @throws kio_exception (kError_BadGuidText) when it has another form.
    KIO_EXPORT explicit Guid(std::string_view inText);

    /// The same without an exception: empty when inText has another form.
    KIO_EXPORT static std::optional<Guid> FromText(std::string_view inText);
    /// A fresh one from the system's random source (version 4).
    KIO_EXPORT static Guid CreateUnique();
    /// The same bytes always give the same identifier (xxHash3, 128 bits, canonical byte order),
    /// on every machine and in every build.
    KIO_EXPORT static Guid FromHash(std::span<const std::byte> inBytes, std::uint64_t inSeed = 0);

    /// Lower-case text without braces, as it stands in file names: "102bfb4c-1980-4e77-87df-17b03d5b09db".
    KIO_EXPORT UTF16String AsString() const;
    KIO_EXPORT std::string AsUTF8() const;
    /// Writes the kTextLength characters of the text, no terminator.
    KIO_EXPORT void WriteText(char16_t* outText) const;
    KIO_EXPORT void WriteText(char* outText) const;

    const Bytes& AsBytes() const { return mBytes; }
    bool IsZero() const { return *this == Guid(); }

    friend bool operator==(const Guid& inA, const Guid& inB)
    {
        return std::memcmp(inA.mBytes.data(), inB.mBytes.data(), 16) == 0;
    }
    friend std::strong_ordering operator<=>(const Guid& inA, const Guid& inB)
    {
        return std::memcmp(inA.mBytes.data(), inB.mBytes.data(), 16) <=> 0;
    }

private:
    Bytes mBytes{};
};

} // namespace kiocore::utility

namespace kiocore {
using utility::Guid;
}

template <>
struct std::hash<kiocore::utility::Guid> {
    std::size_t operator()(const kiocore::utility::Guid& inGuid) const noexcept
    {
        // Both halves: hand-written identifiers often differ in one of them only.
        std::uint64_t halves[2];
        std::memcpy(halves, inGuid.AsBytes().data(), 16);
        return static_cast<std::size_t>((halves[0] ^ (halves[1] * 0x9E3779B97F4A7C15ull)) *
                                        0xD6E8FEB86659FD93ull);
    }
};
