#include "KeptSizes.h"

#include "ApplicationState.h"

#include <QSettings>
#include <QStringList>
#include <QUrl>

namespace kioui::ui {
namespace {

const int kLargest = 32767; // what window systems can tell

bool IsLength(int inLength)
{
    return inLength > 0 && inLength <= kLargest;
}

// Slashes would make groups of it.
QString KeyOf(const std::string& inNodeID)
{
    return QLatin1String("WindowSizes/") +
           QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString(inNodeID)));
}

bool CanKeep(const std::string& inNodeID)
{
    return !inNodeID.empty() && !TheApplicationState().settingsFileUTF8.empty();
}

QString SettingsFile()
{
    return QString::fromStdString(TheApplicationState().settingsFileUTF8);
}

} // namespace

std::optional<QSize> ReadKeptSize(const std::string& inNodeID)
{
    if (!CanKeep(inNodeID)) {
        return std::nullopt;
    }
    const QSettings settings(SettingsFile(), QSettings::IniFormat);
    const QStringList lengths =
        settings.value(KeyOf(inNodeID)).toString().split(QLatin1Char('x'), Qt::KeepEmptyParts);
    if (lengths.size() != 2) {
        return std::nullopt;
    }
    const QSize size(lengths[0].toInt(), lengths[1].toInt()); // 0 for what is no number
    return IsLength(size.width()) && IsLength(size.height()) ? std::optional(size) : std::nullopt;
}

void KeepSize(const std::string& inNodeID, QSize inSize)
{
    if (CanKeep(inNodeID)) {
        QSettings settings(SettingsFile(), QSettings::IniFormat);
        settings.setValue(KeyOf(inNodeID),
                          QString::fromLatin1("%1x%2").arg(inSize.width()).arg(inSize.height()));
    }
}

} // namespace kioui::ui
