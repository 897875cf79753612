#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiocore::config {

/// Texts for people. Every text is written in the source as "$$$/Key=English default#{note to
/// translators}": the key is a contract, the part behind "=" is shown when there is no translation, the
/// note is never shown. "\\n" in a default stands for a line feed. Translations come from gettext
/// catalogues (.mo) with the key (without "$$$/") as context and the default as message; a translation
/// made for another default is not used.
///
/// Threading: any thread. The language is chosen once at start.
class KIO_EXPORT Localizer {
public:
    /// The translated text, or the default. A text without "$$$/" comes back as it is.
    static utility::UTF16String GetText(std::string_view inLocalisedText);

    /// Replaces "@0", "@1", ... and "^0", "^1", ... by the values at those positions; "^1" is the second
    /// value for "^" numbering that starts at 0. A number without a value stays as it stands. Values are
    /// not searched for parameters again.
    static utility::UTF16String Format(utility::UTF16View inText, const std::vector<utility::UTF16String>& inValues);

    /// Loads inFolder/<language>.mo, for "de_AT" also "de". "en" and "C" are the defaults themselves.
    /// @return 0 loaded or nothing to load; -1 no catalogue for this language, the defaults stay.
    /// @throws kio_exception (kError_DamagedData) naming the file when it is no valid catalogue.
    static int SetLanguage(std::string_view inLanguage, std::string_view inFolderUTF8);
    static std::string GetLanguage();
};

/// Compares texts as a dictionary of the default locale would order them; texts that differ at all never
/// compare equal.
KIO_EXPORT int CompareUnderDefaultLocale(utility::UTF16View inA, utility::UTF16View inB);

} // namespace kiocore::config
