#include "Text.h"

#include <kiocore/utility/UTF16String.h>

#include <algorithm>

namespace kioscripting_jsc {
namespace {

constexpr std::size_t kShortLength = 256;

/// Without a zero, which would end it for the engine.
bool IsPlain(std::string_view inText)
{
    return std::all_of(inText.begin(), inText.end(), [](char inUnit) { return inUnit > 0; });
}

JSStringRef Make(std::string_view inText)
{
    if (IsPlain(inText)) {
        if (inText.size() < kShortLength) {
            char terminated[kShortLength];
            *std::copy(inText.begin(), inText.end(), terminated) = '\0';
            return JSStringCreateWithUTF8CString(terminated);
        }
        return JSStringCreateWithUTF8CString(std::string(inText).c_str());
    }
    const kiocore::UTF16String text = kiocore::utility::ToUTF16(inText);
    return JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.data()), text.size());
}

} // namespace

ScText::ScText(std::string_view inTextUTF8) : mText(Make(inTextUTF8)) {}

ScText::~ScText()
{
    if (mText) {
        JSStringRelease(mText);
    }
}

std::string ScText::UTF8() const
{
    if (!mText) {
        return {};
    }
    static_assert(sizeof(JSChar) == sizeof(char16_t));
    return kiocore::utility::ToUTF8(kiocore::utility::UTF16View(
        reinterpret_cast<const char16_t*>(JSStringGetCharactersPtr(mText)), JSStringGetLength(mText)));
}

JSValueRef MakeText(JSContextRef inContext, std::string_view inTextUTF8)
{
    return JSValueMakeString(inContext, ScText(inTextUTF8).Get());
}

std::string TextOf(JSContextRef inContext, JSValueRef inText)
{
    return ScText::Own(JSValueToStringCopy(inContext, inText, nullptr)).UTF8();
}

} // namespace kioscripting_jsc
