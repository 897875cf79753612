#include "config/LocaleCode.h"

#include <unicode/locid.h>

#include <string>

namespace kiocore::config {

utility::UTF16String LocaleCodeOf(std::string_view inLanguage)
{
    const std::string plain(inLanguage.substr(0, inLanguage.find_first_of(".@")));
    icu::Locale locale(plain.c_str());
    // The territory alone may be missing, or the language as well.
    UErrorCode error = U_ZERO_ERROR;
    if (*locale.getLanguage() && !*locale.getCountry()) {
        locale.addLikelySubtags(error);
    }
    const std::string_view language = locale.getLanguage();
    const std::string_view territory = locale.getCountry();
    if (U_FAILURE(error) || language.empty() || language == "c" || territory.empty()) {
        return u"en_US";
    }
    return utility::ToUTF16(std::string(language).append("_").append(territory));
}

} // namespace kiocore::config
