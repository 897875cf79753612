#include <kioui/controls/Checkbox.h>
#include <kioui/ui/Dialog.h>

#include <support/TemporaryFolder.h>
#include <support/ui/TestApplication.h>

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <gmock/gmock.h>

#include <optional>
#include <thread>

using namespace kioui;
using controls::UI_Checkbox;

namespace {

/// Sets or, with nothing, removes an environment variable for as long as it lives.
class ScEnvironment {
public:
    ScEnvironment(const char* inName, std::optional<QByteArray> inValue) : mName(inName)
    {
        if (qEnvironmentVariableIsSet(inName)) {
            mBefore = qgetenv(inName);
        }
        Set(inValue);
    }
    ~ScEnvironment() { Set(mBefore); }

private:
    void Set(const std::optional<QByteArray>& inValue)
    {
        inValue ? qputenv(mName, *inValue) : qunsetenv(mName);
    }
    const char* mName;
    std::optional<QByteArray> mBefore;
};

/// What making an application object says; empty when it was made.
std::string FailureOfStarting(const ui::ApplicationSettings& inSettings, std::uint32_t inExpectedCode)
{
    try {
        const ui::ScApplication application(inSettings);
        return {};
    } catch (const kiocore::kio_exception& error) {
        EXPECT_EQ(error.Code(), inExpectedCode);
        return error.what();
    }
}

} // namespace

TEST(Application, SaysWhichWindowSystemsCannotBeUsedInsteadOfEndingTheProcess)
{
    const struct {
        const char* name;
        std::optional<QByteArray> platform;
        std::optional<QByteArray> display;
        std::optional<QByteArray> waylandDisplay;
        std::vector<std::string> expected; // parts of the message; none is a start
    } kCases[] = {
        {"nothing set", std::nullopt, std::nullopt, std::nullopt, {"xcb", "DISPLAY is not set"}},
        {"a display that nobody serves", std::nullopt, ":987", std::nullopt, {"xcb", "DISPLAY=:987"}},
        {"one that is no display", "xcb", "nonsense", std::nullopt, {"xcb", "DISPLAY=nonsense"}},
        {"both dead", std::nullopt, ":987", "nobody", {"wayland", "xcb", "DISPLAY=:987"}},
        {"no such platform", "abacus:beads=10", ":0", std::nullopt, {"abacus: no such plug-in is installed"}},
        {"several, the last one there", "abacus;xcb;offscreen", ":987", std::nullopt, {}},
        {"into memory", "offscreen", std::nullopt, std::nullopt, {}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const ScEnvironment platform("QT_QPA_PLATFORM", test.platform);
        const ScEnvironment display("DISPLAY", test.display);
        const ScEnvironment wayland("WAYLAND_DISPLAY", test.waylandDisplay);
        const ScEnvironment session("XDG_SESSION_TYPE", std::nullopt);
        const std::string failure = FailureOfStarting({}, kiocore::kError_Startup);
        EXPECT_EQ(failure.empty(), test.expected.empty()) << failure;
        for (const std::string& part : test.expected) {
            EXPECT_THAT(failure, testing::HasSubstr(part));
        }
        EXPECT_FALSE(ui::ScApplication::Exists());
    }
}

TEST(Application, RefusesABadFontAndASecondObjectAndCanBeMadeAfterwards)
{
    const support::TemporaryFolder folder;
    support::WriteFile(folder / "damaged.ttf", "this is no font");
    const ScEnvironment platform("QT_QPA_PLATFORM", "offscreen");
    for (const char* file : {"damaged.ttf", "missing.ttf", "."}) {
        ui::ApplicationSettings settings;
        settings.fontFileUTF8 = folder / file;
        EXPECT_THAT(FailureOfStarting(settings, kiocore::kError_BadArgument),
                    testing::HasSubstr(settings.fontFileUTF8));
        EXPECT_FALSE(ui::ScApplication::Exists());
    }
    const support::ScTestApplication application;
    EXPECT_THAT(FailureOfStarting({}, kiocore::kError_BadArgument),
                testing::HasSubstr("there is an application object already"));
    EXPECT_TRUE(ui::ScApplication::Exists());
    EXPECT_NO_THROW(boost::intrusive_ptr<UI_Checkbox>(new UI_Checkbox(u"x")));
}

TEST(Application, LooksAsItsSettingsSay)
{
    const struct {
        const char* name;
        ui::Theme theme;
        float scale;
        float expectedScale;
    } kCases[] = {
        {"dark, as the display is", ui::Theme::kDark, 0, 1},
        {"light, twice as large", ui::Theme::kLight, 2, 2},
        {"dark, between whole scales", ui::Theme::kDark, 1.5f, 1.5f},
        {"no longer larger", ui::Theme::kLight, 0, 1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        ui::ApplicationSettings settings;
        settings.theme = test.theme;
        settings.scale = test.scale;
        const support::ScTestApplication application(settings);
        const boost::intrusive_ptr<UI_OSWindow> window(new UI_OSWindow(u"window", nullptr));
        EXPECT_EQ(window->GetUIScale(), test.expectedScale);
        window->SetSize({100, 50});
        EXPECT_EQ(window->GetBounds().Width(), 100) << "units, not pixels";

        const QPalette palette = QApplication::palette();
        const bool isDark = palette.color(QPalette::Window).lightnessF() < 0.5;
        EXPECT_EQ(isDark, test.theme == ui::Theme::kDark);
        EXPECT_NE(palette.color(QPalette::WindowText).lightnessF() < 0.5, isDark) << "cannot be read";
        EXPECT_EQ(ui::GetDefaultThemeProvider().Get(), ui::GetThemeProvider(test.theme).Get());
    }
}

TEST(Application, ThousandPostsOfFourThreadsMakeOneWakeUpEvent)
{
    struct WakeUps final : QObject {
        bool eventFilter(QObject*, QEvent* inEvent) override
        {
            count += inEvent->type() >= QEvent::User ? 1 : 0;
            return false;
        }
        int count = 0;
    };
    const support::ScTestApplication application;
    QCoreApplication::processEvents();
    WakeUps wakeUps;
    qApp->installEventFilter(&wakeUps);
    int ran = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int post = 0; post < 250; ++post) {
                application->Post([&ran] { ++ran; });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(ran, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(ran, 1000);
    EXPECT_EQ(wakeUps.count, 1);
    application->Post([&ran] { ++ran; }); // and the next is woken up for again
    QCoreApplication::processEvents();
    EXPECT_EQ(ran, 1001);
    EXPECT_EQ(wakeUps.count, 2);
}

TEST(Application, WithoutOneANodeSaysWhatIsMissing)
{
    try {
        boost::intrusive_ptr<UI_Checkbox> box(new UI_Checkbox(u"x"));
        FAIL() << "made";
    } catch (const kiocore::kio_exception& error) {
        EXPECT_EQ(error.Code(), kiocore::kError_BadArgument);
        EXPECT_THAT(error.what(), testing::HasSubstr("UI_Checkbox: there is no application object yet"));
    }
}

TEST(Application, PostedWorkRunsInModalDialogsThatPostedWorkOpened)
{
    support::ScTestApplication application;
    boost::intrusive_ptr<UI_Dialog> outer(new UI_Dialog(nullptr, u"outer", nullptr));
    std::vector<std::string> order;
    application->Post([&] {
        boost::intrusive_ptr<UI_Dialog> inner(new UI_Dialog(nullptr, u"inner", outer.get()));
        application->Post([&] { order.push_back("posted before"); });
        std::thread worker([&] {
            application->Post([&] {
                order.push_back("posted by a thread");
                inner->EndModal(7);
            });
        });
        EXPECT_EQ(inner->RunModal(), 7);
        worker.join();
        order.push_back("inner is over");
        outer->EndModal(UI_Dialog::kResult_OK);
    });
    EXPECT_EQ(outer->RunModal(), UI_Dialog::kResult_OK);
    EXPECT_THAT(order, testing::ElementsAre("posted before", "posted by a thread", "inner is over"));
}
