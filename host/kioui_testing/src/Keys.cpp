#include "Keys.h"

#include <QKeySequence>
#include <QTest>
#include <QTextBoundaryFinder>

namespace kioui::testing {
namespace {

Key KeyOfCharacter(const QString& inCharacter)
{
    if (inCharacter == u"\n") {
        return {Qt::Key_Return, {}, QStringLiteral("\r")};
    }
    if (inCharacter == u"\t") {
        return {Qt::Key_Tab, {}, inCharacter};
    }
    // Keys are numbered by the capital that is printed on them.
    const QString printed = inCharacter.toUpper();
    const char32_t code = printed.toUcs4().value(0);
    return {Qt::Key(code), {}, inCharacter};
}

QString TextOf(Qt::Key inCode, Qt::KeyboardModifiers inModifiers)
{
    const char character = QTest::keyToAscii(inCode);
    const QString text = character != 0 ? QString(QChar::fromLatin1(character)) : QString();
    return (inModifiers & Qt::ShiftModifier) != 0 ? text.toUpper() : text;
}

} // namespace

std::optional<Key> KeyFromName(std::string_view inName)
{
    const QString name = QString::fromUtf8(inName.data(), qsizetype(inName.size()));
    if (name.toUcs4().size() == 1) {
        return KeyOfCharacter(name);
    }
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0].key() == Qt::Key_unknown || sequence[0].key() == Qt::Key(0)) {
        return std::nullopt;
    }
    Key key{sequence[0].key(), sequence[0].keyboardModifiers(), {}};
    if (key.code == Qt::Key_Tab && (key.modifiers & Qt::ShiftModifier) != 0) {
        key.code = Qt::Key_Backtab; // as window systems have it
    } else {
        key.text = TextOf(key.code, key.modifiers);
    }
    return key;
}

std::vector<Key> KeysThatType(const QString& inText)
{
    std::vector<Key> keys;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, inText);
    qsizetype begin = 0;
    for (qsizetype end = finder.toNextBoundary(); end > begin; end = finder.toNextBoundary()) {
        keys.push_back(KeyOfCharacter(inText.mid(begin, end - begin)));
        begin = end;
    }
    return keys;
}

} // namespace kioui::testing
