#include <kiocore/utility/Guid.h>

#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>

#include <sys/random.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cerrno>

namespace kiocore::utility {
namespace {

constexpr bool IsDashBefore(std::size_t inByte)
{
    return inByte == 4 || inByte == 6 || inByte == 8 || inByte == 10;
}

int HexValue(char inDigit)
{
    if (inDigit >= '0' && inDigit <= '9') {
        return inDigit - '0';
    }
    if (inDigit >= 'a' && inDigit <= 'f') {
        return inDigit - 'a' + 10;
    }
    if (inDigit >= 'A' && inDigit <= 'F') {
        return inDigit - 'A' + 10;
    }
    return -1;
}

template <typename Unit>
void Write(const Guid::Bytes& inBytes, Unit* outText)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < inBytes.size(); ++i) {
        if (IsDashBefore(i)) {
            *outText++ = '-';
        }
        *outText++ = static_cast<Unit>(kDigits[inBytes[i] >> 4]);
        *outText++ = static_cast<Unit>(kDigits[inBytes[i] & 15]);
    }
}

} // namespace

std::optional<Guid> Guid::FromText(std::string_view inText)
{
    if (inText.size() != kTextLength) {
        return std::nullopt;
    }
    Bytes bytes;
    std::size_t at = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (IsDashBefore(i) && inText[at++] != '-') {
            return std::nullopt;
        }
        const int high = HexValue(inText[at++]);
        const int low = HexValue(inText[at++]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return Guid(bytes);
}

Guid::Guid(std::string_view inText)
{
    const std::optional<Guid> guid = FromText(inText);
    if (!guid) {
        throw kio_exception(
            config::Localizer::Format(config::Localizer::GetText(
                                          "$$$/kiocore/Error/NoGuid=\"@0\" is no GUID; expected the form @1"),
                                      {ToUTF16(inText), u"102bfb4c-1980-4e77-87df-17b03d5b09db"}),
            kError_BadGuidText);
    }
    *this = *guid;
}

Guid Guid::CreateUnique()
{
    Bytes bytes;
    for (std::size_t got = 0; got < bytes.size();) {
        const ssize_t more = getrandom(bytes.data() + got, bytes.size() - got, 0);
        if (more > 0) {
            got += static_cast<std::size_t>(more);
        } else if (errno != EINTR) {
            throw kio_exception("The system's random source does not answer", kError_NoRandomSource);
        }
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return Guid(bytes);
}

Guid Guid::FromHash(std::span<const std::byte> inBytes, std::uint64_t inSeed)
{
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_withSeed(inBytes.data(), inBytes.size(), inSeed));
    Bytes bytes;
    std::memcpy(bytes.data(), canonical.digest, bytes.size());
    return Guid(bytes);
}

UTF16String Guid::AsString() const
{
    UTF16String text(kTextLength, u'\0');
    WriteText(text.data());
    return text;
}

std::string Guid::AsUTF8() const
{
    std::string text(kTextLength, '\0');
    WriteText(text.data());
    return text;
}

void Guid::WriteText(char16_t* outText) const
{
    Write(mBytes, outText);
}
void Guid::WriteText(char* outText) const
{
    Write(mBytes, outText);
}

} // namespace kiocore::utility
