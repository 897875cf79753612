#include "EffectSearch.h"

#include <algorithm>

namespace TR {
namespace {

constexpr char16_t Fold(char16_t inUnit)
{
    return inUnit >= 0x41 && inUnit <= 0x5A ? char16_t(inUnit + 0x20) : inUnit;
}

} // namespace

EffectSearch::EffectSearch(kiocore::UTF16String inText) : mFolded(std::move(inText))
{
    std::transform(mFolded.begin(), mFolded.end(), mFolded.begin(), Fold);
}

bool EffectSearch::OccursIn(const kiocore::UTF16String& inText) const
{
    return std::search(inText.begin(), inText.end(), mFolded.begin(), mFolded.end(),
                       [](char16_t inUnit, char16_t inFolded) { return Fold(inUnit) == inFolded; }) !=
           inText.end();
}

bool EffectSearch::Finds(const EffectSettings& inSettings) const
{
    if (mFolded.empty() || OccursIn(inSettings.name) || OccursIn(inSettings.filePath)) {
        return true;
    }
    return std::any_of(inSettings.attributeValues.begin(), inSettings.attributeValues.end(),
                       [this](const AttributeValue& inValue) {
                           const auto* text = boost::get<kiocore::UTF16String>(&inValue);
                           return text != nullptr && OccursIn(*text);
                       });
}

} // namespace TR
