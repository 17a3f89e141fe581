// Module windows as top-level windows: shown and hidden as the engine says,
// the close box asking the window's close query, positions in twips both
// ways, and fresh widgets after an unload.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QTest>

#include "gui/window_shell.h"
#include "gui_rig.h"

namespace mv::test {
namespace {

class WindowShellTest : public ::testing::Test {
protected:
    ModuleWindow* shown() { return shell.windowFor("panel"); }

    GuiRig rig{true};
    WindowShell shell{rig.program, [this](std::function<void()> f) { rig.scheduler.post(std::move(f)); }};
};

TEST_F(WindowShellTest, FollowsLoadShowHideAndCaption) {
    EXPECT_EQ(shown(), nullptr);
    rig.panel->load();
    EXPECT_EQ(shown(), nullptr) << "a loaded window that was never shown has no widgets yet";
    // Changed while hidden and without widgets: the first show shows it as it is now.
    rig.panel->setCaption("Marrowvane    N0CALL   v1.0.0");
    rig.panel->text->setText("set while hidden");
    rig.panel->check->setValue(1);
    rig.panel->setStatusText("Guardado 14:00:00");
    rig.panel->show();
    ASSERT_NE(shown(), nullptr);
    EXPECT_TRUE(shown()->isVisible());
    EXPECT_TRUE(shown()->isWindow());
    EXPECT_EQ(shown()->windowTitle(), "Marrowvane    N0CALL   v1.0.0");
    EXPECT_EQ(shown()->statusLine().text(), "Guardado 14:00:00");
    auto* edit = qobject_cast<QLineEdit*>(shown()->view().widgetFor(*rig.panel->text));
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(edit->text(), "set while hidden");
    auto* check = qobject_cast<QCheckBox*>(shown()->view().widgetFor(*rig.panel->check));
    ASSERT_NE(check, nullptr);
    EXPECT_TRUE(check->isChecked());

    ModuleWindow* first = shown();
    rig.panel->hide();
    EXPECT_FALSE(first->isVisible());
    EXPECT_TRUE(rig.panel->isLoaded()) << "hiding keeps the window working";
    rig.panel->setCaption("Marrowvane    N0CALL   v1.0.1");
    rig.panel->text->setText("set while hidden again");
    rig.panel->show();
    EXPECT_EQ(shown(), first) << "shown again, the same widgets: the operator's scroll and focus stay";
    EXPECT_EQ(shown()->windowTitle(), "Marrowvane    N0CALL   v1.0.1");
    EXPECT_EQ(edit->text(), "set while hidden again");
}

TEST_F(WindowShellTest, AWindowUnloadedBeforeEverBeingShownLeavesNothingBehind) {
    rig.panel->load();
    rig.panel->move(1500, 3000);
    rig.panel->unload();
    EXPECT_EQ(shown(), nullptr);
    rig.panel->show();  // loads afresh, and now has widgets
    ASSERT_NE(shown(), nullptr);
    EXPECT_EQ(shown()->pos(), QPoint(100, 200)) << "placed where the engine had it when first shown";
}

TEST_F(WindowShellTest, TheStatusLineShowsAtTheFootOnlyWhenItSaysSomething) {
    rig.panel->show();
    QLabel& status = shown()->statusLine();
    EXPECT_FALSE(status.isVisible());
    rig.panel->setStatusText("No se pudo guardar panel.ini: the file is read-only");
    EXPECT_TRUE(status.isVisible());
    EXPECT_EQ(status.text(), "No se pudo guardar panel.ini: the file is read-only");
    QLayout& layout = *shown()->layout();
    EXPECT_EQ(layout.itemAt(layout.count() - 1)->widget(), &status) << "below the window's own controls";
    rig.panel->setStatusText("Guardado 14:00:00");
    EXPECT_EQ(status.text(), "Guardado 14:00:00");
}

TEST_F(WindowShellTest, CloseQueryAnsweredNoCancelsTheClose) {
    rig.panel->show();
    rig.dialogs.queueAnswer("No");
    EXPECT_FALSE(shown()->close()) << "Qt must not close the window on its own";
    EXPECT_TRUE(shown()->isVisible());
    rig.dispatch();
    EXPECT_TRUE(rig.panel->isLoaded());
    ASSERT_NE(shown(), nullptr);
    EXPECT_TRUE(shown()->isVisible());
    EXPECT_EQ(rig.dialogs.pending(), 0u) << "the close query was asked";
}

TEST_F(WindowShellTest, CloseQueryAnsweredYesUnloadsAndAReloadBuildsAfresh) {
    rig.panel->show();
    rig.panel->text->setText("edited");
    rig.dialogs.queueAnswer("Yes");
    shown()->close();
    rig.dispatch();
    EXPECT_FALSE(rig.panel->isLoaded());
    EXPECT_EQ(shown(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    rig.panel->show();
    ASSERT_NE(shown(), nullptr);
    auto* edit = qobject_cast<QLineEdit*>(shown()->view().widgetFor(*rig.panel->text));
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(edit->text(), "design");
    QTest::keyClicks(edit, "!");
    rig.dispatch();
    EXPECT_EQ(rig.panel->text->text(), "design!") << "the new widgets are bound to the new controls";
}

TEST_F(WindowShellTest, PositionsInTwipsBothWays) {
    rig.panel->move(1500, 3000);
    rig.panel->show();
    EXPECT_EQ(shown()->pos(), QPoint(100, 200));
    rig.panel->move(3015, 450);
    EXPECT_EQ(shown()->pos(), QPoint(201, 30));

    shown()->move(40, 60);  // the operator drags the window
    QCoreApplication::processEvents();
    rig.dispatch();
    EXPECT_EQ(rig.panel->leftTwips(), 600);
    EXPECT_EQ(rig.panel->topTwips(), 900);

    // A position between pixels is kept as it is, not rounded by the window's own echo.
    rig.panel->move(607, 901);
    QCoreApplication::processEvents();
    rig.dispatch();
    EXPECT_EQ(rig.panel->leftTwips(), 607);
    EXPECT_EQ(rig.panel->topTwips(), 901);
}

}  // namespace
}  // namespace mv::test
