// The connection line's 12-hour time at the turns of the day.
#include "core/connection_line.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

TEST(ConnectionLineTest, TwelveHourTimeWithoutLeadingZeroAndTheFieldsAsGiven) {
    struct Case {
        int hour, minute;
        const char* time;
    } cases[] = {
        {0, 0, " 12:00 AM"}, {0, 30, " 12:30 AM"}, {1, 5, " 1:05 AM"},  {11, 59, " 11:59 AM"},
        {12, 0, " 12:00 PM"}, {12, 59, " 12:59 PM"}, {14, 5, " 2:05 PM"}, {23, 59, " 11:59 PM"},
    };
    for (const Case& c : cases) {
        const LocalDateTime at{2026, 11, 22, c.hour, c.minute, 42, 0};
        EXPECT_EQ(connectionLine(at, "N0CALL", "Juan", "10.0.0.7"), std::string(c.time) + " -- N0CALL -- Juan -- 10.0.0.7")
            << c.hour << ":" << c.minute;
    }
    EXPECT_EQ(connectionLine({2026, 11, 22, 14, 5, 0, 0}, "EA4XYZ-L", "", ""), " 2:05 PM -- EA4XYZ-L --  -- ");
}

}  // namespace
}  // namespace mv
