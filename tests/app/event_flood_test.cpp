// A flood of chat lines and DTMF strings in a minute of virtual time: every
// window's lists and texts stay within their bounds, the timers keep their
// schedule through it and the transmitter ends released. Resident memory over
// the same flood: bench/event_flood.
#include "event_flood.h"

#include <gtest/gtest.h>

#include "messages/messages_window.h"
#include "support/temp_dir.h"

namespace mv::test {
namespace {

TEST(EventFloodTest, AMinuteOfFloodStaysBoundedKeepsTheScheduleAndEndsReleased) {
    TempDir dir;
    FloodOptions o;
    o.settingsDir = dir.path() / "settings";
    o.voiceFolder = std::string(MV_TEST_VOICE_DIR) + "/";
    o.toneFolder = std::string(MV_TEST_TONES_DIR) + "/";
    const FloodReport r = runEventFlood(o);

    EXPECT_FALSE(r.programEnded);
    // The chat log is full and no longer: the flood is many times its bound.
    EXPECT_EQ(r.longestLineList, MessagesWindow::kLogLines) << r.longestLineListName;
    // No text box collects the flood (a field that grew with it would hold
    // far more than any setting or status line).
    EXPECT_LT(r.longestText, 4096u) << r.longestTextName;
    EXPECT_LT(r.longestList, 1000u);
    // Every second got its tick, a late one at most, and the hour's
    // announcement keyed within a second of the hour.
    EXPECT_GE(r.probeTicks + 1, r.secondsPassed);
    EXPECT_LE(r.probeTicks, r.secondsPassed);
    ASSERT_GE(r.hourKeyedAfterMs, 0);
    EXPECT_LT(r.hourKeyedAfterMs, 1000);
    EXPECT_TRUE(r.endsReleased);
}

}  // namespace
}  // namespace mv::test
