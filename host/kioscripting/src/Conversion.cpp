#include <kioscripting/Conversion.h>

#include <kiocore/config/Errors.h>

#include <cmath>
#include <sstream>

namespace kioscripting {
namespace {

std::string Shown(double inNumber)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(17);
    text << inNumber;
    return text.str();
}

} // namespace

void ThrowWrongType(const char* inExpected, const Value& inFound)
{
    throw kiocore::kio_exception(std::string("expected ") + inExpected + ", found " + TypeNameOf(inFound),
                                 kiocore::kError_BadConversion);
}

double CheckedInteger(const Value& inValue, double inLeast, double inMost)
{
    const double number = Convert<double>::From(inValue);
    if (!(number >= inLeast && number <= inMost) || number != std::trunc(number)) {
        throw kiocore::kio_exception("expected a whole number from " + Shown(inLeast) + " to " +
                                         Shown(inMost) + ", found " + Shown(number),
                                     kiocore::kError_BadConversion);
    }
    return number;
}

kiocore::Guid Convert<kiocore::Guid>::From(const Value& inValue)
{
    if (const ScriptObjectPtr* const object = inValue.As<ScriptObjectPtr>()) {
        if (const auto* const cast = dynamic_cast<const ICast<kiocore::Guid>*>(object->get())) {
            kiocore::Guid guid;
            cast->CastTo(guid);
            return guid;
        }
    }
    const std::string* const text = inValue.As<std::string>();
    if (!text) {
        ThrowWrongType("a Guid or its text", inValue);
    }
    return kiocore::Guid(*text);
}

} // namespace kioscripting
