// Window-timer semantics in virtual time.
#include "core/scheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/errors.h"

namespace mv {
namespace {

class SchedulerTest : public ::testing::Test {
protected:
    VirtualClock clock{LocalDateTime{2026, 11, 22, 14, 0, 0, 0}};
    Scheduler scheduler{clock};
};

TEST_F(SchedulerTest, FirstTickComesOneIntervalAfterEnabling) {
    int ticks = 0;
    Timer t(scheduler, "t", 10000, true, [&] { ++ticks; });
    scheduler.runUntil(9999);
    EXPECT_EQ(ticks, 0);
    scheduler.runUntil(10000);
    EXPECT_EQ(ticks, 1);
    scheduler.runUntil(30000);
    EXPECT_EQ(ticks, 3);
}

TEST_F(SchedulerTest, SharedWakeupsPutTimersStartedApartOnOneGridAndKeepTheirPeriods) {
    // Started at odd moments, as windows load in real time: 100 ms, 500 ms
    // and 1 s timers, and a 10 ms one.
    struct Started {
        int interval;
        int64_t at;
        std::vector<int64_t> ticks;
    };
    auto wakeupsBetween = [](const std::vector<Started>& timers, int64_t from, int64_t to) {
        std::vector<int64_t> all;
        for (const Started& s : timers)
            for (int64_t t : s.ticks)
                if (t >= from && t < to) all.push_back(t);
        std::sort(all.begin(), all.end());
        return std::unique(all.begin(), all.end()) - all.begin();
    };
    for (bool share : {false, true}) {
        VirtualClock c{LocalDateTime{2026, 11, 22, 14, 0, 0, 0}};
        Scheduler s{c};
        s.setShareWakeups(share);
        std::vector<Started> timers = {{100, 3, {}}, {1000, 37, {}}, {500, 71, {}}, {100, 152, {}}, {1000, 999, {}}};
        std::vector<std::unique_ptr<Timer>> owned;
        for (Started& t : timers) {
            s.runUntil(t.at);
            owned.push_back(std::make_unique<Timer>(s, "t", t.interval, true, [&t, &s] { t.ticks.push_back(s.now()); }));
        }
        s.runUntil(5000);
        for (const Started& t : timers) {
            ASSERT_FALSE(t.ticks.empty());
            const int64_t first = t.ticks.front() - t.at;
            EXPECT_GE(first, t.interval);
            EXPECT_LE(first, share ? t.interval + 99 : t.interval) << "started at " << t.at;
            for (size_t i = 1; i < t.ticks.size(); ++i) EXPECT_EQ(t.ticks[i] - t.ticks[i - 1], t.interval);
            EXPECT_EQ(t.ticks.front() % 100 == 0, share || t.at % 100 == 0) << "started at " << t.at;
        }
        EXPECT_EQ(wakeupsBetween(timers, 2000, 3000), share ? 10 : 24);
    }
    VirtualClock c{LocalDateTime{2026, 11, 22, 14, 0, 0, 0}};
    Scheduler s{c};
    s.setShareWakeups(true);
    s.runUntil(3);
    std::vector<int64_t> fine;
    Timer tenMs(s, "fine", 10, true, [&] { fine.push_back(s.now()); });
    s.runUntil(100);
    EXPECT_EQ(fine, (std::vector<int64_t>{20, 30, 40, 50, 60, 70, 80, 90, 100})) << "a 10 ms timer keeps its own grain";
}

TEST_F(SchedulerTest, ZeroIntervalAndDisabledTimersNeverTick) {
    int ticks = 0;
    Timer zero(scheduler, "zero", 0, true, [&] { ++ticks; });
    Timer off(scheduler, "off", 10, false, [&] { ++ticks; });
    scheduler.runUntil(1000);
    EXPECT_EQ(ticks, 0);
    EXPECT_EQ(scheduler.nextDueTime(), -1);
}

TEST_F(SchedulerTest, EnablingARunningTimerChangesNothingButIntervalChangeRestartsThePeriod) {
    std::vector<int64_t> at;
    Timer t(scheduler, "t", 1000, true, [&] { at.push_back(scheduler.now()); });
    scheduler.runUntil(600);
    t.setEnabled(true);  // already running: keeps its period
    scheduler.runUntil(1000);
    ASSERT_EQ(at, (std::vector<int64_t>{1000}));
    scheduler.runUntil(1500);
    t.setInterval(1000);  // restarts from now
    scheduler.runUntil(2400);
    EXPECT_EQ(at.size(), 1u);
    scheduler.runUntil(2500);
    EXPECT_EQ(at, (std::vector<int64_t>{1000, 2500}));
}

TEST_F(SchedulerTest, PeriodsDoNotDriftWhenHandlersTakeTime) {
    std::vector<int64_t> at;
    Timer t(scheduler, "t", 100, true, [&] {
        at.push_back(scheduler.now());
        scheduler.block(7);  // a slow handler
    });
    scheduler.runUntil(1000);
    ASSERT_EQ(at.size(), 10u);
    for (size_t i = 0; i < at.size(); ++i) EXPECT_EQ(at[i], 100 * static_cast<int64_t>(i + 1));
}

TEST_F(SchedulerTest, ALateTimerFiresOnceAndKeepsItsGrid) {
    std::vector<int64_t> at;
    std::vector<std::string> wall;
    Timer t(scheduler, "t", 1000, true, [&] {
        at.push_back(scheduler.now());
        wall.push_back(scheduler.wallNow().timeText());
    });
    bool blocked = false;
    Timer blocker(scheduler, "blocker", 1500, true, [&] {
        if (!blocked) scheduler.block(3200);
        blocked = true;
    });
    scheduler.runUntil(6000);
    // 1000 ticks; 1500 blocks until 4700: the ticks due at 2000, 3000 and 4000 fire once,
    // late, then the grid resumes at 5000 and 6000.
    EXPECT_EQ(at, (std::vector<int64_t>{1000, 4700, 5000, 6000}));
    // While late, the handler sees the latest due time not after now.
    EXPECT_EQ(wall[1], "14:00:04");
}

TEST_F(SchedulerTest, ATimerIsNeverReenteredByItsOwnHandler) {
    int depth = 0, maxDepth = 0, ticks = 0;
    Timer t(scheduler, "poll", 1, true, [&] {
        ++ticks;
        ++depth;
        maxDepth = std::max(maxDepth, depth);
        scheduler.block(5);
        scheduler.processPendingEvents();
        --depth;
    });
    scheduler.runUntil(100);
    EXPECT_EQ(maxDepth, 1);
    EXPECT_GT(ticks, 5);
}

TEST_F(SchedulerTest, ProcessPendingEventsRunsOtherDueWorkInsideAHandler) {
    std::vector<std::string> order;
    Timer slow(scheduler, "slow", 100, true, [&] {
        order.push_back("slow-begin");
        scheduler.post([&] { order.push_back("message"); });
        scheduler.processPendingEvents();
        order.push_back("slow-end");
    });
    scheduler.runUntil(100);
    EXPECT_EQ(order, (std::vector<std::string>{"slow-begin", "message", "slow-end"}));
}

TEST_F(SchedulerTest, MessagesAndTicksRunInDueOrderThenQueueOrder) {
    std::vector<std::string> order;
    Timer t(scheduler, "t", 10, true, [&] { order.push_back("tick"); });
    scheduler.runUntil(5);
    scheduler.post([&] { order.push_back("a"); });
    scheduler.post([&] { order.push_back("b"); });
    scheduler.runUntil(10);
    EXPECT_EQ(order, (std::vector<std::string>{"a", "b", "tick"}));
}

TEST_F(SchedulerTest, AnErrorEscapingAHandlerIsReportedAndDispatchGoesOn) {
    std::vector<std::string> errors;
    scheduler.setErrorSink([&](const std::string& e) { errors.push_back(e); });
    int after = 0;
    scheduler.post([] { throw HostError("host went away"); });
    scheduler.post([&] { ++after; });
    scheduler.runUntil(1);
    EXPECT_EQ(errors, (std::vector<std::string>{"host went away"}));
    EXPECT_EQ(after, 1);
}

TEST_F(SchedulerTest, EndingTheProgramStopsEverythingIncludingTheOuterHandler) {
    std::vector<std::string> order;
    Timer t(scheduler, "t", 10, true, [&] {
        order.push_back("outer");
        scheduler.post([&] { throw ProgramEnded{}; });
        scheduler.processPendingEvents();
        order.push_back("after-end");  // must not run
    });
    Timer other(scheduler, "other", 20, true, [&] { order.push_back("later"); });
    scheduler.runUntil(1000);
    EXPECT_EQ(order, (std::vector<std::string>{"outer"}));
    EXPECT_TRUE(scheduler.stopped());
}

TEST_F(SchedulerTest, ATimerDestroyedOrDisabledInsideItsHandlerStaysQuiet) {
    int ticks = 0;
    auto t = std::make_unique<Timer>(scheduler, "t", 10, true, nullptr);
    t->setHandler([&] {
        ++ticks;
        t.reset();
    });
    Timer self(scheduler, "self", 10, true, nullptr);
    int selfTicks = 0;
    self.setHandler([&] {
        ++selfTicks;
        self.setEnabled(false);
    });
    scheduler.runUntil(100);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(selfTicks, 1);
}

TEST_F(SchedulerTest, BlockUntilStopsWhenTheConditionHolds) {
    const int64_t start = scheduler.now();
    scheduler.blockUntil([&] { return scheduler.now() - start >= 250; }, 10000);
    EXPECT_EQ(scheduler.now() - start, 250);
    scheduler.blockUntil([] { return false; }, 40);
    EXPECT_EQ(scheduler.now() - start, 290);
}

// The real clock's blocks go through the block hook, which may wait all the
// time it is given (the headless run waits for signals that long): a wait for
// a condition gives it a few ms at a time, so an utterance that has ended is
// seen at once instead of at the end of its limit.
TEST(SchedulerRealTime, AWaitForAConditionAsksTheBlockHookToWaitOnlyAFewMsAtATime) {
    struct HandClock final : Clock {
        int64_t monotonicMs() const override { return now; }
        LocalDateTime localTimeAt(int64_t ms) const override { return LocalDateTime::fromNaiveMs(ms); }
        bool isVirtual() const override { return false; }
        void advanceTo(int64_t ms) override { now = ms; }
        int64_t now = 1000;
    } clock;
    Scheduler scheduler(clock);
    std::vector<int64_t> asked;
    scheduler.setBlockHook([&](int64_t msLeft) {
        asked.push_back(msLeft);
        clock.now += msLeft;  // waits all it is given, as a signal wait does
    });
    scheduler.blockUntil([&] { return clock.now >= 1040; }, 180000);
    EXPECT_GE(clock.now, 1040);
    EXPECT_LE(clock.now, 1045) << "the utterance's end was seen within one step";
    ASSERT_FALSE(asked.empty());
    EXPECT_LE(*std::max_element(asked.begin(), asked.end()), 5);

    asked.clear();
    const int64_t start = clock.now;
    scheduler.blockUntil([] { return false; }, 12);
    EXPECT_EQ(clock.now - start, 12) << "a condition that never holds still ends at the limit";
    EXPECT_EQ(asked, (std::vector<int64_t>{5, 5, 2}));
}

}  // namespace
}  // namespace mv
