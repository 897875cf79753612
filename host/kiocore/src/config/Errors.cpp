#include <kiocore/config/Errors.h>

#include <kiocore/config/Localizer.h>
#include <kiocore/debug/Trace.h>

namespace kiocore {

kio_exception::kio_exception(std::string inTextUTF8, std::uint32_t inCode)
    : mText(std::move(inTextUTF8)), mMessageSize(mText.size()), mCode(inCode)
{}
kio_exception::kio_exception(std::string_view inMessageUTF8, std::string_view inDetailUTF8,
                             std::uint32_t inCode)
    : mText(inMessageUTF8), mMessageSize(inMessageUTF8.size()), mCode(inCode)
{
    mText.append(": ").append(inDetailUTF8);
}
kio_exception::kio_exception(utility::UTF16View inText, std::uint32_t inCode)
    : kio_exception(utility::ToUTF8(inText), inCode)
{}
kio_exception::~kio_exception() = default;

std::string kio_exception::Place() const
{
    std::string place = mSource;
    if (!place.empty() && *mFailedCondition) {
        place += ": ";
    }
    return place += mFailedCondition;
}

null_reference_exception::null_reference_exception(const std::string& inTypeName)
    : kio_exception("An empty reference was used where a " + inTypeName + " was expected",
                    kError_NullReference)
{}
null_reference_exception::~null_reference_exception() = default;

namespace config {

void ThrowError(int inLevel, const char* inLocalisedText, int inNumberA, int inNumberB, bool inFatal,
                const utility::UTF16String& inValue1, const utility::UTF16String& inValue2,
                const utility::UTF16String& inValue3, const utility::UTF16String& inValue4)
{
    KIO_HOST_CALL("kiocore::config::ThrowError", inLevel, inLocalisedText, inNumberA, inNumberB, inFatal,
                  inValue1, inValue2, inValue3, inValue4);
    std::string text = utility::ToUTF8(
        Localizer::Format(Localizer::GetText(inLocalisedText), {inValue1, inValue2, inValue3, inValue4}));
    std::string numbers;
    for (int number : {inNumberA, inNumberB}) {
        if (number != 0) {
            numbers.append(numbers.empty() ? "" : ", ").append(std::to_string(number));
        }
    }
    if (!numbers.empty()) {
        text.append(" (").append(numbers).append(")");
    }
    debug::Trace(1, "Errors",
                 (inFatal ? "Fatal error of level " : "Error of level ") + std::to_string(inLevel) + ": " +
                     text);
    throw kio_exception(std::move(text), kError_Startup);
}

} // namespace config
} // namespace kiocore
