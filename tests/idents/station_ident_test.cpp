// Voice and Morse idents, the idle stop and the restart on activity, in
// virtual time with the real voice and the simulated node.
#include "idents/station_ident.h"

#include <gtest/gtest.h>

#include <map>

#include "idents/idents_rig.h"

namespace mv {
namespace {

class StationIdentTest : public test::IdentsRig {
protected:
    void type(const char* field, const std::string& value) {
        operate([&] { text(field).setText(value); });
    }
    void tick(const char* box) {
        operate([&] { check(box).setValue(1); });
    }
    StationIdent& ident() { return idents->ident(); }
};

TEST_F(StationIdentTest, AVoiceIdentEveryMinuteGoesOutKeyedAndOnlyThen) {
    start(true);
    type("BeaconPeriod6", "1");
    tick("StopClock6");
    run(200 * 1000);

    const auto lines = speechLines();
    ASSERT_EQ(lines.size(), 3u);
    for (const auto& line : lines) EXPECT_NE(line.find(R"("text":"Your Call","keyed":true)"), std::string::npos) << line;
    const auto keyed = keyedAt();
    ASSERT_EQ(keyed.size(), 3u);
    EXPECT_GE(keyed[0], 60 * 1000);
    EXPECT_LE(keyed[0], 62 * 1000);
    for (size_t i = 1; i < keyed.size(); ++i) {
        // The count stands still while the ident is spoken, so a period is
        // sixty ticks plus the ident's own length.
        EXPECT_GE(keyed[i] - keyed[i - 1], 60 * 1000);
        EXPECT_LE(keyed[i] - keyed[i - 1], 63 * 1000);
    }

    const AirRecording air = stopRecording();
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f) << "nothing on the air while unkeyed";
    ASSERT_EQ(air.keyedSpans().size(), 3u);
    const auto sound = air.soundSpans(0.003f, 200);
    ASSERT_EQ(sound.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_GE(sound[i].startMs, air.keyedSpans()[i].startMs);
        EXPECT_LE(sound[i].endMs, air.keyedSpans()[i].endMs);
    }
}

TEST_F(StationIdentTest, AVoiceIdentDueWhileAStationIsHeardIsSkippedAndTheNextComesAFullPeriodLater) {
    start();
    type("BeaconPeriod6", "1");
    tick("StopClock6");
    run(55 * 1000);
    suite->host().setReceiving(true);
    run(10 * 1000);
    EXPECT_FALSE(idents->speechPending());
    EXPECT_EQ(label("PTT2").caption(), "Receiving Signal");
    suite->host().setReceiving(false);
    run(50 * 1000);
    EXPECT_TRUE(speechLines().empty());
    run(10 * 1000);
    const auto lines = speechLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_GE(logMs(lines[0]), 120 * 1000);
    EXPECT_LE(logMs(lines[0]), 121 * 1000);
}

TEST_F(StationIdentTest, AMorseIdentDueUnderACarrierGoesOutTheFirstSecondTheNodeTransmits) {
    start();
    // The courtesy letter after the carrier would be the node's next
    // transmission; with it off, the talking clock's announcement is.
    operate([&] { suite->program().window("courtesy")->controlAs<CheckBox>("Check1")->setValue(0); });
    type("CWCallsign", "EA4ABC");
    type("BeaconPeriod7", "1");
    tick("StopClock7");
    run(50 * 1000);
    suite->host().setCarrier(true);
    run(20 * 1000);
    suite->host().setCarrier(false);
    EXPECT_TRUE(calls("SendCW").empty());
    EXPECT_TRUE(ident().cwPending());
    run(10 * 1000);
    EXPECT_TRUE(calls("SendCW").empty()) << "held back until the node transmits";

    // The talking clock keys the transmitter for an announcement.
    const int64_t keyedAt = suite->scheduler().now();
    operate([&] { dynamic_cast<Button*>(suite->program().window("hub")->findByCaption("Say The Time"))->click(); });
    run(1200);
    const auto cw = calls("SendCW");
    ASSERT_EQ(cw.size(), 1u);
    EXPECT_EQ(cw[0].args, (std::vector<std::string>{"0", "EA4ABC"}));
    EXPECT_LE(cw[0].timeMs - keyedAt, 1100);
    EXPECT_TRUE(suite->host().pttKeyed()) << "sent while the node transmits";
    EXPECT_FALSE(ident().cwPending());
}

TEST_F(StationIdentTest, SilenceModeFreezesTheMorseIdentAndSendIdButTheVoiceCountRuns) {
    start();
    tick("Check1");
    tick("StopClock6");
    tick("StopClock7");
    run(5 * 1000);
    EXPECT_EQ(label("BeaconSeconds7").caption(), "15");
    EXPECT_EQ(label("BeaconSeconds6").caption(), "5");
    operate([&] { button("Send ID").click(); });
    EXPECT_TRUE(calls("SendCW").empty());

    operate([&] { check("Check1").setValue(0); });
    operate([&] { button("Send ID").click(); });
    const auto cw = calls("SendCW");
    ASSERT_EQ(cw.size(), 1u);
    EXPECT_EQ(cw[0].args, (std::vector<std::string>{"0", " "})) << "an empty Morse call is sent as one blank";
}

TEST_F(StationIdentTest, AQuietNodeStopsBothIdentsAndTheFirstActivityBringsThemBackSoon) {
    start();
    type("VoicePeriod", "2");
    tick("IDCheck");
    tick("StopClock6");
    tick("StopClock7");
    run(130 * 1000);
    EXPECT_FALSE(ident().voiceTimer().enabled());
    EXPECT_FALSE(ident().cwTimer().enabled());
    EXPECT_FALSE(ident().idleTimer().enabled());
    EXPECT_EQ(label("BeaconSeconds6").caption(), "15");
    EXPECT_EQ(label("BeaconSeconds7").caption(), "10");
    EXPECT_EQ(label("IDSeconds").caption(), "120");
    const size_t spokenBefore = speechLines().size(), cwBefore = calls("SendCW").size();
    run(60 * 1000);
    EXPECT_EQ(speechLines().size(), spokenBefore) << "no idents while idle-stopped";

    suite->host().setCarrier(true);
    const int64_t activityAt = suite->scheduler().now();
    run(1000);
    suite->host().setCarrier(false);
    EXPECT_TRUE(ident().voiceTimer().enabled());
    EXPECT_TRUE(ident().cwTimer().enabled());
    EXPECT_TRUE(ident().idleTimer().enabled());
    run(20 * 1000);
    const auto cw = calls("SendCW");
    ASSERT_EQ(cw.size(), cwBefore + 1);
    EXPECT_NEAR(static_cast<double>(cw.back().timeMs - activityAt), 11000.0, 1000.0);
    const auto lines = speechLines();
    ASSERT_EQ(lines.size(), spokenBefore + 1);
    EXPECT_NEAR(static_cast<double>(logMs(lines.back()) - activityAt), 16000.0, 1000.0);
}

TEST_F(StationIdentTest, EditedPeriodsRestartTheirCountsAndAnEmptiedOneBecomesOneMinute) {
    start();
    struct Case {
        const char* field;
        const char* typed;
        const char* shown;
        const char* seconds;
    };
    const Case cases[] = {{"BeaconPeriod6", "", "1", "60"}, {"BeaconPeriod6", "0", "1", "60"},
                          {"BeaconPeriod6", "3", "3", "180"}, {"BeaconPeriod7", "", "1", "60"},
                          {"BeaconPeriod7", "12", "12", "720"}};
    const std::map<std::string, std::string> secondsOf = {{"BeaconPeriod6", "BeaconSeconds6"},
                                                          {"BeaconPeriod7", "BeaconSeconds7"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.field) + " := \"" + c.typed + "\"");
        type(c.field, c.typed);
        EXPECT_EQ(text(c.field).text(), c.shown);
        EXPECT_EQ(label(secondsOf.at(c.field).c_str()).caption(), c.seconds);
        Timer& t = std::string(c.field) == "BeaconPeriod6" ? ident().voiceTimer() : ident().cwTimer();
        EXPECT_EQ(t.enabled(), std::string(c.typed) == c.shown) << "an emptied or zero period stops its timer";
    }

    // Emptying the idle time greys its box out; a real time brings it back.
    type("VoicePeriod", "");
    EXPECT_EQ(text("VoicePeriod").text(), "1");
    EXPECT_FALSE(check("IDCheck").enabled());
    EXPECT_EQ(label("IDSeconds").caption(), "60");
    type("VoicePeriod", "5");
    EXPECT_TRUE(check("IDCheck").enabled());
    EXPECT_EQ(label("IDSeconds").caption(), "300");
}

TEST_F(StationIdentTest, TheMorseCountFollowsTheVoiceTimerAndStandsStillWhileAStationIsHeard) {
    start();
    tick("StopClock7");
    type("BeaconPeriod6", "");
    run(1000);
    EXPECT_FALSE(ident().cwTimer().enabled()) << "stopped with the voice ident's timer";
    type("BeaconPeriod6", "5");
    run(3000);
    EXPECT_TRUE(ident().cwTimer().enabled());
    EXPECT_NE(label("BeaconSeconds7").caption(), "15");
    suite->host().setReceiving(true);
    run(1000);  // the clock sees it within a second
    const std::string before = label("BeaconSeconds7").caption();
    run(5000);
    EXPECT_EQ(label("BeaconSeconds7").caption(), before) << "no Morse count while an Internet station talks";
    suite->host().setReceiving(false);
    run(2000);
    EXPECT_NE(label("BeaconSeconds7").caption(), before);
}

TEST_F(StationIdentTest, IdentButtonsFillAnEmptyCallAndSpeakKeyedOrNot) {
    start();
    type("Callsign", "");
    operate([&] { button("PTT Call Now").click(); });
    EXPECT_EQ(text("Callsign").text(), "NoCall");
    ASSERT_EQ(speechLines().size(), 1u);
    EXPECT_NE(speechLines()[0].find(R"("text":"NoCall","keyed":true)"), std::string::npos);

    type("Callsign", "");
    const size_t keyings = calls("SetPTT").size();
    operate([&] { button("Say Call Now").click(); });
    EXPECT_EQ(text("Callsign").text(), "No Callsign");
    ASSERT_EQ(speechLines().size(), 2u);
    EXPECT_NE(speechLines()[1].find(R"("text":"No Callsign","keyed":false)"), std::string::npos);
    EXPECT_EQ(calls("SetPTT").size(), keyings) << "unkeyed speech keys nothing";
    EXPECT_TRUE(suite->speech()->speaking());
}

TEST(SplitCall, EveryCharacterIsFollowedByOneBlank) {
    EXPECT_EQ(splitCall(""), "");
    EXPECT_EQ(splitCall("EA4"), "E A 4 ");
    EXPECT_EQ(splitCall("EA4-L"), "E A 4 - L ");
    EXPECT_EQ(splitCall("\xC3\x91U"), "\xC3\x91 U ") << "an accented letter stays whole";
    EXPECT_EQ(characterCount("\xC3\x91U"), 2u);
}

}  // namespace
}  // namespace mv
