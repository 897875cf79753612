#include "NodeWriter.h"

#include <kiocore/serialization/JSON.h>

#include <charconv>

namespace kioui::testing {
namespace {

std::string Quoted(std::string_view inTextUTF8)
{
    return kiocore::serialization::GetJSONUTF8String(std::string(inTextUTF8), false);
}

std::string Digits(double inNumber)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof(digits), inNumber).ptr;
    return std::string(digits, end);
}

template <typename T, typename AsText>
std::string OnOneLine(const std::vector<T>& inValues, AsText inAsText)
{
    std::string line = "[";
    for (const T& value : inValues) {
        line += (line.size() > 1 ? ", " : "") + inAsText(value);
    }
    return line + "]";
}

} // namespace

void NodeWriter::BeginElement()
{
    if (mDepth == 0) {
        return;
    }
    mText += mIsFirst ? "\n" : ",\n";
    mText.append(mDepth * 2, ' ');
    mIsFirst = false;
}

void NodeWriter::BeginMember(std::string_view inName)
{
    BeginElement();
    mText += Quoted(inName) + ": ";
}

void NodeWriter::Begin(char inBracket)
{
    mText += inBracket;
    ++mDepth;
    mIsFirst = true;
}

void NodeWriter::End(char inBracket)
{
    --mDepth;
    if (!mIsFirst) {
        mText += '\n';
        mText.append(mDepth * 2, ' ');
    }
    mText += inBracket;
    mIsFirst = false;
}

void NodeWriter::BeginObject()
{
    BeginElement();
    Begin('{');
}

void NodeWriter::EndObject()
{
    End('}');
}

void NodeWriter::BeginArray(std::string_view inName)
{
    BeginMember(inName);
    Begin('[');
}

void NodeWriter::EndArray()
{
    End(']');
}

void NodeWriter::Element(kiocore::utility::UTF16View inText)
{
    BeginElement();
    mText += Quoted(kiocore::serialization::TextFromUTF16(inText));
}

void NodeWriter::Member(std::string_view inName, kiocore::utility::UTF16View inText)
{
    Member(inName, std::string_view(kiocore::serialization::TextFromUTF16(inText)));
}

void NodeWriter::Member(std::string_view inName, std::string_view inTextUTF8)
{
    BeginMember(inName);
    mText += Quoted(inTextUTF8);
}

void NodeWriter::Member(std::string_view inName, double inNumber)
{
    BeginMember(inName);
    mText += Digits(inNumber);
}

void NodeWriter::Member(std::string_view inName, const std::vector<double>& inNumbers)
{
    BeginMember(inName);
    mText += OnOneLine(inNumbers, Digits);
}

void NodeWriter::Member(std::string_view inName, const std::vector<const char*>& inWords)
{
    BeginMember(inName);
    mText += OnOneLine(inWords, Quoted);
}

} // namespace kioui::testing
