#pragma once

#include <kiocore/utility/UTF16String.h>

#include <string_view>

namespace kiocore::config {

/// "de_AT" for "de-AT", "de_AT.UTF-8", "de_at@euro"; "de_DE" for "de". "en_US" for what names no language.
utility::UTF16String LocaleCodeOf(std::string_view inLanguage);

} // namespace kiocore::config
