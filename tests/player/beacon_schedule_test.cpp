// The beacons in virtual time: the clock beacons at a second past the hour,
// the quarters and the half hour, the minute beacon, the periodic countdown,
// what holds each back, and the seconds field kept in range.
#include "player/beacon_schedule.h"

#include <gtest/gtest.h>

#include "player_rig.h"

namespace mv {
namespace {

class BeaconTest : public test::PlayerRig {
protected:
    void startWithRowOne(LocalDateTime at) {
        start(at);
        m_start = at;
        setRow(1, tone("beacon.wav", 0.5));
    }
    int64_t at(int h, int m, int s) const { return test::msAt(m_start, h, m, s); }
    LocalDateTime m_start;
};

TEST(BeaconFields, SecondsAndMinutesAreComparedAsNumbers) {
    struct Row {
        const char* field;
        int value;
        bool second;
        bool minute;
    };
    for (const Row& r : {Row{"15", 15, true, true}, Row{"05", 5, true, true}, Row{"5", 5, true, true},
                         Row{" 07", 7, true, true}, Row{"00", 0, false, true}, Row{"0", 0, false, true},
                         Row{"60", 60, false, false}, Row{"", 0, false, false}, Row{"abc", 0, false, false},
                         Row{"7.5", 7, false, false}, Row{"15", 16, false, false}, Row{"-5", -5, false, false}}) {
        SCOPED_TRACE(std::string("\"") + r.field + "\" at " + std::to_string(r.value));
        EXPECT_EQ(BeaconSchedule::namesSecond(r.field, r.value), r.second);
        EXPECT_EQ(BeaconSchedule::namesMinute(r.field, r.value), r.minute);
    }
}

TEST_F(BeaconTest, TheHourBeaconPlaysAtItsSecondOnlyAndIsLostUnderACarrier) {
    startWithRowOne({2026, 11, 23, 10, 59, 50, 0});
    operate([&] { check("ONHOUR").setValue(1); });
    runTo(11, 59, 50);
    EXPECT_EQ(keyTimes(), (std::vector<int64_t>{at(11, 0, 15)})) << "only hh:00:15, the default seconds";
    suite->host().setCarrier(true);
    runTo(12, 0, 16);
    suite->host().setCarrier(false);
    runTo(12, 30, 0);
    EXPECT_EQ(keyTimes().size(), 1u) << "held back by the carrier and not made up later";
    // A greyed box fires nothing.
    operate([&] { check("ONHOUR").setValue(2); });
    runTo(13, 0, 30);
    EXPECT_EQ(keyTimes().size(), 1u);
    EXPECT_EQ(label("LocalTime").caption(), "13:00:30");
}

TEST_F(BeaconTest, QuartersAndHalfHourAtTheirMinutesAndTheBusyTestHoldsThemBack) {
    startWithRowOne({2026, 11, 23, 11, 59, 0, 0});
    operate([&] {
        text("TEXT5").setText("05");
        check("QUARTERHOUR").setValue(1);
        check("HALFHOUR").setValue(1);
    });
    runTo(12, 59, 0);
    EXPECT_EQ(keyTimes(), (std::vector<int64_t>{at(12, 15, 5), at(12, 30, 5), at(12, 45, 5)}));
    // Each of the three flags of the busy test holds a beacon back.
    SimulatedHost& host = suite->host();
    const std::pair<int, void (SimulatedHost::*)(bool)> flags[] = {
        {15, &SimulatedHost::setBusy}, {30, &SimulatedHost::setReceiving}, {45, &SimulatedHost::setCarrier}};
    for (const auto& [minute, set] : flags) {
        runTo(13, minute, 4);
        (host.*set)(true);
        runTo(13, minute, 6);
        (host.*set)(false);
    }
    runTo(14, 0, 30);
    EXPECT_EQ(keyTimes().size(), 3u);
}

TEST_F(BeaconTest, TheMinuteBeaconPlaysOnceAnHourWithOrWithoutTheLeadingZero) {
    startWithRowOne({2026, 11, 23, 10, 0, 0, 0});
    operate([&] {
        check("STOPCLOCK3").setValue(1);
        text("BEACONPERIOD3").typeText("07");
    });
    runTo(11, 0, 0);
    operate([&] { text("BEACONPERIOD3").typeText("7"); });
    runTo(12, 0, 0);
    EXPECT_EQ(keyTimes(), (std::vector<int64_t>{at(10, 7, 0), at(11, 7, 0)}));
    suite->host().setReceiving(true);
    runTo(12, 8, 0);
    EXPECT_EQ(keyTimes().size(), 2u) << "held back while a station is heard";
    // The minute field takes digits only.
    EXPECT_TRUE(text("BEACONPERIOD3").digitsOnly());
}

TEST_F(BeaconTest, TheSecondsFieldIsPulledIntoRangeAndTheTickThatFoundItOutsideFiresNothing) {
    startWithRowOne({2026, 11, 23, 10, 59, 50, 0});
    struct Case {
        const char* typed;
        const char* settled;
    };
    for (const Case& c : {Case{"75", "59"}, Case{"", "1"}, Case{"abc", "1"}, Case{"07", "07"}}) {
        SCOPED_TRACE(c.typed);
        operate([&] { text("TEXT5").setText(c.typed); });
        run(1000);
        EXPECT_EQ(text("TEXT5").text(), c.settled);
    }
    // "0" found at 11:00:01 becomes "1" there, but that tick compares with "0".
    operate([&] { check("ONHOUR").setValue(1); });
    runTo(11, 0, 0, 500);
    operate([&] { text("TEXT5").setText("0"); });
    runTo(11, 0, 1, 500);
    EXPECT_EQ(text("TEXT5").text(), "1");
    EXPECT_TRUE(keyTimes().empty());
}

TEST_F(BeaconTest, ThePeriodicBeaconPlaysEveryPeriodEvenWhileAStationIsHeard) {
    startWithRowOne({2026, 11, 23, 10, 0, 0, 0});
    EXPECT_EQ(label("BeaconSeconds1").caption(), "900") << "the default period counts from the load";
    suite->host().setReceiving(true);
    suite->host().setCarrier(true);
    type("BeaconPeriod1", "2");
    EXPECT_EQ(label("BeaconSeconds1").caption(), "120");
    run(10000);
    EXPECT_EQ(label("BeaconSeconds1").caption(), "120") << "paused while the box is clear";
    operate([&] { check("StopClock1").click(); });
    run(10 * 60 * 1000);
    ASSERT_EQ(keyTimes().size(), 5u);
    for (size_t i = 1; i < keyTimes().size(); ++i) EXPECT_EQ(keyTimes()[i] - keyTimes()[i - 1], 120000);

    // Emptied, the period reads "0", the count stops and nothing more plays.
    operate([&] { text("BeaconPeriod1").setText(""); });
    EXPECT_EQ(text("BeaconPeriod1").text(), "0");
    EXPECT_EQ(label("BeaconSeconds1").caption(), "0");
    run(10 * 60 * 1000);
    EXPECT_EQ(keyTimes().size(), 5u);
}

TEST_F(BeaconTest, ABeaconWithNoFileLogsAnErrorAndOpensNoDialog) {
    start({2026, 11, 23, 10, 59, 50, 0});
    operate([&] { check("ONHOUR").setValue(1); });
    runTo(11, 0, 20);
    EXPECT_EQ(logCount("row 1 (TEXT59) has no file; nothing was played"), 1u);
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u);
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(playerPtt(true), 0u);
}

}  // namespace
}  // namespace mv
