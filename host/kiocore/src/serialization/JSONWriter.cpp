#include <kiocore/serialization/JSON.h>

#include "JSONText.h"

#include <charconv>
#include <cmath>
#include <concepts>

namespace kiocore::serialization {
namespace {

constexpr std::size_t kIndent = 2;

class Writer {
public:
    explicit Writer(bool inPretty) : mPretty(inPretty) {}

    void Write(const JSON& inValue)
    {
        if (inValue.empty()) {
            mText += "null";
        } else if (const auto* text = boost::any_cast<std::string>(&inValue)) {
            WriteText(*text);
        } else if (const auto* object = boost::any_cast<JSONObject>(&inValue)) {
            WriteObject(*object);
        } else if (const auto* array = boost::any_cast<JSONArray>(&inValue)) {
            WriteArray(*array);
        } else if (const auto* value = boost::any_cast<bool>(&inValue)) {
            mText += *value ? "true" : "false";
        } else if (!WriteNumber<std::int64_t, std::uint64_t, double, int, unsigned, long long,
                                unsigned long long, float>(inValue)) {
            throw bad_cast_exception(Describe(inValue), "a type that JSON values have");
        }
    }

    std::string mText;

private:
    template <typename... Types>
    bool WriteNumber(const JSON& inValue)
    {
        return (WriteIf(boost::any_cast<Types>(&inValue)) || ...);
    }

    template <std::integral T>
    bool WriteIf(const T* inNumber)
    {
        if (inNumber) {
            mText += std::to_string(*inNumber);
        }
        return inNumber != nullptr;
    }

    template <std::floating_point T>
    bool WriteIf(const T* inNumber)
    {
        if (!inNumber) {
            return false;
        }
        const double number = *inNumber;
        if (!std::isfinite(number)) {
            throw bad_cast_exception(Describe(number), "a finite number");
        }
        char digits[32]; // the shortest form that reads back as the same number
        const std::string_view form(digits, std::to_chars(digits, digits + sizeof(digits), number).ptr);
        mText += form;
        if (form.find_first_of(".e") == std::string_view::npos) {
            mText += ".0"; // or it would be read as a whole number, and the sign of -0 be lost
        }
        return true;
    }

    void WriteText(const std::string& inText)
    {
        if (const std::size_t bad = FindBadUTF8(inText, Surrogates::kAcceptLone); bad != std::string::npos) {
            throw bad_cast_exception("the text " + Quoted(std::string_view(inText).substr(0, bad)) +
                                         " followed by a byte that is no UTF-8",
                                     "UTF-8");
        }
        mText += '"';
        for (std::size_t i = 0; i < inText.size(); ++i) {
            const auto byte = static_cast<unsigned char>(inText[i]);
            if (byte == '"' || byte == '\\') {
                mText += '\\';
                mText += inText[i];
            } else if (byte < 0x20 || byte == 0x7F) {
                WriteControl(byte);
            } else if (byte == 0xED && static_cast<unsigned char>(inText[i + 1]) >= 0xA0) {
                const auto second = static_cast<unsigned char>(inText[i + 1]);
                const auto third = static_cast<unsigned char>(inText[i + 2]);
                WriteEscape(0xD000u | ((second & 0x3Fu) << 6) | (third & 0x3Fu));
                i += 2;
            } else {
                mText += inText[i];
            }
        }
        mText += '"';
    }

    void WriteControl(unsigned char inByte)
    {
        switch (inByte) {
        case '\b':
            mText += "\\b";
            break;
        case '\f':
            mText += "\\f";
            break;
        case '\n':
            mText += "\\n";
            break;
        case '\r':
            mText += "\\r";
            break;
        case '\t':
            mText += "\\t";
            break;
        default:
            WriteEscape(inByte);
        }
    }

    void WriteEscape(unsigned inUnit)
    {
        constexpr char kHex[] = "0123456789abcdef";
        mText += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) {
            mText += kHex[(inUnit >> shift) & 0xF];
        }
    }

    void WriteObject(const JSONObject& inObject)
    {
        Enter('{');
        bool first = true;
        for (const auto& [name, value] : inObject) {
            Separate(first);
            try {
                WriteText(name);
                mText += mPretty ? ": " : ":";
                Write(value);
            } catch (bad_cast_exception& problem) {
                problem.IsWithinMember(name);
                throw;
            }
        }
        Leave('}', first);
    }

    void WriteArray(const JSONArray& inArray)
    {
        Enter('[');
        bool first = true;
        for (std::size_t i = 0; i < inArray.size(); ++i) {
            Separate(first);
            try {
                Write(inArray[i]);
            } catch (bad_cast_exception& problem) {
                problem.IsWithinElement(i);
                throw;
            }
        }
        Leave(']', first);
    }

    void Enter(char inBracket)
    {
        if (mDepth == kMaxJSONDepth) {
            throw bad_cast_exception("a value within " + std::to_string(kMaxJSONDepth) + " others",
                                     "no more levels than can be read again");
        }
        ++mDepth;
        mText += inBracket;
    }

    void Separate(bool& ioFirst)
    {
        if (!ioFirst) {
            mText += ',';
        }
        ioFirst = false;
        BreakLine();
    }

    void Leave(char inBracket, bool inEmpty)
    {
        --mDepth;
        if (!inEmpty) {
            BreakLine();
        }
        mText += inBracket;
    }

    void BreakLine()
    {
        if (mPretty) {
            mText += '\n';
            mText.append(mDepth * kIndent, ' ');
        }
    }

    const bool mPretty;
    std::size_t mDepth = 0;
};

} // namespace

std::string GetJSONUTF8String(const JSON& inValue, bool inPretty)
{
    Writer writer(inPretty);
    writer.Write(inValue);
    return std::move(writer.mText);
}

} // namespace kiocore::serialization
