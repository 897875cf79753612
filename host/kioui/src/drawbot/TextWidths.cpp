#include "TextWidths.h"

#include "ui/NodeImpl.h"

#include <QGlyphRun>
#include <QTextLayout>

#include <cmath>

namespace kioui::drawbot {
namespace {

// Qt breaks longer runs of a script in two.
constexpr std::size_t kLongestSummed = 4000;
// Of texts measured as a whole and of joined letters, that many are remembered.
constexpr std::size_t kMostRemembered = 8192;
constexpr std::size_t kLongestRemembered = 256;

/// Scripts whose letters stand for themselves, each with a letter of it. Symbols, digits and spaces belong to
/// the run they stand in; the first entry is for texts of nothing else.
constexpr struct {
    QChar::Script script;
    char32_t anchor;
} kScripts[] = {{QChar::Script_Common, 0},       {QChar::Script_Latin, U'x'},
                {QChar::Script_Greek, U'ο'},     {QChar::Script_Cyrillic, U'о'},
                {QChar::Script_Han, U'一'},      {QChar::Script_Hiragana, U'の'},
                {QChar::Script_Katakana, U'ア'}, {QChar::Script_Hangul, U'가'}};

/// Its place among kScripts; nothing when it is not among them.
std::optional<std::size_t> ScriptIndex(QChar::Script inScript)
{
    for (std::size_t i = 0; i < std::size(kScripts); ++i) {
        if (kScripts[i].script == inScript) {
            return i;
        }
    }
    return {};
}

bool IsRightToLeftOrControl(char32_t inCharacter)
{
    switch (QChar::direction(inCharacter)) {
    case QChar::DirL:
    case QChar::DirEN:
    case QChar::DirES:
    case QChar::DirET:
    case QChar::DirCS:
    case QChar::DirWS:
    case QChar::DirON:
    case QChar::DirNSM:
        return false;
    default:
        return true;
    }
}

bool StandsForItself(char32_t inCharacter)
{
    constexpr char32_t kFractionSlash = 0x2044; // makes fractions of digits around it
    if (inCharacter == kFractionSlash) {
        return false;
    }
    if (QChar::script(inCharacter) == QChar::Script_Hangul) {
        return inCharacter >= 0xAC00 && inCharacter <= 0xD7A3; // not parts of syllables
    }
    switch (QChar::category(inCharacter)) {
    case QChar::Separator_Space:
        return inCharacter == ' ' || inCharacter == 0xA0 || inCharacter == 0x3000;
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
        return false;
    default:
        return true;
    }
}

bool Joins(char32_t inCharacter)
{
    constexpr char32_t kZeroWidthJoiner = 0x200D;
    const bool isMark = QChar::category(inCharacter) == QChar::Mark_NonSpacing ||
                        QChar::category(inCharacter) == QChar::Mark_Enclosing;
    return inCharacter == kZeroWidthJoiner || (isMark && QChar::script(inCharacter) <= QChar::Script_Common);
}

UTF16String TextOf(char32_t inCharacter)
{
    if (!QChar::requiresSurrogates(inCharacter)) {
        return UTF16String(1, char16_t(inCharacter));
    }
    return {char16_t(QChar::highSurrogate(inCharacter)), char16_t(QChar::lowSurrogate(inCharacter))};
}

/// The character there, a lone surrogate as itself.
char32_t CharacterAt(UTF16View inText, std::size_t inAt)
{
    const char16_t unit = inText[inAt];
    if (QChar::isHighSurrogate(unit) && inAt + 1 < inText.size() && QChar::isLowSurrogate(inText[inAt + 1])) {
        return QChar::surrogateToUcs4(unit, inText[inAt + 1]);
    }
    return unit;
}

} // namespace

TextWidths::TextWidths(const QFont& inFont) : mFont(inFont), mMetrics(inFont), mScripts(std::size(kScripts))
{
    for (std::size_t i = 0; i < mScripts.size(); ++i) {
        mScripts[i].anchor = kScripts[i].anchor;
    }
}

TextWidths::~TextWidths() = default;

std::int64_t TextWidths::Measure(UTF16View inText)
{
    if (inText.size() <= kLongestSummed) {
        if (const std::optional<std::int64_t> sum = SumUp(inText)) {
            return *sum;
        }
    }
    return MeasureWhole(inText);
}

std::optional<std::int64_t> TextWidths::SumUp(UTF16View inText)
{
    std::int64_t sum = 0;
    std::size_t script = 0;
    mRun.clear();
    for (std::size_t at = 0; at < inText.size();) {
        const char32_t character = CharacterAt(inText, at);
        const Character known = Find(mScripts[script], character);
        if (known.kind == Kind::kMeasured) {
            return {};
        }
        if (known.kind != Kind::kOtherScript) {
            mRun.push_back({at, known});
            at += QChar::requiresSurrogates(character) ? 2 : 1;
            continue;
        }
        if (script == 0) {
            at = 0; // what stands before the first letter belongs to its run
        } else if (const auto run = SumUpRun(mScripts[script], inText, at)) {
            sum += *run;
        } else {
            return {};
        }
        script = std::size_t(known.advance);
        mRun.clear();
    }
    const auto run = SumUpRun(mScripts[script], inText, inText.size());
    return run ? std::optional(sum + *run) : std::nullopt;
}

std::optional<std::int64_t> TextWidths::SumUpRun(Script& ioScript, UTF16View inText, std::size_t inEnd)
{
    const auto isJoinable = [this](std::size_t inIndex) {
        return mRun[inIndex].character.kind != Kind::kPlain ||
               (inIndex + 1 < mRun.size() && mRun[inIndex + 1].character.kind == Kind::kJoining);
    };
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < mRun.size();) {
        std::size_t end = i + 1;
        if (isJoinable(i)) {
            while (end < mRun.size() && isJoinable(end)) {
                ++end;
            }
        }
        if (mRun[i].character.kind == Kind::kJoining) {
            return {}; // a mark on nothing
        }
        if (end == i + 1) {
            sum += mRun[i].character.advance;
        } else {
            const std::size_t start = mRun[i].start;
            const std::size_t size = (end < mRun.size() ? mRun[end].start : inEnd) - start;
            const auto joined = MeasureJoined(ioScript, inText.substr(start, size));
            if (!joined) {
                return {};
            }
            sum += *joined;
        }
        i = end;
    }
    return sum;
}

std::optional<std::int64_t> TextWidths::MeasureJoined(Script& ioScript, UTF16View inLetters)
{
    if (const auto found = ioScript.joined.find(inLetters); found != ioScript.joined.end()) {
        return found->second;
    }
    const std::optional<UTF16String> beginning = BeginningFor(ioScript, inLetters);
    std::optional<std::int64_t> width;
    if (beginning) {
        width = Ask(*beginning + UTF16String(inLetters)) - Ask(*beginning);
    }
    if (ioScript.joined.size() < kMostRemembered && inLetters.size() <= kLongestRemembered) {
        ioScript.joined.emplace(inLetters, width);
    }
    return width;
}

std::int64_t TextWidths::MeasureWhole(UTF16View inText)
{
    if (const auto found = mWhole.find(inText); found != mWhole.end()) {
        return *found->second;
    }
    const std::int64_t width = Ask(inText);
    if (mWhole.size() < kMostRemembered && inText.size() <= kLongestRemembered) {
        mWhole.emplace(inText, width);
    }
    return width;
}

const TextWidths::Character& TextWidths::Find(Script& ioScript, char32_t inCharacter)
{
    Character* place = nullptr;
    if (inCharacter < 0x10000) {
        std::unique_ptr<Page>& page = ioScript.pages[inCharacter >> 8];
        if (!page) {
            page = std::make_unique<Page>();
        }
        place = &(*page)[inCharacter & 0xFF];
    } else {
        place = &ioScript.beyondPages[inCharacter];
    }
    if (place->kind == Kind::kUnknown) {
        *place = Learn(ioScript, inCharacter);
    }
    return *place;
}

TextWidths::Character TextWidths::Learn(Script& ioScript, char32_t inCharacter)
{
    if (Joins(inCharacter)) {
        return {0, Kind::kJoining};
    }
    if (IsRightToLeftOrControl(inCharacter) || !StandsForItself(inCharacter)) {
        return {0, Kind::kMeasured};
    }
    if (const QChar::Script script = QChar::script(inCharacter); script > QChar::Script_Common) {
        const std::optional<std::size_t> index = ScriptIndex(script);
        if (!index) {
            return {0, Kind::kMeasured};
        }
        if (&mScripts[*index] != &ioScript) {
            return {std::int32_t(*index), Kind::kOtherScript};
        }
    }
    const UTF16String letter = TextOf(inCharacter);
    const std::optional<UTF16String> beginning = BeginningFor(ioScript, letter);
    if (!beginning) {
        return {0, Kind::kMeasured};
    }
    QTextLayout layout(ui::ToQt(*beginning + letter), mFont);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns(int(beginning->size()), int(letter.size()));
    if (runs.size() != 1 || runs[0].glyphIndexes().size() != 1) {
        return {0, Kind::kMeasured};
    }
    const QRawFont font = runs[0].rawFont();
    const quint32 glyph = runs[0].glyphIndexes()[0];
    if (glyph == 0 || font.glyphIndexesForString(ui::ToQt(letter)) != QList<quint32>{glyph}) {
        return {0, Kind::kMeasured}; // the font has rules even for the letter alone
    }
    const std::int64_t advance = Ask(*beginning + letter) - Ask(*beginning);
    return {std::int32_t(advance), JoiningOf(font).Contains(glyph) ? Kind::kJoinable : Kind::kPlain};
}

std::optional<UTF16String> TextWidths::BeginningFor(Script& ioScript, UTF16View inLetters)
{
    if (ioScript.anchor == 0) {
        return UTF16String();
    }
    for (std::size_t at = 0; at < inLetters.size(); ++at) {
        if (QChar::script(CharacterAt(inLetters, at)) > QChar::Script_Common) {
            return UTF16String();
        }
    }
    if (Find(ioScript, ioScript.anchor).kind != Kind::kPlain) {
        return {};
    }
    return TextOf(ioScript.anchor);
}

const JoiningGlyphs& TextWidths::JoiningOf(const QRawFont& inFont)
{
    for (const Face& face : mFaces) {
        if (face.font == inFont) {
            return *face.joining;
        }
    }
    mFaces.push_back(
        {inFont, std::make_unique<const JoiningGlyphs>(inFont.fontTable("GSUB"), inFont.fontTable("GPOS"))});
    return *mFaces.back().joining;
}

std::int64_t TextWidths::Ask(UTF16View inText) const
{
    constexpr double kParts = 64;
    return std::llround(mMetrics.horizontalAdvance(ui::ToQt(inText)) * kParts);
}

} // namespace kioui::drawbot
