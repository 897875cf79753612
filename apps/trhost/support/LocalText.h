#pragma once

#include <kiocore/config/Localizer.h>
#include <kiocore/utility/UTF16String.h>

#include <string>
#include <string_view>
#include <vector>

namespace trhost {

/// A localised text ("$$$/Key=English default") with "@0", "@1", ... replaced by the values, all in UTF-8.
inline std::string LocalText(std::string_view inLocalisedText, const std::vector<std::string>& inValues = {})
{
    using kiocore::config::Localizer;
    std::vector<kiocore::UTF16String> values;
    for (const std::string& value : inValues) {
        values.push_back(kiocore::utility::ToUTF16(value));
    }
    return kiocore::utility::ToUTF8(Localizer::Format(Localizer::GetText(inLocalisedText), values));
}

} // namespace trhost
