#include <kiocore/serialization/JSON.h>

#include "JSONText.h"

// Compiled into this file only, and hidden, also what it marks as visible: a program that compiles in its own
// must not meet this one.
#include <boost/config.hpp>
#undef BOOST_SYMBOL_VISIBLE
#define BOOST_SYMBOL_VISIBLE
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/src.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace kiocore::serialization {
namespace {

/// Never in UTF-8, so it can fill the place of what a replacement leaves free.
constexpr char kFiller = '\xFF';

/// Builds the value from what the parser sees. Refuses by setting the error code, after mProblem if the
/// parser's own reason does not say it.
class Builder {
public:
    using error_code = boost::json::error_code;
    using string_view = boost::json::string_view;
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    bool on_document_begin(error_code&) { return true; }
    bool on_document_end(error_code&) { return true; }
    bool on_object_begin(error_code&) { return Begin(JSONObject()); }
    bool on_object_end(std::size_t, error_code&) { return End(); }
    bool on_array_begin(error_code&) { return Begin(JSONArray()); }
    bool on_array_end(std::size_t, error_code&) { return End(); }
    bool on_key_part(string_view inText, std::size_t, error_code&) { return Part(inText); }
    bool on_key(string_view inText, std::size_t, error_code& outError)
    {
        Part(inText);
        Level& level = mLevels.back();
        level.name = TakeText();
        if (boost::any_cast<JSONObject>(&level.container)->contains(level.name)) {
            return Refuse("the name " + Quoted(level.name) + " stands twice in its object", outError);
        }
        return true;
    }
    bool on_string_part(string_view inText, std::size_t, error_code&) { return Part(inText); }
    bool on_string(string_view inText, std::size_t, error_code&)
    {
        Part(inText);
        return Add(TakeText());
    }
    bool on_number_part(string_view inText, error_code&) { return Part(inText); }
    bool on_int64(std::int64_t inNumber, string_view, error_code&)
    {
        mText.clear();
        return Add(inNumber);
    }
    bool on_uint64(std::uint64_t inNumber, string_view, error_code&)
    {
        mText.clear();
        return Add(inNumber);
    }
    /// @param inRough  not the nearest number in every case; good enough to tell too large from too small.
    bool on_double(double inRough, string_view inText, error_code& outError)
    {
        Part(inText);
        const std::string form = TakeText();
        double number = 0;
        const auto result = std::from_chars(form.data(), form.data() + form.size(), number);
        if (result.ec == std::errc::result_out_of_range) {
            if (!(std::abs(inRough) < 1)) {
                return Refuse("the number " + Quoted(form) + " is beyond what a double holds", outError);
            }
            number = form.starts_with('-') ? -0.0 : 0.0;
        }
        return Add(number);
    }
    bool on_bool(bool inValue, error_code&) { return Add(inValue); }
    bool on_null(error_code&) { return Add(JSON()); }
    bool on_comment_part(string_view, error_code&) { return true; }
    bool on_comment(string_view, error_code&) { return true; }

    JSON mResult;
    std::string mProblem;

private:
    struct Level {
        JSON container;   ///< JSONObject or JSONArray
        std::string name; ///< of the member that comes next
    };

    bool Part(string_view inText)
    {
        mText.append(inText.data(), inText.size());
        return true;
    }
    std::string TakeText()
    {
        std::string text;
        text.swap(mText);
        std::erase(text, kFiller);
        return text;
    }
    bool Refuse(std::string inProblem, error_code& outError)
    {
        mProblem = std::move(inProblem);
        outError = boost::json::error::input_error;
        return false;
    }
    template <typename Container>
    bool Begin(Container inContainer)
    {
        mLevels.push_back({std::move(inContainer), {}});
        return true;
    }
    bool End()
    {
        JSON done;
        done.swap(mLevels.back().container);
        mLevels.pop_back();
        return Add(std::move(done));
    }
    bool Add(JSON inValue)
    {
        if (mLevels.empty()) {
            mResult.swap(inValue);
        } else if (auto* array = boost::any_cast<JSONArray>(&mLevels.back().container)) {
            array->push_back(std::move(inValue));
        } else {
            boost::any_cast<JSONObject>(&mLevels.back().container)
                ->emplace(std::move(mLevels.back().name), std::move(inValue));
        }
        return true;
    }

    std::vector<Level> mLevels;
    std::string mText; // of the token in hand
};

[[noreturn]] void Fail(std::string_view inText, std::size_t inAt, const std::string& inProblem)
{
    const std::string_view before = inText.substr(0, inAt);
    const auto isNoContinuation = [](char inByte) {
        return (static_cast<unsigned char>(inByte) & 0xC0) != 0x80;
    };
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0
    throw not_well_formed_exception(
        1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')),
        1 + static_cast<std::size_t>(std::count_if(before.begin() + static_cast<std::ptrdiff_t>(lineStart),
                                                   before.end(), isNoContinuation)),
        inProblem);
}

/// What could have stood behind the text up to some place, as far as its last character tells.
std::string ExpectedAfter(std::string_view inBefore)
{
    const std::size_t last = inBefore.find_last_not_of(" \t\r\n");
    switch (last == std::string_view::npos ? '\0' : inBefore[last]) {
    case '\0':
    case ':':
        return "a value";
    case '{':
        return "a name in quotes or }";
    case '[':
        return "a value or ]";
    case ',':
        return "a value or a name in quotes";
    case '}':
    case ']':
    case '"':
        return "what may follow";
    default:
        return "the rest of a value, or what may follow it";
    }
}

std::string ProblemOf(const boost::json::error_code& inError, std::string_view inText, std::size_t inAt)
{
    using boost::json::error;
    const std::string_view rest = inText.substr(inAt);
    const std::string found = rest.empty() ? "the end of the text" : Quoted(rest.substr(0, rest.find('\n')));
    if (inError == error::syntax && !rest.empty() && static_cast<unsigned char>(rest[0]) < 0x20) {
        return "found the control character " + Quoted(rest.substr(0, 1)) + ", expected it escaped";
    }
    if (inError == error::extra_data) {
        return "found " + found + " behind the end of the value, expected nothing";
    }
    if (inError == error::too_deep) {
        return "found more than " + std::to_string(kMaxJSONDepth) + " levels of arrays and objects";
    }
    if (inError == error::exponent_overflow) {
        return "found an exponent that no number of ours has";
    }
    if (inError == error::syntax || inError == error::incomplete) {
        return "found " + found + ", expected " + ExpectedAfter(inText.substr(0, inAt));
    }
    return "found " + found + ": " + inError.message();
}

bool IsHexNumber(std::string_view inText, unsigned& outNumber)
{
    const char* end = inText.data() + inText.size();
    const auto result = std::from_chars(inText.data(), end, outNumber, 16);
    return inText.size() == 4 && result.ec == std::errc() && result.ptr == end;
}

/// The surrogate whose escape ("\udc80") stands at a place, or 0.
unsigned EscapedSurrogate(std::string_view inText, std::size_t inAt)
{
    unsigned unit = 0;
    const bool isEscape = inText.substr(inAt, 2) == "\\u" && IsHexNumber(inText.substr(inAt + 2, 4), unit);
    return isEscape && unit >= 0xD800 && unit < 0xE000 ? unit : 0;
}

/// The parser takes escaped surrogates in pairs only, but a path may hold a lone one. Puts the three-byte
/// form of each lone one in the place of its escape; the text keeps its length, so that places stay right.
/// @return false, outText untouched, when there is none.
bool ReplaceLoneSurrogates(std::string_view inText, std::string& outText)
{
    std::string replaced;
    for (std::size_t at = inText.find('\\'); at != std::string_view::npos; at = inText.find('\\', at)) {
        const unsigned unit = EscapedSurrogate(inText, at);
        if (!unit) {
            at += 2; // the escaped character may be a backslash itself
            continue;
        }
        const unsigned next = unit < 0xDC00 && inText.size() - at > 6 ? EscapedSurrogate(inText, at + 6) : 0;
        if (next >= 0xDC00) {
            at += 12;
            continue;
        }
        if (replaced.empty()) {
            replaced = inText;
        }
        const char bytes[] = {'\xED',
                              static_cast<char>(0x80 | ((unit >> 6) & 0x3F)),
                              static_cast<char>(0x80 | (unit & 0x3F)),
                              kFiller,
                              kFiller,
                              kFiller};
        replaced.replace(at, sizeof(bytes), bytes, sizeof(bytes));
        at += sizeof(bytes);
    }
    if (replaced.empty()) {
        return false;
    }
    outText = std::move(replaced);
    return true;
}

} // namespace

JSON GetJSONFromUTF8String(std::string_view inText)
{
    if (inText.starts_with("\xEF\xBB\xBF")) {
        Fail(inText, 0, "found a byte order mark, expected a value");
    }
    if (const std::size_t bad = FindBadUTF8(inText, Surrogates::kRefuse); bad != std::string_view::npos) {
        char byte[8];
        std::snprintf(byte, sizeof(byte), "\\x%02x", unsigned(static_cast<unsigned char>(inText[bad])));
        Fail(inText, bad, std::string("found the byte ") + byte + ", expected UTF-8");
    }
    std::string replaced;
    const std::string_view source = ReplaceLoneSurrogates(inText, replaced) ? replaced : inText;

    boost::json::parse_options options;
    options.max_depth = kMaxJSONDepth;
    options.allow_invalid_utf8 = true; // all that is left of that kind are our own replacements
    boost::json::basic_parser<Builder> parser(options);
    boost::json::error_code error;
    const std::size_t consumed = parser.write_some(false, source.data(), source.size(), error);
    if (!error && consumed < source.size()) {
        error = boost::json::error::extra_data;
    }
    if (error) {
        const std::string& problem = parser.handler().mProblem;
        Fail(inText, consumed, problem.empty() ? ProblemOf(error, inText, consumed) : problem);
    }
    JSON result;
    result.swap(parser.handler().mResult);
    return result;
}

} // namespace kiocore::serialization
