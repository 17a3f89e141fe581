// The real-time pump: armed exactly for the next due item, woken by posts and
// timer starts, idle when nothing is queued; during a block the windows paint
// but clicks and typing wait and are handled afterwards, in order.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include "gui/realtime_pump.h"
#include "gui/window_shell.h"
#include "gui_rig.h"

namespace mv::test {
namespace {

TEST(RealTimePump, ArmsForTheNextDueItemAndIdlesWhenNothingIsQueued) {
    GuiRig rig;
    RealTimePump pump(rig.scheduler);
    EXPECT_FALSE(pump.armed());

    int ticks = 0;
    Timer timer(rig.scheduler, "t", 250, true, [&] { ++ticks; });
    ASSERT_TRUE(pump.armed()) << "starting a timer wakes the pump";
    EXPECT_EQ(pump.armedDelayMs(), 250);

    bool posted = false;
    rig.scheduler.post([&] { posted = true; });
    EXPECT_EQ(pump.armedDelayMs(), 0) << "a post is handled at once";
    pump.dispatchDue();
    EXPECT_TRUE(posted);
    EXPECT_EQ(pump.armedDelayMs(), 250);

    rig.clock.advanceBy(100);
    pump.dispatchDue();  // woken early: nothing due, re-armed for the rest
    EXPECT_EQ(ticks, 0);
    EXPECT_EQ(pump.armedDelayMs(), 150);
    rig.clock.advanceBy(150);
    pump.dispatchDue();
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(pump.armedDelayMs(), 250);

    timer.setEnabled(false);
    pump.dispatchDue();
    EXPECT_FALSE(pump.armed()) << "an idle engine costs no wake-ups";
}

TEST(RealTimePump, StopsWhenTheProgramEnds) {
    GuiRig rig;
    RealTimePump pump(rig.scheduler);
    Timer timer(rig.scheduler, "t", 100, true, [] {});
    rig.scheduler.post([&] { rig.program.end("test"); });
    pump.dispatchDue();
    EXPECT_TRUE(rig.program.ended());
    EXPECT_FALSE(pump.armed());
}

TEST(RealTimePump, ClicksAndTypingDuringABlockAreHandledAfterItInOrder) {
    GuiRig rig;
    RealTimePump pump(rig.scheduler);
    WindowShell shell(rig.program, [&](std::function<void()> f) { rig.scheduler.post(std::move(f)); });
    rig.panel->show();
    Panel& p = *rig.panel;
    WindowView& view = shell.windowFor("panel")->view();
    p.blockMs = 3000;

    std::vector<std::string> seenDuringBlock;
    bool loopRan = false;
    QTimer::singleShot(0, [&] {
        // Runs inside the block: the operator clicks and types meanwhile.
        loopRan = true;
        QTest::mouseClick(view.widgetFor(*p.other), Qt::LeftButton);
        QTest::keyClicks(view.widgetFor(*p.digits), "9");
        seenDuringBlock = p.ran;
        rig.clock.advanceBy(3000);
    });
    QTest::mouseClick(view.widgetFor(*p.key), Qt::LeftButton);
    pump.dispatchDue();

    EXPECT_TRUE(loopRan) << "the event loop kept running during the block";
    EXPECT_EQ(seenDuringBlock, (std::vector<std::string>{"key"}));
    EXPECT_EQ(p.ran, (std::vector<std::string>{"key", "key done", "other", "digits:59"}));
}

}  // namespace
}  // namespace mv::test
