#include "UiScript.h"

#include "UiScriptWords.h"

#include "../../support/LocalText.h"

#include <kioui_testing/UserEvents.h>

#include <charconv>
#include <utility>

namespace trhost::ui {
namespace {

using Aspect = UiStatement::Aspect;
using Kind = UiTarget::Kind;
using Verb = UiStatement::Verb;

constexpr std::pair<std::string_view, Verb> kVerbs[] = {
    {"click", Verb::kClick},
    {"doubleclick", Verb::kDoubleClick},
    {"press", Verb::kPress},
    {"release", Verb::kRelease},
    {"move", Verb::kMove},
    {"drag", Verb::kDrag},
    {"wheel", Verb::kWheel},
    {"key", Verb::kKey},
    {"type", Verb::kType},
    {"expect", Verb::kExpect},
    {"await", Verb::kAwait},
    {"dump", Verb::kDump},
    {"screenshot", Verb::kScreenshot},
    {"end", Verb::kEnd},
};

constexpr std::pair<std::string_view, Aspect> kAspects[] = {
    {"text", Aspect::kText},       {"name", Aspect::kName},   {"rows", Aspect::kRows},
    {"columns", Aspect::kColumns}, {"width", Aspect::kWidth}, {"state", Aspect::kState},
};

constexpr struct {
    std::string_view word;
    const char* state;
    bool holds;
} kStateWords[] = {
    {"visible", "visible", true},      {"hidden", "visible", false},    {"enabled", "enabled", true},
    {"disabled", "enabled", false},    {"checked", "checked", true},    {"unchecked", "checked", false},
    {"focused", "focused", true},      {"unfocused", "focused", false}, {"selected", "selected", true},
    {"unselected", "selected", false}, {"default", "default", true},    {"unknown", "unknown", true},
    {"known", "unknown", false},
};

/// The words of a table, as they stand in messages.
template <typename Table>
std::string AllWordsOf(const Table& inTable)
{
    std::string words;
    for (const auto& entry : inTable) {
        const auto& [word, value] = entry;
        words += (words.empty() ? "" : ", ") + std::string(word);
    }
    return words;
}

std::string AllStateWords()
{
    std::string words;
    for (const auto& entry : kStateWords) {
        words += (words.empty() ? "" : ", ") + std::string(entry.word);
    }
    return words;
}

template <typename Number>
std::optional<Number> ToNumber(std::string_view inText)
{
    Number number{};
    const auto [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), number);
    if (error != std::errc() || end != inText.data() + inText.size() || inText.empty()) {
        return std::nullopt;
    }
    return number;
}

/// Reads the words of one line.
class LineReader {
public:
    explicit LineReader(std::vector<UiWord> inWords) : mWords(std::move(inWords)) {}

    UiStatement Read()
    {
        UiStatement statement;
        statement.verb = ReadVerb();
        ReadRest(statement);
        if (mAt < mWords.size()) {
            throw BadUiLine{LocalText("$$$/Halcyon/TrHost/UiScript/TooMuch=found @0, expected nothing more",
                                      {Shown(mWords[mAt])})};
        }
        return statement;
    }

private:
    static std::string Shown(const UiWord& inWord)
    {
        return inWord.isQuoted ? '"' + inWord.text + '"' : inWord.text;
    }
    [[noreturn]] void Refuse(const std::string& inExpected)
    {
        if (mAt < mWords.size()) {
            throw BadUiLine{LocalText("$$$/Halcyon/TrHost/UiScript/Unexpected=found @0, expected @1",
                                      {Shown(mWords[mAt]), inExpected})};
        }
        throw BadUiLine{LocalText(
            "$$$/Halcyon/TrHost/UiScript/Missing=found the end of the line, expected @0", {inExpected})};
    }
    const UiWord* Peek() const { return mAt < mWords.size() ? &mWords[mAt] : nullptr; }
    bool Skip(std::string_view inWord)
    {
        const UiWord* word = Peek();
        const bool isThere = word != nullptr && !word->isQuoted && word->text == inWord;
        mAt += isThere ? 1 : 0;
        return isThere;
    }
    std::string Text(const std::string& inExpected)
    {
        if (Peek() == nullptr) {
            Refuse(inExpected);
        }
        return mWords[mAt++].text;
    }
    std::string Quoted()
    {
        const std::string expected =
            LocalText("$$$/Halcyon/TrHost/UiScript/QuotedText=a text in quotation marks");
        if (Peek() == nullptr || !Peek()->isQuoted) {
            Refuse(expected);
        }
        return Text(expected);
    }
    template <typename Number>
    Number ReadNumber(Number inLowest)
    {
        const UiWord* word = Peek();
        const auto number = word != nullptr ? ToNumber<Number>(word->text) : std::nullopt;
        if (!number || *number < inLowest || word->isQuoted) {
            Refuse(LocalText("$$$/Halcyon/TrHost/UiScript/WholeNumber=a whole number, at least @0",
                             {std::to_string(inLowest)}));
        }
        ++mAt;
        return *number;
    }

    Verb ReadVerb()
    {
        const UiWord* word = Peek();
        for (const auto& [name, verb] : kVerbs) {
            if (word != nullptr && !word->isQuoted && word->text == name) {
                ++mAt;
                return verb;
            }
        }
        Refuse(AllWordsOf(kVerbs));
    }

    UiColumn ReadColumn()
    {
        UiColumn column;
        const UiWord* word = Peek();
        const std::string expected =
            LocalText("$$$/Halcyon/TrHost/UiScript/Column=the title of a column, or # and its number");
        if (word != nullptr && !word->isQuoted && word->text.starts_with("#")) {
            column.id = ToNumber<std::uint32_t>(std::string_view(word->text).substr(1));
            if (!column.id) {
                Refuse(expected);
            }
            ++mAt;
        } else {
            column.title = Text(expected);
        }
        return column;
    }

    void ReadRow(UiTarget& outTarget)
    {
        outTarget.kind = Kind::kRow;
        if (Peek() != nullptr && Peek()->isQuoted) {
            outTarget.rowText = Quoted();
        } else {
            outTarget.rowNumber = ReadNumber<std::uint32_t>(1);
        }
        if (Skip("column")) {
            outTarget.kind = Kind::kCell;
            outTarget.column = ReadColumn();
        }
    }

    UiTarget ReadTarget()
    {
        UiTarget target;
        if (!(Peek() != nullptr && !Peek()->isQuoted && Peek()->text == "title")) {
            target.node = Text(LocalText("$$$/Halcyon/TrHost/UiScript/Node=the ID of a node"));
        }
        if (Skip("title")) {
            target.kind = Kind::kTitle;
            target.column = ReadColumn();
        } else if (Skip("row")) {
            ReadRow(target);
        }
        return target;
    }

    UiTarget ReadPlace()
    {
        UiTarget target = ReadTarget();
        if (Skip("at")) {
            const std::string expected = LocalText("$$$/Halcyon/TrHost/UiScript/Offset=X,Y");
            const UiWord* word = Peek();
            const std::size_t comma = word != nullptr ? word->text.find(',') : std::string::npos;
            if (comma == std::string::npos) {
                Refuse(expected);
            }
            const auto x = ToNumber<int>(std::string_view(word->text).substr(0, comma));
            const auto y = ToNumber<int>(std::string_view(word->text).substr(comma + 1));
            if (!x || !y) {
                Refuse(expected);
            }
            ++mAt;
            target.at = kioui::PointT<float>{float(*x), float(*y)};
        }
        return target;
    }

    void ReadRest(UiStatement& ioStatement)
    {
        switch (ioStatement.verb) {
        case Verb::kClick:
        case Verb::kDoubleClick:
        case Verb::kPress:
        case Verb::kRelease:
        case Verb::kMove:
            ioStatement.target = ReadPlace();
            return;
        case Verb::kDrag:
            ioStatement.target = ReadPlace();
            if (!Skip("to")) {
                Refuse("to");
            }
            ioStatement.to = ReadPlace();
            return;
        case Verb::kWheel:
            ioStatement.target = ReadPlace();
            ioStatement.number = ReadNumber<std::int64_t>(-1000);
            return;
        case Verb::kKey:
            ReadKey(ioStatement);
            return;
        case Verb::kType:
            ioStatement.text = Quoted();
            return;
        case Verb::kExpect:
        case Verb::kAwait:
            ReadExpectation(ioStatement);
            return;
        case Verb::kDump:
            ioStatement.text = Peek() != nullptr ? Text({}) : std::string();
            return;
        case Verb::kScreenshot:
            ioStatement.text = Text(LocalText("$$$/Halcyon/TrHost/UiScript/File=the name of a file"));
            return;
        case Verb::kEnd:
            return;
        }
    }

    void ReadKey(UiStatement& ioStatement)
    {
        const std::string expected = LocalText("$$$/Halcyon/TrHost/UiScript/Key=a key, as in Tab, Shift+Tab, "
                                               "Space, Return, Escape, Down, Ctrl+A");
        if (Peek() == nullptr || !kioui::testing::IsKeyName(Peek()->text)) {
            Refuse(expected);
        }
        ioStatement.text = Text(expected);
    }

    void ReadExpectation(UiStatement& ioStatement)
    {
        if (Skip("focus") || Skip("window")) {
            ioStatement.aspect = mWords[mAt - 1].text == "focus" ? Aspect::kFocus : Aspect::kWindow;
            ioStatement.text = Text(LocalText("$$$/Halcyon/TrHost/UiScript/Node=the ID of a node"));
            return;
        }
        ioStatement.target = ReadTarget();
        const UiWord* word = Peek();
        for (const auto& [name, aspect] : kAspects) {
            if (word != nullptr && !word->isQuoted && word->text == name) {
                ++mAt;
                ioStatement.aspect = aspect;
                ReadExpected(ioStatement);
                return;
            }
        }
        Refuse(AllWordsOf(kAspects));
    }

    void ReadExpected(UiStatement& ioStatement)
    {
        switch (ioStatement.aspect) {
        case Aspect::kText:
        case Aspect::kName:
        case Aspect::kFocus:
        case Aspect::kWindow:
            ioStatement.text = Quoted();
            return;
        case Aspect::kRows:
        case Aspect::kWidth:
            ioStatement.number = ReadNumber<std::int64_t>(0);
            return;
        case Aspect::kColumns:
            do {
                ioStatement.words.push_back(Quoted());
            } while (Peek() != nullptr);
            return;
        case Aspect::kState:
            do {
                if (Peek() == nullptr || !FindStateWord(Peek()->text)) {
                    Refuse(AllStateWords());
                }
                ioStatement.words.push_back(Text({}));
            } while (Peek() != nullptr);
            return;
        }
    }

    const std::vector<UiWord> mWords;
    std::size_t mAt = 0;
};

} // namespace

std::string UiColumn::AsText() const
{
    return id ? "#" + std::to_string(*id) : '"' + title + '"';
}

std::string UiTarget::AsText() const
{
    std::string text = node;
    if (kind == Kind::kTitle) {
        return text + (text.empty() ? "" : " ") + "title " + column.AsText();
    }
    if (kind != Kind::kNode) {
        text += rowNumber > 0 ? " row " + std::to_string(rowNumber) : " row \"" + rowText + '"';
    }
    return kind == Kind::kCell ? text + " column " + column.AsText() : text;
}

UiScript ParseUiScript(std::string_view inTextUTF8)
{
    UiScript script;
    int line = 0;
    while (!inTextUTF8.empty()) {
        const std::size_t end = std::min(inTextUTF8.find('\n'), inTextUTF8.size());
        ++line;
        try {
            std::vector<UiWord> words = SplitUiLine(inTextUTF8.substr(0, end));
            if (!words.empty()) {
                script.statements.push_back(LineReader(std::move(words)).Read());
                script.statements.back().line = line;
            }
        } catch (const BadUiLine& bad) {
            script.errors.push_back({line, bad.text});
        }
        inTextUTF8.remove_prefix(std::min(end + 1, inTextUTF8.size()));
    }
    return script;
}

std::optional<UiStateWord> FindStateWord(std::string_view inWord)
{
    for (const auto& entry : kStateWords) {
        if (entry.word == inWord) {
            return UiStateWord{entry.state, entry.holds};
        }
    }
    return std::nullopt;
}

} // namespace trhost::ui
