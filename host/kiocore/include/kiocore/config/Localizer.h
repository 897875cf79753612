#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiocore::config {

/// Texts for people. Every text is written in the source as "$$$/Key=English default#{note to
/// translators}": the key is a contract, the part behind "=" is shown when there is no translation, what
/// begins with "#{" is a note and never shown. "\\n" in a default stands for a line feed. Translations
/// come from gettext catalogues (.mo) with the key (without "$$$/") as context and the default (with real
/// line feeds) as message; a translation made for another default is not used.
///
/// Threading: any thread. The language is chosen once at start.
class KIO_EXPORT Localizer {
public:
    /// The translated text, or the default. A text without "$$$/" and "=" comes back as it is.
    static utility::UTF16String GetText(std::string_view inLocalisedText);

    /// Replaces parameters by values. The two forms are numbered differently, as their texts have it:
    /// "@0" and "^1" are the first value, "@1" and "^2" the second. A number without a value stays as it
    /// stands. Values are not searched for parameters again.
    static utility::UTF16String Format(utility::UTF16View inText,
                                       const std::vector<utility::UTF16String>& inValues);

    /// Loads inFolder/<language>.mo, for "de_AT" (also "de-AT" and "de_AT.UTF-8") "de" when there is no
    /// such file. "en", "C", "POSIX" and no language at all are the defaults themselves.
    /// @return 0 loaded or nothing to load; -1 no catalogue for this language: the defaults are shown.
    /// @throws kio_exception (kError_DamagedData) naming the file when it is no valid catalogue in UTF-8,
    ///     kError_BadArgument when the language is no language code, file_exception when a catalogue that
    ///     is there cannot be read. The language stays as it was.
    static int SetLanguage(std::string_view inLanguage, std::string_view inFolderUTF8);
    /// Adds the catalogue of another folder in the language that was set, until it is set again: a library
    /// brings texts of its own (TRFoundation those in share/TRFoundation/locale, host libraries' included).
    /// While the defaults are shown there is nothing to add, so that no two languages mix.
    /// @return 0 added or nothing to add; -1 no catalogue for the language in this folder.
    /// @throws as SetLanguage; the texts stay as they were.
    static int AddTexts(std::string_view inFolderUTF8);
    /// The language of the texts: the name of the catalogue in use, "en" when there is none.
    static std::string GetLanguage();
};

/// Compares texts as a dictionary of the process's default locale would order them; texts that differ at
/// all never compare equal.
/// @return -1, 0 or 1.
KIO_EXPORT int CompareUnderDefaultLocale(utility::UTF16View inA, utility::UTF16View inB);

/// A key for sorting many texts: keys compare (std::string's compare, units as unsigned) as
/// CompareUnderDefaultLocale compares their texts, only far faster. For now and this process: not to be kept.
KIO_EXPORT std::string SortKeyUnderDefaultLocale(utility::UTF16View inText);

} // namespace kiocore::config
