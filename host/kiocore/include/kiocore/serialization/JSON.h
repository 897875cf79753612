#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <boost/any.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace kiocore::serialization {

/// A JSON value: empty for null, bool, std::int64_t, std::uint64_t (whole numbers beyond the former), double,
/// std::string (UTF-8), JSONArray or JSONObject. Other integer types and float are understood when writing.
///
/// A text may hold a lone surrogate, as a path has one for each byte that is no UTF-8: in UTF-8 it is its
/// three-byte form, in JSON its escape ("\udcff").
///
/// Threading: plain values.
using JSON = boost::any;
using JSONObject = std::map<std::string, JSON>;
using JSONArray = std::vector<JSON>;

/// How deep arrays and objects may lie within each other, reading and writing.
inline constexpr std::size_t kMaxJSONDepth = 512;

/// The text is no JSON. what() is "JSON not well-formed: line 3, column 7: " and what was found there.
class KIO_EXPORT not_well_formed_exception : public std::runtime_error {
public:
    /// @param inLine, inColumn  from 1; the column counts characters.
    not_well_formed_exception(std::size_t inLine, std::size_t inColumn, const std::string& inProblem);
    ~not_well_formed_exception() override;

    std::size_t Line() const noexcept { return mLine; }
    std::size_t Column() const noexcept { return mColumn; }

private:
    std::size_t mLine;
    std::size_t mColumn;
};

/// A value is of another type than was asked for, or out of the range of what it is read into. what() names
/// the place in the document, what was found and what was expected:
/// "JSON value $[2].InPoint: found the text "soon", expected a whole number".
class KIO_EXPORT bad_cast_exception : public std::bad_cast {
public:
    bad_cast_exception(std::string inFound, std::string inExpected);
    ~bad_cast_exception() override;
    const char* what() const noexcept override { return mText.c_str(); }

    /// Told by whoever took the value out of an object or array, innermost first.
    void IsWithinMember(std::string_view inName);
    void IsWithinElement(std::size_t inIndex);

private:
    void Compose();

    std::string mPlace;
    std::string mFound;
    std::string mExpected;
    std::string mText;
};

/// Reads strictly: one value with nothing but white space around it, in UTF-8, without a byte order mark, no
/// name twice in an object, no number that is beyond double, no more than kMaxJSONDepth levels. Whole numbers
/// of 64 bits are exact, doubles the nearest to what is written ("-0.0" and subnormals included).
/// @throws not_well_formed_exception.
KIO_EXPORT JSON GetJSONFromUTF8String(std::string_view inText);

/// Writes a value so that reading gives the same again: doubles always with a point or exponent. Names in
/// order of their bytes. All control characters are escaped.
/// @param inPretty  one member or element a line, indented by two spaces, no line feed at the end; else all
/// on
///     one line without spaces.
/// @throws bad_cast_exception for what JSON has no form for: a value of another type, a number that is not
///     finite, a text that is no UTF-8, too many levels.
KIO_EXPORT std::string GetJSONUTF8String(const JSON& inValue, bool inPretty);

/// The value as what it is expected to be. Each throws bad_cast_exception when it is something else. A whole
/// number may be written with a point ("3.0"), as long as a double counts that far exactly (2^53).
KIO_EXPORT bool AsBool(const JSON& inValue);
KIO_EXPORT std::int64_t AsInt64(const JSON& inValue, std::int64_t inLowest, std::int64_t inHighest);
KIO_EXPORT std::uint64_t AsUInt64(const JSON& inValue, std::uint64_t inHighest);
KIO_EXPORT double AsDouble(const JSON& inValue);
KIO_EXPORT const std::string& AsText(const JSON& inValue);
KIO_EXPORT const JSONArray& AsArray(const JSON& inValue);
KIO_EXPORT const JSONObject& AsObject(const JSON& inValue);
/// As it stands in messages: "the text "abc"", "the number 1.5", "an object".
KIO_EXPORT std::string Describe(const JSON& inValue);

/// Between the host's texts and those of JSON values; every text comes back as it was, lone surrogates too.
KIO_EXPORT std::string TextFromUTF16(utility::UTF16View inText);
KIO_EXPORT utility::UTF16String TextToUTF16(std::string_view inText);

} // namespace kiocore::serialization
