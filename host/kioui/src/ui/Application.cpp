#include <kioui/ui/Application.h>

#include "ApplicationState.h"
#include "NodeImpl.h"
#include "ThemePalette.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/threads/MainThread.h>

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QStyleFactory>

#include <cstdlib>

namespace kioui::ui {
namespace {

const QEvent::Type kWakeUp = QEvent::Type(QEvent::User + 1);

/// Runs posted work between other events.
class Waker final : public QObject {
public:
    explicit Waker(std::shared_ptr<kiocore::threads::MainThread> inMainThread)
        : mMainThread(std::move(inMainThread))
    {}
    bool event(QEvent* inEvent) override
    {
        if (inEvent->type() != kWakeUp) {
            return QObject::event(inEvent);
        }
        mMainThread->RunPosted();
        return true;
    }

private:
    const std::shared_ptr<kiocore::threads::MainThread> mMainThread;
};

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

/// Qt ends the process when it reaches no window system; this asks first.
void RequireWindowSystem()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        return;
    }
    throw kiocore::kio_exception("no window system: neither DISPLAY nor WAYLAND_DISPLAY is set (without a "
                                 "display, QT_QPA_PLATFORM=offscreen draws into memory)",
                                 kiocore::kError_Startup);
}

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

void WakeEventLoop()
{
    if (QObject* waker = TheApplicationState().waker) {
        QCoreApplication::postEvent(waker, new QEvent(kWakeUp));
    }
}

struct ScApplication::Impl {
    int argumentCount = 1;
    char name[8] = "trhost";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QApplication> application;
    std::unique_ptr<Waker> waker;
    std::shared_ptr<kiocore::threads::MainThread> mainThread;
};

ScApplication::ScApplication(const ApplicationSettings& inSettings) : mImpl(std::make_unique<Impl>())
{
    KIO_HOST_CALL("kioui::ui::ScApplication::ScApplication", inSettings.name);
    if (QCoreApplication::instance() != nullptr) {
        throw kiocore::kio_exception("kioui::ui::ScApplication: there is an application object already",
                                     kiocore::kError_BadArgument);
    }
    RequireWindowSystem();
    {
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

    ApplicationState& state = TheApplicationState();
    state.supplier = drawbot::NewQtSupplier();
    state.settingsFileUTF8 = inSettings.settingsFileUTF8;
    mImpl->mainThread = kiocore::threads::GetRegisteredMainThread();
    if (mImpl->mainThread) {
        mImpl->waker = std::make_unique<Waker>(mImpl->mainThread);
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
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool ScApplication::Exists()
{
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

} // namespace kioui::ui
