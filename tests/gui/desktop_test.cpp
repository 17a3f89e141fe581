// The desktop suite on a 1366 x 768 screen: every window it opens lies
// wholly on the screen, a window moved and saved reopens where it was, the
// host console goes beside the hub when there is room and comes back from the
// hub's menu, and Ctrl+S presses a window's save button.
#include <gtest/gtest.h>

#include <QAction>
#include <QIcon>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QTest>

#include "app/suite.h"
#include "gui/gui_session.h"
#include "gui/host_console.h"
#include "gui/screen_fit.h"
#include "gui/window_shell.h"
#include "gui_rig.h"

namespace mv::test {
namespace {

class DesktopTest : public ::testing::Test {
protected:
    void start() {
        qtApp();
        SuiteOptions o;
        o.settingsDir = dir.path() / "settings";
        o.defaultVoiceFolder = "/nowhere/";
        suite = std::make_unique<Suite>(o);
        session = std::make_unique<GuiSession>(*suite);
        std::string message;
        ASSERT_EQ(session->start(nullptr, message), Program::StartResult::Started) << message;
        settle();
    }
    void stop() {
        // The end would quit Qt's event loop for good; later tests still need one.
        suite->program().setOnEnded(nullptr);
        suite->program().shutdown("test");
        session.reset();
        suite.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void TearDown() override {
        if (suite) stop();
    }
    // Lets Qt deliver what it queued and the engine run what the widgets posted.
    void settle() {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
            suite->scheduler().runDue();
        }
    }
    void pressCtrlS(QWidget& window) {
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_S, Qt::ControlModifier);
    }
    QRect available() const { return QGuiApplication::primaryScreen()->availableGeometry(); }
    ModuleWindow& hub() { return *session->shell().windowFor("hub"); }

    TempDir dir;
    std::unique_ptr<Suite> suite;
    std::unique_ptr<GuiSession> session;
};

TEST_F(DesktopTest, EveryWindowTheSuiteOpensLiesWhollyOnTheScreenAndScrollsWhatDoesNotFit) {
    start();
    ASSERT_EQ(available().size(), QSize(kScreenWidth, kScreenHeight));
    for (const auto& w : suite->program().windows()) w->show();
    settle();
    int shown = 0;
    for (const auto& w : suite->program().windows()) {
        ModuleWindow* top = session->shell().windowFor(w->name());
        ASSERT_NE(top, nullptr) << w->name();
        ASSERT_TRUE(top->isVisible()) << w->name();
        EXPECT_TRUE(available().contains(top->frameGeometry())) << w->name();
        ++shown;
    }
    EXPECT_GE(shown, 3);
    // No room beside a hub this wide: the console overlaps it, on the screen.
    EXPECT_TRUE(available().contains(session->console().frameGeometry()));

    // The hub is taller than the screen: it opens as tall as the screen allows
    // and its foot (the player strip) is reached by scrolling.
    EXPECT_GT(hub().sizeHint().height(), kScreenHeight) << "this test wants a hub that does not fit";
    QScrollArea& scroll = hub().scrollArea();
    ASSERT_TRUE(scroll.verticalScrollBar()->isVisible());
    QWidget* speed = hub().view().widgetFor(*suite->program().window("hub")->control("SpeedSlider"));
    ASSERT_NE(speed, nullptr);
    scroll.ensureWidgetVisible(speed);
    QCoreApplication::processEvents();
    const QRect inViewport(speed->mapTo(scroll.viewport(), QPoint(0, 0)), speed->size());
    EXPECT_TRUE(scroll.viewport()->rect().contains(inViewport));
    // Sliders keep a length a hand can set.
    for (const char* name : {"SpeedSlider", "PositionSlider", "BalanceSlider"}) {
        QSlider* slider = hub().view().widgetFor(*suite->program().window("hub")->control(name))->findChild<QSlider*>();
        ASSERT_NE(slider, nullptr) << name;
        const int length = slider->orientation() == Qt::Vertical ? slider->height() : slider->width();
        EXPECT_GE(length, 100) << name;
    }
}

TEST_F(DesktopTest, AWindowMovedAndSavedReopensWhereItWas) {
    start();
    Window& messages = *suite->program().window("messages");
    messages.show();
    settle();
    ModuleWindow& top = *session->shell().windowFor("messages");
    top.move(310, 95);  // the operator drags it
    settle();
    EXPECT_EQ(messages.leftTwips(), 310 * 15);
    EXPECT_EQ(messages.topTwips(), 95 * 15);
    pressCtrlS(top);  // its "Salvar"
    settle();
    EXPECT_EQ(messages.statusText().rfind("Guardado ", 0), 0u) << messages.statusText();
    stop();

    start();
    suite->program().window("messages")->show();
    settle();
    EXPECT_EQ(session->shell().windowFor("messages")->pos(), QPoint(310, 95));
}

TEST_F(DesktopTest, ASavedPlaceOffTheScreenOpensOnItAndIsKeptForABiggerScreen) {
    std::filesystem::create_directories(dir.path() / "settings");
    // Saved on a big second monitor: far right and below this screen.
    std::ofstream(dir.path() / "settings" / "Quillasp2.ini") << "[SETTINGS]\nLEFT=40000\nTOP=30000\n";
    start();
    EXPECT_TRUE(available().contains(hub().frameGeometry()));
    EXPECT_EQ(hub().frameGeometry().right(), available().right()) << "as near as the screen allows";
    // Saved again unmoved, the place is kept for when the big monitor is back.
    pressCtrlS(hub());
    settle();
    EXPECT_EQ(suite->program().window("hub")->leftTwips(), 40000);
}

TEST_F(DesktopTest, TheConsoleClosedComesBackFromTheHubsMenu) {
    start();
    HostConsole& console = session->console();
    ASSERT_TRUE(console.isVisible());
    console.close();
    EXPECT_FALSE(console.isVisible());
    auto* bar = hub().findChild<QMenuBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    QAction& reopen = session->showConsoleAction();
    EXPECT_TRUE(bar->actions().front()->menu()->actions().contains(&reopen));
    EXPECT_EQ(reopen.shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+H")));
    reopen.trigger();
    EXPECT_TRUE(console.isVisible());
    EXPECT_TRUE(available().contains(console.frameGeometry()));
}

// The icon is built into the program in the sizes a window's icon is drawn
// at; a resource that did not make it in would leave every window without one.
TEST(SuiteIcon, ComesInEverySizeAWindowsIconIsDrawnAt) {
    qtApp();
    const QIcon icon = suiteIcon();
    ASSERT_FALSE(icon.isNull());
    EXPECT_EQ(icon.availableSizes(), (QList<QSize>{{16, 16}, {32, 32}, {48, 48}, {64, 64}}));
    for (const QSize& size : icon.availableSizes())
        EXPECT_EQ(icon.pixmap(size).toImage().pixelColor(size.width() / 2, size.height() / 2).alpha(), 255)
            << size.width() << " pixels: the picture, not an empty square";
}

TEST(ScreenFit, FramesAreShrunkAndMovedTheLeastThatPutsThemOnTheScreen) {
    const QRect screen(0, 0, 1366, 740);
    EXPECT_EQ(fitInside({10, 10, 400, 300}, screen), QRect(10, 10, 400, 300));
    EXPECT_EQ(fitInside({1200, 600, 400, 300}, screen), QRect(966, 440, 400, 300));
    EXPECT_EQ(fitInside({-50, -20, 400, 300}, screen), QRect(0, 0, 400, 300));
    EXPECT_EQ(fitInside({100, 100, 1400, 1200}, screen), QRect(0, 0, 1366, 740));
    // A second screen to the right: a frame on it stays there.
    EXPECT_EQ(fitInside({1500, 100, 400, 300}, QRect(1366, 0, 1920, 1080)), QRect(1500, 100, 400, 300));
}

TEST(ScreenFit, TheConsoleGoesBesideTheHubWhereThereIsRoomAndOnTheScreenAlways) {
    const QSize console(870, 610), least(500, 400);
    // 1600 wide, hub at the left: to its right, narrowed to the room left.
    const QRect wide = besideOnScreen(console, least, QRect(20, 20, 1000, 760), QRect(0, 0, 1600, 1000), 12);
    EXPECT_EQ(wide, QRect(1032, 20, 568, 610));
    // 1920 wide: its whole size.
    EXPECT_EQ(besideOnScreen(console, least, QRect(20, 20, 1000, 760), QRect(0, 0, 1920, 1080), 12).size(), console);
    // The hub at the right of the screen: to its left.
    EXPECT_EQ(besideOnScreen(console, least, QRect(700, 20, 880, 760), QRect(0, 0, 1600, 1000), 12),
              QRect(0, 20, 688, 610));
    // 1024 x 768 with a wide hub: no room beside; over the hub's right side, on the screen.
    const QRect narrow(0, 0, 1024, 740);
    const QRect over = besideOnScreen(console, least, QRect(20, 20, 1004, 720), narrow, 12);
    EXPECT_TRUE(narrow.contains(over));
    EXPECT_EQ(over.right(), narrow.right());
}

TEST(ScreenFit, TwipsArePixelsAtTheScreensLogicalDpi) {
    qtApp();
    const QScreen* screen = QGuiApplication::primaryScreen();
    ASSERT_EQ(screen->logicalDotsPerInchX(), 96);
    EXPECT_EQ(twipsToPixels(1500, 3000, screen), QPoint(100, 200));
    float left = 0, top = 0;
    pixelsToTwips(QPoint(201, 30), screen, left, top);
    EXPECT_EQ(left, 3015);
    EXPECT_EQ(top, 450);
}

}  // namespace
}  // namespace mv::test
