#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace kiocore::config {

/// Where the application speaks which language.
///
/// Threading: any thread. Follows Localizer::SetLanguage.
class KIO_EXPORT Locale {
public:
    /// The language of the application's texts as language and territory, "de_AT": as SetLanguage was asked
    /// for it, and with the territory where most people speak it when none was named ("de" is "de_DE").
    /// "en_US" before anybody asked, and when there are no texts in the language that was asked for, so that
    /// a text of the Localizer kept under this code is always in that language.
    static utility::UTF16String ApplicationLanguage();
};

} // namespace kiocore::config
