#include <kioui/ui/Application.h>

#include "ApplicationState.h"
#include "EventLoopWaker.h"
#include "NodeImpl.h"
#include "ThemePalette.h"
#include "platform/WindowSystem.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <QApplication>
#include <QFontDatabase>
#include <QStyleFactory>

namespace kioui::ui {
namespace {

/// Sets an environment variable for as long as Qt reads it.
class ScEnvironment {
public:
    ScEnvironment(const char* inName, const QByteArray& inValue) : mName(inName), mBefore(qgetenv(inName))
    {
        mWasSet = qEnvironmentVariableIsSet(inName);
        if (!inValue.isEmpty()) {
            qputenv(inName, inValue);
        }
    }
    ~ScEnvironment() { mWasSet ? qputenv(mName, mBefore) : qunsetenv(mName); }
    ScEnvironment(const ScEnvironment&) = delete;
    ScEnvironment& operator=(const ScEnvironment&) = delete;

private:
    const char* mName;
    QByteArray mBefore;
    bool mWasSet;
};

void UseFont(const std::string& inFontFile)
{
    const int font = QFontDatabase::addApplicationFont(QString::fromStdString(inFontFile));
    const QStringList families = QFontDatabase::applicationFontFamilies(font);
    if (families.isEmpty()) {
        throw kiocore::kio_exception("the font file " + inFontFile + " cannot be read",
                                     kiocore::kError_BadArgument);
    }
    QFont all = QApplication::font();
    all.setFamily(families.first());
    QApplication::setFont(all);
}

} // namespace

ApplicationState& TheApplicationState()
{
    static ApplicationState state;
    return state;
}

struct ScApplication::Impl {
    int argumentCount = 1;
    char name[8] = "trhost";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QApplication> application;
    std::unique_ptr<EventLoopWaker> waker;
    std::shared_ptr<kiocore::threads::MainThread> mainThread;
};

ScApplication::ScApplication(const ApplicationSettings& inSettings) : mImpl(std::make_unique<Impl>())
{
    KIO_HOST_CALL("kioui::ui::ScApplication::ScApplication", inSettings.name);
    if (QCoreApplication::instance() != nullptr) {
        throw kiocore::kio_exception("kioui::ui::ScApplication: there is an application object already",
                                     kiocore::kError_BadArgument);
    }
    {
        const auto connection = platform::RequireWindowSystem();
        const ScEnvironment scale("QT_SCALE_FACTOR",
                                  inSettings.scale > 0 ? QByteArray::number(inSettings.scale) : QByteArray());
        mImpl->application = std::make_unique<QApplication>(mImpl->argumentCount, mImpl->arguments);
    }
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setApplicationDisplayName(ToQt(inSettings.name));
    if (!inSettings.fontFileUTF8.empty()) {
        UseFont(inSettings.fontFileUTF8);
    }
    SetDefaultThemeProvider(GetThemeProvider(inSettings.theme));
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setPalette(PaletteOf(GetDefaultThemeProvider()));
    QApplication::setPalette(CheckBoxPaletteOf(GetDefaultThemeProvider()), "QCheckBox");

    ApplicationState& state = TheApplicationState();
    state.supplier = drawbot::NewQtSupplier();
    state.settingsFileUTF8 = inSettings.settingsFileUTF8;
    mImpl->mainThread = kiocore::threads::GetRegisteredMainThread();
    if (mImpl->mainThread) {
        mImpl->waker = std::make_unique<EventLoopWaker>(mImpl->mainThread);
        state.waker = mImpl->waker.get();
        mImpl->mainThread->SetWakeUp([] { WakeEventLoop(); });
    }
}

ScApplication::~ScApplication()
{
    KIO_HOST_CALL("kioui::ui::ScApplication::~ScApplication");
    if (mImpl->mainThread) {
        mImpl->mainThread->SetWakeUp({});
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    TheApplicationState() = {};
    mImpl->waker.reset();
    mImpl->application.reset();
}

void ScApplication::RunPending()
{
    WakeEventLoop(); // what was posted from within posted work has woken nobody
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool ScApplication::Exists()
{
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

} // namespace kioui::ui
