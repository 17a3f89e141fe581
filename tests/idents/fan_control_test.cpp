// The fan on the host's serial line, in virtual time: a run held at its full
// length while the node transmits, the start delay, the line options, and
// the edits of the two periods.
#include "idents/fan_control.h"

#include <gtest/gtest.h>

#include "idents/idents_rig.h"

namespace mv {
namespace {

class FanControlTest : public test::IdentsRig {
protected:
    void SetUp() override {
        start();
        other = suite->host().createObject("test", nullptr);
    }
    // The node transmits for `ms`: another window keeps the host keyed (the
    // talking clock's release check unkeys anything it did not key itself,
    // so the window keys again every 100 ms, as a playing window does).
    void transmit(int64_t ms) {
        for (int64_t t = 0; t < ms; t += 100) {
            other->setPTT(true);
            run(100);
        }
        other->setPTT(false);
    }
    // Times of the ident window's line changes, in ms since the start.
    std::vector<std::pair<int64_t, bool>> lineChanges(const char* call) const {
        std::vector<std::pair<int64_t, bool>> out;
        for (const auto& c : calls(call))
            if (out.empty() || out.back().second != (c.args[0] == "true")) out.emplace_back(c.timeMs, c.args[0] == "true");
        return out;
    }
    FanControl& fan() { return idents->fan(); }
    std::unique_ptr<HostObject> other;
};

TEST_F(FanControlTest, AThirtySecondTransmissionRunsTheFanUntilTwoMinutesAfterItEnds) {
    set("UseRTS", "True");
    set("FanPeriod", "2");
    set("FanCTRL", "1");
    EXPECT_FALSE(fan().runTimer().running()) << "the period was typed before the fan was in use";
    suite->host().clearCommands();
    run(1000);

    const int64_t startMs = suite->scheduler().now();
    transmit(30 * 1000);
    const int64_t endMs = suite->scheduler().now();
    EXPECT_EQ(label("FanOnOff").caption(), "Fan ON");
    EXPECT_EQ(label("FanSeconds").caption(), "120") << "held at its full length while transmitting";
    EXPECT_EQ(label("FanOnOff").foreColor(), (Rgb{0, 128, 0}));
    run(125 * 1000);
    const auto changes = lineChanges("SetRTS");
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_TRUE(changes[0].second);
    EXPECT_LE(changes[0].first - startMs, 1000);
    EXPECT_FALSE(changes[1].second);
    EXPECT_NEAR(static_cast<double>(changes[1].first - endMs), 120000.0, 1000.0);
    EXPECT_EQ(label("FanOnOff").caption(), "Fan OFF");
    EXPECT_EQ(label("FanOnOff").foreColor(), (Rgb{128, 0, 0}));
    EXPECT_FALSE(suite->host().rts());
    EXPECT_TRUE(calls("SetDTR").empty()) << "only the chosen line";

    // A period typed while the fan is in use starts a run at once; clearing
    // the field stops it.
    set("FanPeriod", "3");
    EXPECT_TRUE(fan().runTimer().running());
    EXPECT_EQ(label("FanSeconds").caption(), "180");
    set("FanPeriod", "");
    EXPECT_EQ(text("FanPeriod").text(), "1");
    EXPECT_EQ(label("FanSeconds").caption(), "60");
    EXPECT_FALSE(fan().runTimer().running());
}

TEST_F(FanControlTest, WithAStartDelayOnlyATransmissionLongerThanTheDelayStartsTheFan) {
    set("UseDTR", "True");
    set("FanCTRL", "1");
    set("DelayCTRL", "1");
    set("DelayPeriod", "10");
    suite->host().clearCommands();

    transmit(5 * 1000);
    run(20 * 1000);
    EXPECT_TRUE(calls("SetDTR").empty()) << "five seconds never start the fan";
    EXPECT_EQ(label("DelaySeconds").caption(), "10");

    const int64_t startMs = suite->scheduler().now();
    transmit(20 * 1000);
    const auto changes = lineChanges("SetDTR");
    ASSERT_FALSE(changes.empty());
    EXPECT_TRUE(changes[0].second);
    EXPECT_NEAR(static_cast<double>(changes[0].first - startMs), 10000.0, 1100.0);
}

TEST_F(FanControlTest, WithoutALineTheRunIsOnlyShownAndSwitchingOffFreezesItWithTheLineDown) {
    set("FanCTRL", "1");
    suite->host().clearCommands();
    transmit(3000);
    run(2000);
    EXPECT_EQ(label("FanOnOff").caption(), "Fan ON");
    EXPECT_TRUE(calls("SetRTS").empty());
    EXPECT_TRUE(calls("SetDTR").empty());
    EXPECT_FALSE(idents->controlAs<OptionButton>("UseRTS")->enabled()) << "the line is fixed while the fan is in use";

    set("UseRTS", "True");  // greyed for the operator, but a scenario may still set it
    run(2000);
    EXPECT_TRUE(suite->host().rts());
    set("FanCTRL", "0");
    const std::string frozen = label("FanSeconds").caption();
    run(3000);
    EXPECT_EQ(label("FanSeconds").caption(), frozen);
    EXPECT_EQ(label("FanOnOff").caption(), "Fan OFF");
    EXPECT_FALSE(suite->host().rts());
    EXPECT_TRUE(fan().runTimer().running());
    EXPECT_TRUE(idents->controlAs<OptionButton>("UseRTS")->enabled());
}

TEST_F(FanControlTest, KeyedSpeechStartsARunAndDropsTheLineBrieflyAfterIt) {
    set("UseRTS", "True");
    set("FanCTRL", "1");
    suite->host().clearCommands();
    click("PTT Call Now");
    const auto changes = lineChanges("SetRTS");
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_TRUE(changes[0].second) << "raised as the voice keys";
    EXPECT_FALSE(changes[1].second) << "dropped after the utterance";
    run(1000);
    EXPECT_TRUE(suite->host().rts()) << "the run raises it again at its next tick";
}

}  // namespace
}  // namespace mv
