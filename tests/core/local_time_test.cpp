#include "core/local_time.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

TEST(LocalDateTimeTest, RoundTripsAcrossMonthsYearsAndLeapDays) {
    for (const LocalDateTime t : {LocalDateTime{2026, 11, 22, 13, 59, 50, 0}, LocalDateTime{2024, 2, 29, 23, 59, 59, 999},
                                  LocalDateTime{1999, 12, 31, 0, 0, 0, 1}, LocalDateTime{2100, 3, 1, 12, 0, 0, 0}}) {
        EXPECT_EQ(LocalDateTime::fromNaiveMs(t.toNaiveMs()), t) << t.isoText();
    }
    const LocalDateTime nye{2026, 12, 31, 23, 59, 59, 500};
    EXPECT_EQ(LocalDateTime::fromNaiveMs(nye.toNaiveMs() + 500).isoText(), "2027-01-01T00:00:00.000");
}

TEST(LocalDateTimeTest, TextsAreFixedWidth24Hour) {
    const LocalDateTime t{2026, 1, 2, 3, 4, 5, 6};
    EXPECT_EQ(t.timeText(), "03:04:05");
    EXPECT_EQ(t.isoText(), "2026-01-02T03:04:05.006");
    EXPECT_EQ(t.dateTimeText(), "02/01/2026 03:04:05") << "day first, as the operators write it";
    EXPECT_EQ((LocalDateTime{2026, 11, 22, 0, 0, 0, 0}).weekday(), 0);  // a Sunday
    EXPECT_EQ((LocalDateTime{2026, 11, 27, 0, 0, 0, 0}).weekday(), 5);
}

TEST(LocalDateTimeTest, ParseRejectsImpossibleDates) {
    EXPECT_TRUE(LocalDateTime::parse("2026-11-22 13:59:50").has_value());
    for (const char* bad : {"2026-02-30 00:00:00", "2026-11-22 24:00:00", "2026-11-22", "22/11/2026 10:00:00",
                            "2026-11-22 10:00:00x"})
        EXPECT_FALSE(LocalDateTime::parse(bad).has_value()) << bad;
}

}  // namespace
}  // namespace mv
