#include <kiocore/config/Localizer.h>

#include <kiocore/debug/Trace.h>

#include <unicode/coll.h>

namespace kiocore::config {
namespace {

// Leaked on purpose: sorted maps are used until the very end of the process. Comparing changes nothing
// in a collator, so all threads share it.
const icu::Collator* TheCollator()
{
    static const icu::Collator* const collator = [] {
        UErrorCode error = U_ZERO_ERROR;
        icu::Collator* made = icu::Collator::createInstance(error);
        if (U_FAILURE(error)) {
            delete made;
            return static_cast<icu::Collator*>(nullptr);
        }
        made->setAttribute(UCOL_STRENGTH, UCOL_IDENTICAL, error);
        return made;
    }();
    return collator;
}

int Sign(int inValue)
{
    return (inValue > 0) - (inValue < 0);
}

} // namespace

int CompareUnderDefaultLocale(utility::UTF16View inA, utility::UTF16View inB)
{
    KIO_HOST_CALL("kiocore::config::CompareUnderDefaultLocale", inA, inB);
    int order = 0;
    if (const icu::Collator* collator = TheCollator()) {
        UErrorCode error = U_ZERO_ERROR;
        order = collator->compare(inA.data(), static_cast<std::int32_t>(inA.size()), inB.data(),
                                  static_cast<std::int32_t>(inB.size()), error);
    }
    // Even the finest comparison takes two spellings of one character for the same.
    return order != 0 ? Sign(order) : Sign(inA.compare(inB));
}

} // namespace kiocore::config
