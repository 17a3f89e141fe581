// The long-transmission message in virtual time: when it falls due, when it
// goes out after the over, and that it goes out once.
#include "courtesy/long_transmission.h"

#include <gtest/gtest.h>

#include "courtesy_rig.h"
#include "platform/audio/air_recorder.h"

namespace mv {
namespace {

constexpr const char* kInternetSide = "[SETTINGS]\nCHECK2=1\nBEACONPERIOD=150\nTEXT8=3\nTEXT6=Sea breve, por favor\n";
constexpr const char* kRfSide = "[SETTINGS]\nCHECK3=1\nBEACONPERIOD=150\nTEXT8=3\nTEXT6=Sea breve, por favor\n";

class LongTransmissionTest : public test::CourtesyRig {
protected:
    void internetOver(int64_t fromMs, int64_t toMs) {
        at(fromMs);
        suite->host().setReceiving(true);
        at(toMs);
        suite->host().setReceiving(false);
    }
    void rfOver(int64_t fromMs, int64_t toMs) {
        at(fromMs);
        suite->host().setCarrier(true);
        at(toMs);
        suite->host().setCarrier(false);
    }
};

TEST_F(LongTransmissionTest, AnOverPastTheAllowedTimeGetsOneChatMessageThreeToFourSecondsAfterItEnds) {
    start(kInternetSide);
    internetOver(2500, 162500);
    at(180000);
    ASSERT_EQ(times("SendChatText").size(), 1u);
    const int64_t after = times("SendChatText")[0] - 162500;
    EXPECT_GE(after, 3000);
    EXPECT_LE(after, 4000);
    EXPECT_EQ(lastArgs("SendChatText"), (std::vector<std::string>{"Sea breve, por favor"}));
    EXPECT_FALSE(courtesy->longTransmission().internetPending());
}

TEST_F(LongTransmissionTest, AShorterOverOrAnUncountedSideGetsNothing) {
    start(kInternetSide);
    internetOver(2500, 142500);
    at(160000);
    EXPECT_EQ(count("SendChatText"), 0u);
    EXPECT_EQ(label("IPCounter").caption(), "150") << "back at the full period once the station stops";
    stopSuite();
    start("[SETTINGS]\nCHECK2=0\n");
    internetOver(2500, 400000);
    at(410000);
    EXPECT_EQ(count("SendChatText"), 0u);
    EXPECT_EQ(label("IPCounter").caption(), "150");
}

TEST_F(LongTransmissionTest, ARfUserHearsItSpokenByTheIdentVoice) {
    start(kRfSide);
    rfOver(2500, 162500);
    at(180000);
    ASSERT_EQ(voice->said.size(), 1u);
    EXPECT_EQ(voice->said[0].text, "Sea breve, por favor");
    const int64_t after = voice->said[0].atMs - origin - 162500;
    EXPECT_GE(after, 3000);
    EXPECT_LE(after, 4000);
    EXPECT_EQ(count("SendChatText"), 0u);
}

TEST_F(LongTransmissionTest, TalkingThroughSeveralPeriodsStillGetsOneMessage) {
    start("[SETTINGS]\nCHECK2=1\nBEACONPERIOD=60\nTEXT6=x\n");
    internetOver(2500, 200000);
    at(230000);
    EXPECT_EQ(count("SendChatText"), 1u);
}

TEST_F(LongTransmissionTest, TheSuitesOwnIdentWindowSpeaksTheRfMessageKeyedAndFreesTheTransmitter) {
    recordPath = (dir.path() / "air.wav").string();
    start(kRfSide, test::IdentVoice::Suites);
    ASSERT_NE(surfaceOf<SpeechDesk>(suite->program(), "idents"), nullptr) << "the suite has an ident window";
    rfOver(2500, 162500);
    at(175000);
    std::vector<int64_t> keyed;
    for (const auto& c : suite->host().commands())
        if (c.call == "SetPTT" && c.window == "idents" && c.args.at(0) == "true" && c.timeMs - origin > 162500)
            keyed.push_back(c.timeMs - origin);
    ASSERT_EQ(keyed.size(), 1u) << "keyed once, for the message";
    EXPECT_GE(keyed[0] - 162500, 3000);
    EXPECT_LE(keyed[0] - 162500, 4000);
    EXPECT_EQ(logCount(R"("window":"idents","op":"speak","text":"Sea breve, por favor","keyed":true)"), 1u);
    EXPECT_FALSE(courtesy->longTransmission().rfPending());
    EXPECT_FALSE(suite->host().pttKeyed()) << "released after the utterance";

    suite->air().stopRecording();
    const AirRecording air = AirRecording::load(recordPath);
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f) << "the voice is heard only keyed";
    // The RF courtesy's Morse comes first; the voice follows the key.
    double spokenMs = 0;
    for (const auto& span : air.soundSpans())
        if (span.startMs >= keyed[0] - 1) spokenMs += span.lengthMs();
    EXPECT_GT(spokenMs, 500.0) << "the message was spoken";
}

TEST_F(LongTransmissionTest, AStationBackBeforeTheMessageHoldsItUntilItStopsAgain) {
    start(kInternetSide);
    internetOver(2500, 162500);
    internetOver(165500, 175500);
    at(178999);
    EXPECT_EQ(count("SendChatText"), 0u);
    EXPECT_TRUE(courtesy->longTransmission().internetPending());
    at(179000);
    EXPECT_EQ(times("SendChatText"), (std::vector<int64_t>{179000}));
}

TEST_F(LongTransmissionTest, ADelayOfZeroLeavesTheMessageDueForever) {
    start("[SETTINGS]\nCHECK2=1\nBEACONPERIOD=150\nTEXT8=0\n");
    internetOver(2500, 162500);
    at(400000);
    EXPECT_EQ(count("SendChatText"), 0u);
    EXPECT_TRUE(courtesy->longTransmission().internetPending());
}

TEST_F(LongTransmissionTest, AfterAnRfTimeOutNoRfMessageFallsDueAgain) {
    start("[SETTINGS]\nCHECK3=1\nBEACONPERIOD=100\nBEACONPERIOD2=1\nCHECK4=1\n");
    rfOver(2500, 120000);
    const std::string frozen = label("RFCounter").caption();
    rfOver(130000, 180000);
    at(200000);
    EXPECT_EQ(count("PerformAction"), 3u) << "one time-out: once at it, twice when quiet";
    EXPECT_TRUE(voice->said.empty());
    EXPECT_EQ(label("RFCounter").caption(), frozen);
}

TEST_F(LongTransmissionTest, PruebaSendsAndSpeaksTheTextAsItIsAndBorrarEmptiesIt) {
    start();
    click("btnTestMessage");
    EXPECT_EQ(count("SendChatText"), 1u);
    ASSERT_EQ(voice->said.size(), 1u);
    EXPECT_EQ(voice->said[0].text, "");
    operate([&] { text("TEXT6").setText("hola"); });
    click("btnClearMessage");
    EXPECT_EQ(text("TEXT6").text(), "");
    operate([&] { text("BEACONPERIOD").setText(""); });
    EXPECT_EQ(text("BEACONPERIOD").text(), "1");
}

TEST_F(LongTransmissionTest, WithoutAnIdentWindowTheDueRfMessageIsLoggedOnce) {
    start(kRfSide, test::IdentVoice::None);
    rfOver(2500, 162500);
    at(200000);
    EXPECT_EQ(logCount("no ident window to speak the long-transmission message"), 1u);
    EXPECT_FALSE(courtesy->longTransmission().rfPending());
}

}  // namespace
}  // namespace mv
