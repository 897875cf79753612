#include "DeviceScript.h"

#include "MediaTime.h"

#include "../support/Failure.h"

#include <kiocore/filesupport/NativePath.h>

#include <charconv>
#include <map>

namespace trhost::devices {
namespace {

using Verb = ScriptStatement::Verb;
using What = ScriptCondition::What;

constexpr std::chrono::seconds kAwaitLimit{10};

UTF16String Shown(std::string_view inText)
{
    return kiocore::filesupport::FromNative(inText);
}

/// Ends the parsing of a line.
struct BadLine {
    UTF16String text;
};

/// Splits at blanks; "..." keeps blanks together, # begins a comment.
std::vector<std::string> SplitWords(std::string_view inLine)
{
    std::vector<std::string> words;
    bool inWord = false;
    bool inQuotes = false;
    for (const char letter : inLine) {
        if (inQuotes) {
            if (letter == '"') {
                inQuotes = false;
            } else {
                words.back() += letter;
            }
            continue;
        }
        if (letter == '#') {
            break;
        }
        if (letter == ' ' || letter == '\t' || letter == '\r') {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (letter == '"') {
            inQuotes = true;
        } else {
            words.back() += letter;
        }
    }
    if (inQuotes) {
        throw BadLine{Text("$$$/Halcyon/TrHost/Script/OpenQuote=a quotation mark is not closed")};
    }
    return words;
}

class Parser {
public:
    void TakeLine(int inNumber, std::string_view inLine)
    {
        try {
            mWords = SplitWords(inLine);
            if (!mWords.empty()) {
                mAt = 0;
                ScriptStatement statement = Statement();
                statement.line = inNumber;
                if (mAt < mWords.size()) {
                    throw BadLine{
                        Text("$$$/Halcyon/TrHost/Script/TooMuch=@0 is too much here", {Shown(mWords[mAt])})};
                }
                mScript.statements.push_back(std::move(statement));
            }
        } catch (const BadLine& bad) {
            mScript.errors.push_back({inNumber, bad.text});
        }
    }

    DeviceScript Take() { return std::move(mScript); }

private:
    enum class DeviceKind { kPlayer, kRecorder, kGone };

    ScriptStatement Statement()
    {
        static const std::map<std::string_view, Verb> kVerbs = {
            {"player", Verb::kPlayer},   {"recorder", Verb::kRecorder},     {"activate", Verb::kActivate},
            {"open", Verb::kActivate},   {"record", Verb::kRecord},         {"stop", Verb::kStop},
            {"reset", Verb::kReset},     {"deactivate", Verb::kDeactivate}, {"hold", Verb::kHold},
            {"release", Verb::kRelease}, {"destroy", Verb::kDestroy},       {"wait", Verb::kWait},
            {"expect", Verb::kExpect},   {"await", Verb::kAwait},
        };
        const std::string word = Next();
        const auto verb = kVerbs.find(word);
        if (verb == kVerbs.end()) {
            throw BadLine{Text(
                "$$$/Halcyon/TrHost/Script/NoVerb=@0 is no command; expected player, recorder, activate, "
                "open, record, stop, deactivate, reset, hold, release, destroy, wait, expect or await",
                {Shown(word)})};
        }
        ScriptStatement statement;
        statement.verb = verb->second;
        switch (statement.verb) {
        case Verb::kPlayer:
        case Verb::kRecorder:
            Device(statement);
            break;
        case Verb::kActivate:
            statement.name = KnownName();
            Options(statement, {"priority", "key"});
            break;
        case Verb::kRecord:
        case Verb::kStop:
            statement.name = KnownName(DeviceKind::kRecorder);
            if (statement.verb == Verb::kRecord) {
                Options(statement, {"out"});
            }
            break;
        case Verb::kDeactivate:
        case Verb::kHold:
        case Verb::kRelease:
            statement.name = KnownName();
            break;
        case Verb::kDestroy:
            statement.name = KnownName();
            mDevices[statement.name] = DeviceKind::kGone;
            break;
        case Verb::kReset:
            break;
        case Verb::kWait:
            statement.duration = Duration(Next());
            break;
        case Verb::kExpect:
        case Verb::kAwait:
            Condition(statement);
            break;
        }
        return statement;
    }

    bool AtEnd() const { return mAt >= mWords.size(); }

    std::string Next()
    {
        if (AtEnd()) {
            throw BadLine{Text("$$$/Halcyon/TrHost/Script/TooShort=something is missing behind @0",
                               {Shown(mWords.back())})};
        }
        return mWords[mAt++];
    }

    void Device(ScriptStatement& outStatement)
    {
        const bool isPlayer = outStatement.verb == Verb::kPlayer;
        const std::string name = Next();
        if (name == "nobody" || name == "not" || name.find('=') != name.npos) {
            throw BadLine{
                Text("$$$/Halcyon/TrHost/Script/BadName=@0 cannot be the name of a device", {Shown(name)})};
        }
        if (const auto known = mDevices.find(name);
            known != mDevices.end() && known->second != DeviceKind::kGone) {
            throw BadLine{
                Text("$$$/Halcyon/TrHost/Script/Twice=there is a device @0 already", {Shown(name)})};
        }
        // Known also when the rest of the line is wrong: later lines need not be reported for it.
        mDevices[name] = isPlayer ? DeviceKind::kPlayer : DeviceKind::kRecorder;
        outStatement.name = name;
        if (isPlayer) {
            Options(outStatement, {"media", "device", "sink", "pace", "key", "priority"});
            if (!outStatement.sink.empty() && !outStatement.device.empty()) {
                throw BadLine{Text("$$$/Halcyon/TrHost/Script/DeviceAndSink=a player has either a device or "
                                   "a sink")};
            }
        } else {
            Options(outStatement, {"device", "rate", "channels", "key"});
        }
    }

    void Options(ScriptStatement& outStatement, std::initializer_list<std::string_view> inAllowed)
    {
        while (!AtEnd()) {
            const std::string word = Next();
            const std::size_t equals = word.find('=');
            const std::string option = word.substr(0, equals);
            bool allowed = false;
            UTF16String list;
            for (const std::string_view name : inAllowed) {
                allowed = allowed || name == option;
                list += (list.empty() ? u"" : u", ") + Shown(name) + u"=";
            }
            if (equals == word.npos || !allowed) {
                throw BadLine{Text("$$$/Halcyon/TrHost/Script/NoOption=@0 is not known here; expected @1",
                                   {Shown(word), list})};
            }
            SetOption(outStatement, option, word.substr(equals + 1));
        }
    }

    static void SetOption(ScriptStatement& outStatement, const std::string& inOption,
                          const std::string& inValue)
    {
        const auto bad = [&](const UTF16String& inExpected) {
            return BadLine{Text("$$$/Halcyon/TrHost/Script/BadValue=@0=@1: expected @2",
                                {Shown(inOption), Shown(inValue), inExpected})};
        };
        const auto number = [&](std::uint32_t inLeast, std::uint32_t inMost) {
            std::uint32_t value = 0;
            const char* const end = inValue.data() + inValue.size();
            const auto [stop, error] = std::from_chars(inValue.data(), end, value);
            if (error != std::errc() || stop != end || value < inLeast || value > inMost) {
                throw bad(
                    Text("$$$/Halcyon/TrHost/Script/NumberFromTo=a number from @0 to @1",
                         {kiocore::utility::DecimalText(inLeast), kiocore::utility::DecimalText(inMost)}));
            }
            return value;
        };
        if (inValue.empty()) {
            throw bad(Text("$$$/Halcyon/TrHost/Script/AValue=a value"));
        }
        if (inOption == "key") {
            outStatement.key = number(0, UINT32_MAX);
        } else if (inOption == "priority") {
            outStatement.priority = number(0, UINT32_MAX);
        } else if (inOption == "rate") {
            outStatement.rate = int(number(8000, 384000));
        } else if (inOption == "channels") {
            outStatement.channels = int(number(1, 64));
        } else if (inOption == "pace") {
            if (inValue != "yes" && inValue != "no") {
                throw bad(Text("$$$/Halcyon/TrHost/Script/YesOrNo=yes or no"));
            }
            outStatement.paced = inValue == "yes";
        } else if (inOption == "sink") {
            if (!inValue.starts_with("wav:") || inValue.size() == 4) {
                throw bad(Text("$$$/Halcyon/TrHost/Script/WavFile=wav:FILE"));
            }
            outStatement.sink = inValue;
        } else {
            (inOption == "media"    ? outStatement.media
             : inOption == "device" ? outStatement.device
                                    : outStatement.out) = inValue;
        }
    }

    std::string KnownName(std::optional<DeviceKind> inKind = std::nullopt)
    {
        const std::string name = Next();
        const auto known = mDevices.find(name);
        if (known == mDevices.end()) {
            throw BadLine{Text("$$$/Halcyon/TrHost/Script/Unknown=there is no device @0; a line such as "
                               "\"player @0\" has to come before",
                               {Shown(name)})};
        }
        if (known->second == DeviceKind::kGone) {
            throw BadLine{Text("$$$/Halcyon/TrHost/Script/Gone=@0 was destroyed before", {Shown(name)})};
        }
        if (inKind && known->second != *inKind) {
            throw BadLine{*inKind == DeviceKind::kRecorder
                              ? Text("$$$/Halcyon/TrHost/Script/NoRecorder=@0 is no recorder", {Shown(name)})
                              : Text("$$$/Halcyon/TrHost/Script/NoPlayer=@0 is no player", {Shown(name)})};
        }
        return name;
    }

    static std::chrono::nanoseconds Duration(const std::string& inText)
    {
        const auto duration = ParseMediaTime(inText);
        if (!duration) {
            throw BadLine{Text("$$$/Halcyon/TrHost/Script/BadDuration=@0 is no duration; expected one such "
                               "as 200ms or 1.5s",
                               {Shown(inText)})};
        }
        return *duration;
    }

    void Condition(ScriptStatement& outStatement)
    {
        static const std::map<std::string_view, What> kWhat = {
            {"active", What::kActive},       {"waiting", What::kWaiting},   {"open", What::kOpen},
            {"recording", What::kRecording}, {"finished", What::kFinished}, {"failed", What::kFailed},
        };
        const std::size_t first = mAt;
        ScriptCondition& condition = outStatement.condition;
        std::string word = Next();
        if (word == "not") {
            condition.negated = true;
            word = Next();
        }
        const auto what = kWhat.find(word);
        if (what == kWhat.end()) {
            throw BadLine{
                Text("$$$/Halcyon/TrHost/Script/NoCondition=@0 cannot be expected; expected active, "
                     "waiting, open, recording, finished or failed",
                     {Shown(word)})};
        }
        condition.what = what->second;
        const bool canBeNobody = condition.what == What::kActive || condition.what == What::kWaiting;
        if (canBeNobody && !AtEnd() && mWords[mAt] == "nobody") {
            ++mAt;
        } else {
            condition.name =
                KnownName(condition.what == What::kRecording  ? std::optional(DeviceKind::kRecorder)
                          : condition.what == What::kFinished ? std::optional(DeviceKind::kPlayer)
                                                              : std::nullopt);
            if (condition.what == What::kWaiting && !AtEnd() && mWords[mAt] == "for") {
                ++mAt;
                condition.forName = KnownName();
            }
        }
        for (std::size_t i = first; i < mAt; ++i) {
            outStatement.text += (i > first ? " " : "") + mWords[i];
        }
        outStatement.duration = kAwaitLimit;
        if (outStatement.verb == Verb::kAwait && !AtEnd() && mWords[mAt].starts_with("within=")) {
            outStatement.duration = Duration(Next().substr(7));
        }
    }

    DeviceScript mScript;
    std::map<std::string, DeviceKind> mDevices;
    std::vector<std::string> mWords; // of the line at hand
    std::size_t mAt = 0;
};

} // namespace

DeviceScript ParseDeviceScript(std::string_view inText)
{
    Parser parser;
    for (int number = 1; !inText.empty(); ++number) {
        const std::size_t end = inText.find('\n');
        parser.TakeLine(number, inText.substr(0, end));
        inText.remove_prefix(end == inText.npos ? inText.size() : end + 1);
    }
    return parser.Take();
}

} // namespace trhost::devices
