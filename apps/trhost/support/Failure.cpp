#include "Failure.h"

#include "KeptText.h"

#include <kiocore/config/Localizer.h>

#include <utility>

namespace trhost {

UTF16String Text(std::string_view inLocalisedText, std::initializer_list<UTF16String> inValues)
{
    using kiocore::config::Localizer;
    return Localizer::Format(Localizer::GetText(inLocalisedText), std::vector<UTF16String>(inValues));
}

UTF16String Told(const std::exception& inError)
{
    return kiocore::utility::ToUTF16(ToldText(inError.what()));
}

Failure::Failure(ExitStatus inStatus, UTF16String inText)
    : mStatus(inStatus), mText(std::move(inText)), mUTF8(kiocore::utility::ToUTF8(mText))
{}

} // namespace trhost
