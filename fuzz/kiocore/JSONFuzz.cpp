// Any bytes as JSON. What is read is written and must come back the same, in either form; its texts survive
// the way through UTF-16; what is refused is refused with a place inside the text.

#include <kiocore/serialization/JSONConvert.h>

#include <algorithm>
#include <cstdlib>

namespace {

using namespace kiocore::serialization;

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

void CheckTexts(const JSON& inValue)
{
    if (const auto* text = boost::any_cast<std::string>(&inValue)) {
        Require(TextFromUTF16(TextToUTF16(*text)) == *text);
    } else if (const auto* array = boost::any_cast<JSONArray>(&inValue)) {
        std::for_each(array->begin(), array->end(), CheckTexts);
    } else if (const auto* object = boost::any_cast<JSONObject>(&inValue)) {
        for (const auto& [name, value] : *object) {
            CheckTexts(name);
            CheckTexts(value);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    const std::string_view text(reinterpret_cast<const char*>(inBytes), inSize);
    JSON value;
    try {
        value = GetJSONFromUTF8String(text);
    } catch (const not_well_formed_exception& refusal) {
        const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        Require(refusal.Line() >= 1 && refusal.Line() <= 1 + lines);
        Require(refusal.Column() >= 1 && refusal.Column() <= 1 + inSize);
        return 0;
    }
    CheckTexts(value);
    const std::string written = GetJSONUTF8String(value, false);
    Require(GetJSONUTF8String(GetJSONFromUTF8String(written), false) == written);
    Require(GetJSONUTF8String(GetJSONFromUTF8String(GetJSONUTF8String(value, true)), false) == written);
    return 0;
}
