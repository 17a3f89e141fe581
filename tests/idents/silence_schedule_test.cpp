// The weekly silence schedule: which field texts name a minute, and the
// slots switching silence mode on their days, in virtual time.
#include "idents/silence_schedule.h"

#include <gtest/gtest.h>

#include "idents/announcement_switches.h"
#include "idents/idents_rig.h"

namespace mv {
namespace {

TEST(ScheduleMatchesTest, HoursAndMinutesAreReadAsNumbersAndOnlyTheFifteenthSecondMatches) {
    const LocalDateTime at{2026, 11, 23, 7, 5, 15, 0};
    struct Case {
        const char* hour;
        const char* minutes;
        bool matches;
    };
    const Case cases[] = {
        {"7", "5", true},  {"07", "05", true}, {"7", "05", true}, {"07", "5", true}, {"99", "99", false},
        {"", "5", false},  {"7", "", false},   {"19", "5", false}, {"7", "6", false}, {"x7", "5", false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(scheduleMatches(c.hour, c.minutes, at), c.matches) << c.hour << ":" << c.minutes;
    EXPECT_FALSE(scheduleMatches("7", "5", {2026, 11, 23, 7, 5, 14, 0}));
    EXPECT_FALSE(scheduleMatches("7", "5", {2026, 11, 23, 7, 5, 16, 0}));
    EXPECT_TRUE(scheduleMatches("0", "0", {2026, 11, 23, 0, 0, 15, 0}));
}

class SilenceScheduleTest : public test::IdentsRig {
protected:
    bool silenced() { return check("Check1").ticked(); }
    // Runs to `hh:mm:ss` of the day after the start when `nextDay`.
    void runTo(int h, int m, int s, bool nextDay = false) {
        const int64_t target = ((nextDay ? 24 : 0) + h) * 3600000LL + m * 60000LL + s * 1000LL -
                               ((startedAt.hour * 60LL + startedAt.minute) * 60 + startedAt.second) * 1000;
        run(target - suite->scheduler().now());
    }
};

TEST_F(SilenceScheduleTest, AMondaySlotSilencesAtHalfPastTenFifteenAndOnlyTuesdaysBoxEndsItNextMorning) {
    // Monday 23 November 2026, late evening.
    start(false, {}, {2026, 11, 23, 22, 29, 0, 0});
    set("HourOFF1", "22");
    set("MinsOFF1", "30");
    set("HourON1b", "07");
    set("MinsON1b", "0");
    set("Mon", "1");
    runTo(22, 30, 14);
    EXPECT_FALSE(silenced());
    runTo(22, 30, 16);
    EXPECT_TRUE(silenced());
    EXPECT_EQ(label("ShowTime2").caption(), "22:30:16");
    runTo(7, 0, 30, true);
    EXPECT_TRUE(silenced()) << "Tuesday is not ticked";
    EXPECT_TRUE(chatSent().empty()) << "no notices unless warned";
}

TEST_F(SilenceScheduleTest, ATuesdaySlotEndsSilenceAtSevenFifteenSecondsAndSaysSoWhenWarned) {
    start(true, {}, {2026, 11, 24, 6, 59, 50, 0});  // Tuesday
    set("HourON2b", "7");
    set("MinsON2b", "00");
    set("Tue2", "1");
    set("Check2", "1");
    operate([&] { check("Check1").setValue(1); });
    runTo(7, 0, 14);
    EXPECT_TRUE(silenced());
    runTo(7, 0, 15);
    EXPECT_FALSE(silenced());
    EXPECT_EQ(chatSent(), (std::vector<std::string>{"24/11/2026 07:00:15  <Cerrado modo Silencio>"}));
    run(3000);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Cerrado modo Silencio"}));
    const AirRecording air = stopRecording();
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f);
}

TEST_F(SilenceScheduleTest, OffAndOnAtTheSameMinuteSwitchOnAndAtOnceOffWhileSlotsLeftAtTheirDefaultsNeverAct) {
    start(false, {}, {2026, 11, 25, 12, 0, 0, 0});  // Wednesday
    for (const char* day : {"Wed", "Wed2", "Wed3"}) set(day, "1");
    set("HourOFF3", "12");
    set("MinsOFF3", "1");
    set("HourON3b", "12");
    set("MinsON3b", "1");
    set("Check2", "1");
    runTo(12, 1, 16);
    EXPECT_FALSE(silenced());
    EXPECT_EQ(chatSent().size(), 2u) << "on, then at once off";
    EXPECT_FALSE(idents->switches().silenceAwaitsNotice());
    run(3000);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Cerrado modo Silencio"}));
}

}  // namespace
}  // namespace mv
