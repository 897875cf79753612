#include <MF/BinaryData.h>

#include <kiocore/debug/Trace.h>

namespace MF {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Six bits each, the highest first.
void PutDigits(std::uint32_t in24Bits, char* outDigits)
{
    for (int i = 0; i < 4; ++i) {
        outDigits[i] = kDigits[(in24Bits >> (18 - 6 * i)) & 63];
    }
}

} // namespace

std::string EncodeBinaryDataToUTF8String(const BinaryData& inData)
{
    KIO_HOST_CALL("MF::EncodeBinaryDataToUTF8String", inData.GetSize());
    const std::size_t size = inData.GetSize();
    const std::byte* const bytes = inData.GetData();
    const auto at = [bytes](std::size_t inIndex) { return std::to_integer<std::uint32_t>(bytes[inIndex]); };
    std::string text((size + 2) / 3 * 4, '=');
    char* out = text.data();
    std::size_t i = 0;
    for (; i + 3 <= size; i += 3, out += 4) {
        PutDigits(at(i) << 16 | at(i + 1) << 8 | at(i + 2), out);
    }
    if (i < size) {
        const bool hasTwo = i + 1 < size;
        PutDigits(at(i) << 16 | (hasTwo ? at(i + 1) << 8 : 0), out);
        out[2] = hasTwo ? out[2] : '=';
        out[3] = '=';
    }
    return text;
}

} // namespace MF
