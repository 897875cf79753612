#include <kiocore/config/Localizer.h>

#include <kiocore/config/Errors.h>
#include <kiocore/config/Locale.h>
#include <kiocore/debug/Trace.h>

#include "config/Catalogue.h"
#include "config/LocaleCode.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <optional>

namespace kiocore::config {
namespace {

constexpr std::string_view kKeyMark = "$$$/";
constexpr std::string_view kNoteMark = "#{";
constexpr std::string_view kDefaultLanguage = "en";

/// The application's catalogue first, then those of the libraries that it added.
using Catalogues = std::vector<std::shared_ptr<const Catalogue>>;

struct Language {
    std::mutex lock; // guards the members below
    std::string name{kDefaultLanguage};
    std::string asked{kDefaultLanguage};
    utility::UTF16String locale = LocaleCodeOf(kDefaultLanguage);
    std::shared_ptr<const Catalogues> catalogues; // replaced, never changed; null for the defaults
};

// Leaked on purpose: texts are asked for until the very end of the process.
Language& TheLanguage()
{
    static Language* const language = new Language;
    return *language;
}

std::shared_ptr<const Catalogues> CurrentCatalogues()
{
    Language& language = TheLanguage();
    std::lock_guard lock(language.lock);
    return language.catalogues;
}

std::string WithLineFeeds(std::string_view inText)
{
    std::string text;
    text.reserve(inText.size());
    for (std::size_t i = 0; i < inText.size(); ++i) {
        if (inText.substr(i, 2) == "\\n") {
            text += '\n';
            ++i;
        } else {
            text += inText[i];
        }
    }
    return text;
}

bool IsLanguageCode(std::string_view inText)
{
    return std::all_of(inText.begin(), inText.end(), [](char unit) {
        return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
               unit == '_' || unit == '-' || unit == '@' || unit == '.';
    });
}

/// The catalogues that serve a language, best first: "sr_RS@latin", "sr@latin", "sr_RS", "sr".
std::vector<std::string> CatalogueNames(std::string_view inLanguage)
{
    const std::size_t at = inLanguage.find('@');
    const std::string modifier(at == std::string_view::npos ? "" : inLanguage.substr(at));
    std::string name(inLanguage.substr(0, std::min(at, inLanguage.find('.'))));
    std::replace(name.begin(), name.end(), '-', '_');
    const std::string plain = name.substr(0, name.find('_'));
    std::vector<std::string> names;
    for (const std::string& candidate : {name + modifier, plain + modifier, name, plain}) {
        if (std::find(names.begin(), names.end(), candidate) == names.end()) {
            names.push_back(candidate);
        }
    }
    return names;
}

bool IsDefaultLanguage(std::string_view inName)
{
    return inName.empty() || inName == kDefaultLanguage || inName == "C" || inName == "POSIX";
}

/// @return empty when there is no such file.
std::optional<std::string> ReadFile(const std::string& inPath)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(inPath.c_str(), "rb"),
                                                               &std::fclose);
    if (!file) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return std::nullopt;
        }
        throw file_exception("open", inPath, errno);
    }
    std::string bytes;
    char block[16384];
    while (const std::size_t got = std::fread(block, 1, sizeof(block), file.get())) {
        bytes.append(block, got);
    }
    if (std::ferror(file.get())) {
        throw file_exception("read", inPath, errno);
    }
    return bytes;
}

/// The catalogue of a folder that serves a language, and its name; null when there is none.
std::pair<std::shared_ptr<const Catalogue>, std::string> FindCatalogue(std::string_view inLanguage,
                                                                       std::string_view inFolder)
{
    for (const std::string& name : CatalogueNames(inLanguage)) {
        const std::string path = std::string(inFolder) + '/' + name + ".mo";
        if (std::optional<std::string> bytes = ReadFile(path)) {
            return {std::make_shared<const Catalogue>(std::move(*bytes), path), name};
        }
    }
    return {};
}

/// @param inLocale  the language with what else was asked for: the catalogue "de" may serve "de_AT".
void UseLanguage(std::string_view inName, std::string_view inLocale,
                 std::shared_ptr<const Catalogue> inCatalogue)
{
    utility::UTF16String locale = LocaleCodeOf(inLocale);
    std::shared_ptr<const Catalogues> catalogues =
        inCatalogue ? std::make_shared<const Catalogues>(1, std::move(inCatalogue)) : nullptr;
    Language& language = TheLanguage();
    std::lock_guard lock(language.lock);
    language.name = inName;
    language.asked = inLocale;
    language.locale.swap(locale);
    language.catalogues.swap(catalogues);
}

/// A parameter at the beginning of a text: which value it stands for, and its length.
struct Parameter {
    std::size_t index;
    std::size_t length;
};

std::optional<Parameter> ParameterAt(utility::UTF16View inText)
{
    if (inText.empty() || (inText[0] != u'@' && inText[0] != u'^')) {
        return std::nullopt;
    }
    constexpr std::size_t kMostDigits = 4; // far above the number of values that anybody passes
    std::size_t number = 0;
    std::size_t end = 1;
    for (; end < inText.size() && end <= kMostDigits && inText[end] >= u'0' && inText[end] <= u'9'; ++end) {
        number = number * 10 + (inText[end] - u'0');
    }
    const std::size_t first = inText[0] == u'^' ? 1 : 0;
    if (end == 1 || number < first) {
        return std::nullopt;
    }
    return Parameter{number - first, end};
}

} // namespace

utility::UTF16String Localizer::GetText(std::string_view inLocalisedText)
{
    KIO_HOST_CALL("kiocore::config::Localizer::GetText", inLocalisedText);
    const std::size_t equals = inLocalisedText.find('=');
    if (!inLocalisedText.starts_with(kKeyMark) || equals == std::string_view::npos) {
        return utility::ToUTF16(inLocalisedText);
    }
    const std::string_view key = inLocalisedText.substr(kKeyMark.size(), equals - kKeyMark.size());
    const std::string_view rest = inLocalisedText.substr(equals + 1);
    const std::string text = WithLineFeeds(rest.substr(0, rest.find(kNoteMark)));
    if (const auto catalogues = CurrentCatalogues()) {
        for (const auto& catalogue : *catalogues) {
            if (const auto translated = catalogue->Find(key, text)) {
                return utility::ToUTF16(*translated);
            }
        }
    }
    return utility::ToUTF16(text);
}

utility::UTF16String Localizer::Format(utility::UTF16View inText,
                                       const std::vector<utility::UTF16String>& inValues)
{
    utility::UTF16String text;
    text.reserve(inText.size());
    while (!inText.empty()) {
        const auto parameter = ParameterAt(inText);
        if (parameter && parameter->index < inValues.size()) {
            text += inValues[parameter->index];
            inText.remove_prefix(parameter->length);
        } else {
            text += inText.front();
            inText.remove_prefix(1);
        }
    }
    return text;
}

int Localizer::SetLanguage(std::string_view inLanguage, std::string_view inFolderUTF8)
{
    KIO_HOST_CALL("kiocore::config::Localizer::SetLanguage", inLanguage, inFolderUTF8);
    if (!IsLanguageCode(inLanguage)) {
        throw kio_exception(
            Format(GetText("$$$/kiocore/Error/NoLanguage=\"@0\" is no language; expected a code "
                           "such as de or pt_BR"),
                   {utility::ToUTF16(inLanguage)}),
            kError_BadArgument);
    }
    const std::vector<std::string> names = CatalogueNames(inLanguage);
    if (std::any_of(names.begin(), names.end(), &IsDefaultLanguage)) {
        UseLanguage(kDefaultLanguage, inLanguage, nullptr);
        return 0;
    }
    auto [catalogue, name] = FindCatalogue(inLanguage, inFolderUTF8);
    if (!catalogue) {
        UseLanguage(kDefaultLanguage, kDefaultLanguage, nullptr);
        return -1;
    }
    UseLanguage(name, inLanguage, std::move(catalogue));
    return 0;
}

int Localizer::AddTexts(std::string_view inFolderUTF8)
{
    KIO_HOST_CALL("kiocore::config::Localizer::AddTexts", inFolderUTF8);
    Language& language = TheLanguage();
    std::string asked;
    {
        std::lock_guard lock(language.lock);
        if (!language.catalogues) {
            return 0;
        }
        asked = language.asked;
    }
    const auto catalogue = FindCatalogue(asked, inFolderUTF8).first;
    if (!catalogue) {
        return -1;
    }
    std::lock_guard lock(language.lock);
    if (language.catalogues && language.asked == asked) {
        Catalogues more = *language.catalogues;
        more.push_back(catalogue);
        language.catalogues = std::make_shared<const Catalogues>(std::move(more));
    }
    return 0;
}

std::string Localizer::GetLanguage()
{
    KIO_HOST_CALL("kiocore::config::Localizer::GetLanguage");
    Language& language = TheLanguage();
    std::lock_guard lock(language.lock);
    return language.name;
}

utility::UTF16String Locale::ApplicationLanguage()
{
    KIO_HOST_CALL("kiocore::config::Locale::ApplicationLanguage");
    Language& language = TheLanguage();
    std::lock_guard lock(language.lock);
    return language.locale;
}

} // namespace kiocore::config
