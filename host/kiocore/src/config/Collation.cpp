#include <kiocore/config/Localizer.h>

#include <kiocore/debug/Trace.h>

#include <unicode/coll.h>

#include <algorithm>

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

std::string SortKeyUnderDefaultLocale(utility::UTF16View inText)
{
    KIO_HOST_CALL("kiocore::config::SortKeyUnderDefaultLocale", inText);
    std::string key;
    if (const icu::Collator* collator = TheCollator()) {
        const auto* text = inText.data();
        const auto length = static_cast<std::int32_t>(inText.size());
        std::uint8_t guess[256];
        const std::int32_t needed = collator->getSortKey(text, length, guess, sizeof(guess));
        if (needed <= static_cast<std::int32_t>(sizeof(guess))) {
            key.assign(reinterpret_cast<const char*>(guess), static_cast<std::size_t>(needed));
        } else {
            key.resize(static_cast<std::size_t>(needed));
            collator->getSortKey(text, length, reinterpret_cast<std::uint8_t*>(key.data()), needed);
        }
    }
    // Behind the collator's key, which ends with the only 0 in it, the units tell spellings of one character
    // apart. Of these spellings at most one is all ASCII, and comes first anyway.
    if (std::any_of(inText.begin(), inText.end(), [](char16_t unit) { return unit >= 0x80; }) ||
        key.empty()) {
        for (const char16_t unit : inText) {
            key += static_cast<char>(unit >> 8);
            key += static_cast<char>(unit & 0xFF);
        }
    }
    return key;
}

} // namespace kiocore::config
