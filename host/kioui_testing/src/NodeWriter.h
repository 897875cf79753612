#pragma once

#include <kiocore/utility/UTF16String.h>

#include <string>
#include <string_view>
#include <vector>

namespace kioui::testing {

/// Writes objects with their members in the order they come, unlike JSON objects in memory, which sort them.
class NodeWriter {
public:
    void BeginObject();
    void EndObject();
    /// In an object, under a name.
    void BeginArray(std::string_view inName);
    void EndArray();
    /// In an array.
    void Element(kiocore::utility::UTF16View inText);

    void Member(std::string_view inName, kiocore::utility::UTF16View inText);
    void Member(std::string_view inName, std::string_view inTextUTF8);
    void Member(std::string_view inName, double inNumber);
    /// On one line.
    void Member(std::string_view inName, const std::vector<double>& inNumbers);
    void Member(std::string_view inName, const std::vector<const char*>& inWords);

    const std::string& Text() const { return mText; }

private:
    void BeginElement();
    void BeginMember(std::string_view inName);
    void Begin(char inBracket);
    void End(char inBracket);

    std::string mText;
    std::size_t mDepth = 0;
    bool mIsFirst = true; // in what it is within
};

} // namespace kioui::testing
