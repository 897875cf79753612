#include "platform/WindowSystem.h"

#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/utility/UTF16String.h>

#include <QByteArray>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <QString>
#include <QStringList>

#include <dlfcn.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kioui::platform {
namespace {

/// A library that Qt's own plug-in loads too; stays loaded.
class WindowLibrary {
public:
    explicit WindowLibrary(const char* inName) : mLibrary(::dlopen(inName, RTLD_NOW | RTLD_LOCAL)) {}
    template <typename Function>
    Function Find(const char* inName) const
    {
        return mLibrary != nullptr ? reinterpret_cast<Function>(::dlsym(mLibrary, inName)) : nullptr;
    }

private:
    void* const mLibrary;
};

using Connection = std::shared_ptr<void>;

// Connecting is the only way to know: a display may be named, answer, and still refuse us.

/// Empty when there is none.
Connection ConnectToX11()
{
    const WindowLibrary xcb("libxcb.so.1");
    const auto connect = xcb.Find<void* (*)(const char*, int*)>("xcb_connect");
    const auto hasError = xcb.Find<int (*)(void*)>("xcb_connection_has_error");
    const auto disconnect = xcb.Find<void (*)(void*)>("xcb_disconnect");
    if (connect == nullptr || hasError == nullptr || disconnect == nullptr) {
        return nullptr;
    }
    const Connection connection(connect(nullptr, nullptr), disconnect); // never null
    return hasError(connection.get()) == 0 ? connection : nullptr;
}

/// Empty when there is none.
Connection ConnectToWayland()
{
    const WindowLibrary wayland("libwayland-client.so.0");
    const auto connect = wayland.Find<void* (*)(const char*)>("wl_display_connect");
    const auto disconnect = wayland.Find<void (*)(void*)>("wl_display_disconnect");
    if (connect == nullptr || disconnect == nullptr) {
        return nullptr;
    }
    void* const display = connect(nullptr);
    return display != nullptr ? Connection(display, disconnect) : nullptr;
}

QStringList PluginFolders()
{
    QStringList folders = QString::fromLocal8Bit(qgetenv("QT_QPA_PLATFORM_PLUGIN_PATH"))
                              .split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QByteArray& path : qgetenv("QT_PLUGIN_PATH").split(':')) {
        if (!path.isEmpty()) {
            folders.append(QString::fromLocal8Bit(path) + QLatin1String("/platforms"));
        }
    }
    folders.append(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QLatin1String("/platforms"));
    return folders;
}

bool IsInstalled(const QString& inPlatform)
{
    for (const QString& folder : PluginFolders()) {
        for (const QString& file : QDir(folder).entryList(QDir::Files)) {
            const QJsonObject about = QPluginLoader(folder + QLatin1Char('/') + file).metaData();
            const QJsonArray keys =
                about[QLatin1String("MetaData")].toObject()[QLatin1String("Keys")].toArray();
            if (keys.contains(inPlatform)) {
                return true;
            }
        }
    }
    return false;
}

/// Names of platforms, each with parameters behind a colon, in the order in which Qt tries them.
QStringList PlatformsToTry()
{
    const QByteArray named = qgetenv("QT_QPA_PLATFORM");
    if (!named.isEmpty()) {
        return QString::fromLocal8Bit(named).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    }
    QStringList platforms;
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland") {
        platforms.append(QLatin1String("wayland"));
    }
    platforms.append(QLatin1String("xcb"));
    return platforms;
}

std::string LocalText(std::string_view inText, const std::vector<std::string>& inValues)
{
    using kiocore::config::Localizer;
    std::vector<kiocore::utility::UTF16String> values;
    for (const std::string& value : inValues) {
        values.push_back(kiocore::utility::ToUTF16(value));
    }
    return kiocore::utility::ToUTF8(Localizer::Format(Localizer::GetText(inText), values));
}

std::string Shown(const char* inVariable)
{
    return qEnvironmentVariableIsSet(inVariable)
               ? inVariable + ("=" + qgetenv(inVariable).toStdString())
               : LocalText("$$$/kioui/WindowSystem/NotSet=@0 is not set#{@0: an environment variable}",
                           {inVariable});
}

std::string Unreachable(const QString& inPlatform, const std::string& inVariables)
{
    return LocalText(
        "$$$/kioui/WindowSystem/Unreachable=@0: the display cannot be reached (@1)#{@0: xcb, @1: "
        "DISPLAY is not set}",
        {inPlatform.toStdString(), inVariables});
}

/// Empty when it can be used.
/// @param outConnection  set where one had to be made.
std::string WhatIsWrongWith(const QString& inPlatform, Connection& outConnection)
{
    const QString name = inPlatform.section(QLatin1Char(':'), 0, 0);
    if (!IsInstalled(name)) {
        return LocalText("$$$/kioui/WindowSystem/NotInstalled=@0: no such plug-in is installed#{@0: xcb}",
                         {name.toStdString()});
    }
    if (name == QLatin1String("xcb") && !(outConnection = ConnectToX11())) {
        return Unreachable(name, Shown("DISPLAY"));
    }
    if (name.startsWith(QLatin1String("wayland")) && !(outConnection = ConnectToWayland())) {
        return Unreachable(name, Shown("WAYLAND_DISPLAY") + ", " + Shown("XDG_RUNTIME_DIR"));
    }
    return {};
}

} // namespace

std::shared_ptr<void> RequireWindowSystem()
{
    Connection connection;
    std::string reasons;
    for (const QString& platform : PlatformsToTry()) {
        const std::string reason = WhatIsWrongWith(platform, connection);
        if (reason.empty()) {
            return connection;
        }
        reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    throw kiocore::kio_exception(
        LocalText(
            "$$$/kioui/WindowSystem/None=no window system can be used: @0 (without a display, @1 draws into "
            "memory)#{@0: the reasons}",
            {reasons, "QT_QPA_PLATFORM=offscreen"}),
        kiocore::kError_Startup);
}

} // namespace kioui::platform
