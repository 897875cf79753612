#include <kiocore/utility/Coercion.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace kiocore::utility {
namespace {

// Numbers are plain ASCII; what follows the first other unit cannot belong to one.
std::string ASCIIBeginning(const UTF16String& inText)
{
    const auto end = std::find_if(inText.begin(), inText.end(), [](char16_t unit) { return unit >= 0x80; });
    return std::string(inText.begin(), end);
}

template <typename T>
T Convert(const UTF16String& inText, const char* inExpected)
{
    const std::string text = ASCIIBeginning(inText);
    T value{};
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), value).ec;
    bool isValue = error == std::errc();
    if constexpr (std::is_floating_point_v<T>) {
        isValue = isValue && std::isfinite(value); // "nan" and "inf" are words, not numbers
    }
    if (!isValue) {
        const char* const reason =
            error == std::errc::result_out_of_range ? "\" is out of range for " : "\" does not begin with ";
        throw kio_exception("\"" + ToUTF8(inText) + reason + inExpected, kError_BadConversion);
    }
    return value;
}

} // namespace

template <>
int Coercion<int>(const UTF16String& inText)
{
    KIO_HOST_CALL("kiocore::utility::Coercion<int>", inText);
    return Convert<int>(inText, "a whole number");
}

template <>
double Coercion<double>(const UTF16String& inText)
{
    KIO_HOST_CALL("kiocore::utility::Coercion<double>", inText);
    return Convert<double>(inText, "a number");
}

} // namespace kiocore::utility
