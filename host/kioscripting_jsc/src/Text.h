#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <string>
#include <string_view>

namespace kioscripting_jsc {

/// An engine's string, of UTF-8 or owned as it comes.
///
/// Threading: one thread.
class ScText {
public:
    explicit ScText(std::string_view inTextUTF8);
    /// Takes over what a function of the engine returned; null is empty.
    static ScText Own(JSStringRef inText) { return ScText(inText, 0); }
    ~ScText();
    ScText(const ScText&) = delete;
    ScText& operator=(const ScText&) = delete;

    JSStringRef Get() const { return mText; }
    /// Lone halves of surrogate pairs become U+FFFD.
    std::string UTF8() const;

private:
    ScText(JSStringRef inText, int) : mText(inText) {}
    JSStringRef mText;
};

JSValueRef MakeText(JSContextRef inContext, std::string_view inTextUTF8);
/// Of a value that is a string.
std::string TextOf(JSContextRef inContext, JSValueRef inText);

} // namespace kioscripting_jsc
