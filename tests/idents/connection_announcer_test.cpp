// Connections said on the air and kept in the ident window's history: how
// each kind of callsign is said, the master switch on the hub, the time that
// may follow, in virtual time with the real voice.
#include "idents/connection_announcer.h"

#include <gtest/gtest.h>

#include <map>

#include "idents/idents_rig.h"
#include "idents/spoken_time.h"
#include "idents/tts_window.h"

namespace mv {
namespace {

std::string defaultPhrase(const char* key) {
    for (const auto& p : TtsWindow::phrases())
        if (std::string(key) == p.key) return p.defaultText;
    ADD_FAILURE() << "no phrase " << key;
    return {};
}

TEST(StationAnnouncementTest, EachKindOfStationIsSaidItsOwnWay) {
    struct Case {
        const char* call;
        bool connected;
        std::optional<std::string> said;
    };
    const Case cases[] = {
        {"EA4XYZ-R", true, "E A 4 X Y Z -  : Conectado al Repetidor "},
        {"EA4XYZ-R", false, "E A 4 X Y Z -  : Desconectado del Repetidor"},
        {"EA4XYZ-L", true, "E A 4 X Y Z -  : Conectado al Link"},
        {"EA-4XYZ-L", false, "E A -  : Desconectado del Link"},
        {"K1ABC", true, "K 1 A B C  , Conectado"},
        {"K1ABC", false, "K 1 A B C  , Desconectado"},
        {"*SPAIN*", true, "La * S P A I N *   Conectado a la Conferencia"},
        {"*SPAIN*", false, "La * S P A I N *   Desconectado de la Conferencia"},
        {"*ECHOTEST*", true, "La Echo Test  Conectado a la Conferencia"},
        {"*ECHOTEST*", false, "La Echo Test  Desconectado de la Conferencia"},
        {"EA4XYZ-X", true, std::nullopt},
        {"EA4XYZ-RX", false, std::nullopt},
        {"ECHOTEST", true, "E C H O T E S T  , Conectado"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(stationAnnouncement(c.call, c.connected, "*ECHOTEST*", "Echo Test", defaultPhrase), c.said)
            << c.call << (c.connected ? " connects" : " disconnects");
    // Without a spoken name the known conference is spelled like any other.
    EXPECT_EQ(stationAnnouncement("*ECHOTEST*", true, "*ECHOTEST*", "", defaultPhrase),
              "La * E C H O T E S T *   Conectado a la Conferencia");
}

TEST(TimePhraseTest, TwelveAndTwentyFourHourForms) {
    const LocalDateTime evening{2026, 11, 23, 21, 5, 0, 0}, midnight{2026, 11, 23, 0, 7, 0, 0},
        noon{2026, 11, 23, 12, 30, 0, 0}, morning{2026, 11, 23, 9, 0, 0, 0};
    EXPECT_EQ(timePhrase("en", evening, true, 2), "en9 05  PM");
    EXPECT_EQ(timePhrase("La Hora es", evening, true, 1), "La Hora es9 05 PM");
    EXPECT_EQ(timePhrase("en", evening, false, 2), "en21 05");
    EXPECT_EQ(timePhrase("en", midnight, true, 2), "en12 07  AM");
    EXPECT_EQ(timePhrase("en", noon, true, 1), "en12 30 PM");
    EXPECT_EQ(timePhrase("", morning, false, 1), "09 00");
}

class ConnectionAnnouncerTest : public test::IdentsRig {
protected:
    void connect(const std::string& call, const std::string& name = "Juan", const std::string& address = "10.0.0.7") {
        suite->host().stationConnects(call, name, address);
        run(0);
    }
    void disconnect(const std::string& call) {
        suite->host().stationDisconnects(call);
        run(0);
    }
    std::vector<std::string> history() const {
        const auto& l = idents->controlAs<LineLog>("CallHistory")->lines();
        return {l.begin(), l.end()};
    }
    CheckBox& announceStations() { return *suite->program().window("hub")->controlAs<CheckBox>("CONDISC"); }
};

TEST_F(ConnectionAnnouncerTest, ARepeaterIsListedAndSpelledKeyedAndAnOddSuffixIsOnlyListed) {
    start(true);
    connect("EA4XYZ-R");
    connect("EA4XYZ-X", "Ana", "10.0.0.8");
    EXPECT_EQ(history(), (std::vector<std::string>{" 10:01 AM -- EA4XYZ-R -- Juan -- 10.0.0.7",
                                                   " 10:01 AM -- EA4XYZ-X -- Ana -- 10.0.0.8"}));
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"E A 4 X Y Z -  : Conectado al Repetidor "}));
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    const AirRecording air = stopRecording();
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f);
    ASSERT_EQ(air.keyedSpans().size(), 1u);
    EXPECT_FALSE(air.soundSpans(0.003f, 200).empty());

    operate([&] { announceStations().setValue(0); });
    connect("K1ABC", "Ann", "192.0.2.44");
    disconnect("EA4XYZ-R");
    EXPECT_EQ(history().size(), 3u) << "the history takes every connect";
    EXPECT_EQ(keyedTexts().size(), 1u) << "with the hub's switch off nothing more is said";

    click("Borrar");
    EXPECT_TRUE(history().empty());
}

TEST_F(ConnectionAnnouncerTest, ConferencesAreSpelledBetweenThePhrasesAndTheKnownOneIsNamedOnce) {
    start();
    connect("*SPAIN*");
    connect("*ECHOTEST*");
    disconnect("*ECHOTEST*");
    set("SpecialConferenceSpoken", "Prueba de Eco*");
    connect("*ECHOTEST*");
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"La   S P A I N     Conectado a la Conferencia",
                                                      "La Echo Test  Conectado a la Conferencia",
                                                      "La Echo Test  Desconectado de la Conferencia",
                                                      "La Prueba de Eco   Conectado a la Conferencia"}))
        << "a spoken name ending in an asterisk is still said once";
}

TEST_F(ConnectionAnnouncerTest, AConnectSaidOverTheTalkingClockKeepsTheAirUpUntilTheClockLetsGo) {
    start(true, {}, {2026, 11, 23, 10, 29, 58, 0});
    run(2100);  // the half-hour announcement has begun
    ASSERT_TRUE(showsPttOn(suite->program(), "hub"));
    connect("K1ABC");
    ASSERT_EQ(keyedTexts().size(), 1u);
    EXPECT_TRUE(suite->host().pttKeyed()) << "the clock still plays";
    while (showsPttOn(suite->program(), "hub")) run(100);
    EXPECT_FALSE(suite->host().pttKeyed()) << "the clock's release is the last one";
    const AirRecording air = stopRecording();
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f) << "no clock audio goes out unkeyed";
    EXPECT_EQ(air.keyedSpans().size(), 1u) << "the voice's release did not cut the clock";
}

TEST_F(ConnectionAnnouncerTest, TheTimeFollowsInTheTwelveHourFormWithoutTheTtsDelay) {
    start(false, {}, {2026, 11, 23, 21, 4, 58, 0});
    set("AddTime", "1");
    set("Option1", "True");
    set("TTSCTRL", "1");
    set("TTSPeriod", "2");
    run(2000);
    connect("K1ABC");
    // The connect is said at once; the time waits for its turn.
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"K 1 A B C  , Conectado"}));
    EXPECT_EQ(idents->speechText(), "en9 05  PM");
    EXPECT_TRUE(idents->speechPending());
    EXPECT_TRUE(idents->speech().skipDelay());
    run(2000);
    ASSERT_EQ(keyedTexts().size(), 2u);
    EXPECT_EQ(keyedTexts()[1], "en9 05  PM");
    const auto lines = speechLines();
    ASSERT_EQ(keyedAt().size(), 2u);
    EXPECT_EQ(logMs(lines[0]) - keyedAt()[0], 2 * kSleepTtsMs) << "the connect waits the delay";
    EXPECT_EQ(logMs(lines[1]), keyedAt()[1]) << "the time does not";

    // The 24-hour form when "12 Horas" is not selected.
    set("Option2", "True");
    connect("K2ABC");
    EXPECT_EQ(idents->speechText().rfind("en21 0", 0), 0u) << idents->speechText();
}

}  // namespace
}  // namespace mv
