// The beacon text and the information text, in virtual time with the real
// voice: the beacon countdown, the static and random modes, the fixed times,
// the buttons, and the talking-clock shortcuts beside them.
#include "idents/information_texts.h"

#include <gtest/gtest.h>

#include <set>

#include "idents/idents_rig.h"
#include "idents/spoken_time.h"

namespace mv {
namespace {

TEST(MessageLinesTest, KeepsEveryLineThatSaysSomething) {
    EXPECT_EQ(messageLines("uno\r\n\n   \ndos\ntres"), (std::vector<std::string>{"uno", "dos", "tres"}));
    EXPECT_TRUE(messageLines(kBeaconTextDefault).empty());
    EXPECT_TRUE(messageLines("").empty());
}

TEST(FixedTimeDueTest, FifteenSecondsPastTheHourTheHalfAndTheQuartersAsTheBoxesSay) {
    auto at = [](int minute, int second) { return LocalDateTime{2026, 11, 23, 10, minute, second, 0}; };
    EXPECT_TRUE(fixedTimeDue(at(0, 15), true, false, false));
    EXPECT_FALSE(fixedTimeDue(at(0, 15), false, true, true));
    EXPECT_TRUE(fixedTimeDue(at(30, 15), false, true, false));
    EXPECT_FALSE(fixedTimeDue(at(30, 15), true, false, true));
    EXPECT_TRUE(fixedTimeDue(at(15, 15), false, false, true));
    EXPECT_TRUE(fixedTimeDue(at(45, 15), false, false, true));
    EXPECT_FALSE(fixedTimeDue(at(45, 15), true, true, false));
    for (int second : {14, 16, 0})
        EXPECT_FALSE(fixedTimeDue(at(30, second), true, true, true)) << "second " << second;
}

class InformationTextsTest : public test::IdentsRig {
protected:
    // Runs to `mm:ss` of the hour the test started in.
    void runTo(int m, int s) {
        run((m * 60LL + s) * 1000 - (startedAt.minute * 60LL + startedAt.second) * 1000 -
            suite->scheduler().now());
    }
};

TEST_F(InformationTextsTest, TheHalfHourBoxSpeaksTheTextAtHalfPastFifteenOnly) {
    start(false, {}, {2026, 11, 23, 10, 0, 0, 0});
    set("TextInput3", "Bienvenidos al nodo");
    set("InfoHalf", "1");
    runTo(29, 59);
    EXPECT_TRUE(keyedTexts().empty()) << "not at the hour nor the quarter";
    runTo(30, 20);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Bienvenidos al nodo"}));
    EXPECT_EQ(logMs(speechLines().at(0)), (30 * 60 + 15) * 1000);
}

TEST_F(InformationTextsTest, TheQuarterBoxSpeaksAtBothQuartersAndTheTimeBoxesQueueTheTime) {
    start(false, {}, {2026, 11, 23, 10, 14, 0, 0});
    set("TextInput3", "Nodo EA4ABC");
    set("InfoQuarter", "1");
    set("TimeHourly", "1");
    set("TimeQuarter", "1");
    set("Option1", "True");
    runTo(16, 0);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Nodo EA4ABC", "La Hora es10 15 AM"}))
        << "the text at once, then the queued time";
    runTo(30, 30);
    EXPECT_EQ(keyedTexts().size(), 2u);
    // A station heard at the quarter: both are skipped.
    runTo(45, 10);
    suite->host().setCarrier(true);
    runTo(45, 20);
    suite->host().setCarrier(false);
    runTo(47, 0);
    EXPECT_EQ(keyedTexts().size(), 2u);
}

TEST_F(InformationTextsTest, TheBeaconCountsWhileTickedAndIsSkippedWhileAStationIsHeard) {
    start();
    set("Option6", "True");
    set("TextInput3", "");
    set("BeaconPeriod3", "1");
    set("StopClock3", "1");
    run(61 * 1000);
    EXPECT_EQ(text("TextInput3").text(), "No information at this time.") << "an empty text is filled";
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"No information at this time."}));

    set("TextInput3", "Reunion el jueves");
    set("BeaconPeriod3", "1");  // the count starts again from the full minute
    run(55 * 1000);
    suite->host().setReceiving(true);
    run(1000);
    const std::string standing = label("BeaconSeconds3").caption();
    run(9 * 1000);
    EXPECT_EQ(label("BeaconSeconds3").caption(), standing) << "stands still while an Internet station is heard";
    suite->host().setReceiving(false);
    run(6 * 1000);
    EXPECT_EQ(keyedTexts().size(), 2u);
    EXPECT_EQ(keyedTexts()[1], "Reunion el jueves");

    // Due while the local carrier is up: skipped, the next a full period later.
    run(55 * 1000);
    suite->host().setCarrier(true);
    run(10 * 1000);
    suite->host().setCarrier(false);
    run(40 * 1000);
    EXPECT_EQ(keyedTexts().size(), 2u);
    run(20 * 1000);
    EXPECT_EQ(keyedTexts().size(), 3u);
    EXPECT_EQ(label("TextInput3Length").caption(), "17");
}

TEST_F(InformationTextsTest, RandomModeSpeaksOneLineEachTimeAndKeepsTheField) {
    const std::string lines = "Primera linea\n\nSegunda linea\nTercera linea\n";
    std::set<std::string> said;
    for (uint64_t seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
        start(false, [&](Suite& s) { s.program().seedRandom(seed); });
        set("Option5", "True");
        set("TextInput3", lines);
        click("PTT mas El Texto");
        ASSERT_EQ(keyedTexts().size(), 1u);
        said.insert(keyedTexts()[0]);
        EXPECT_EQ(text("TextInput3").text(), lines);
    }
    EXPECT_GE(said.size(), 2u) << "different seeds pick different lines";
    for (const auto& line : said)
        EXPECT_TRUE(line == "Primera linea" || line == "Segunda linea" || line == "Tercera linea") << line;

    // Neither mode selected: the beacon text is never spoken keyed.
    start();
    set("TextInput3", "Hola");
    click("PTT mas El Texto");
    EXPECT_TRUE(keyedTexts().empty());
}

TEST_F(InformationTextsTest, TheInfoTextWaitsForTheTalkingClockToFinish) {
    start();
    run(1000);
    operate([&] { dynamic_cast<Button*>(suite->program().window("hub")->findByCaption("Say The Time"))->click(); });
    run(10);  // the clock keys at its first poll
    ASSERT_TRUE(showsPttOn(suite->program(), "hub"));
    click("Speak The Info Text Plus PTT");
    EXPECT_EQ(text("InfoText").text(), "No information at this time.");
    EXPECT_TRUE(idents->speechPending());
    run(2000);
    EXPECT_TRUE(keyedTexts().empty());
    while (showsPttOn(suite->program(), "hub")) run(500);
    run(1500);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"No information at this time."}));
    EXPECT_EQ(label("InfoTextLength").caption(), "28");

    click("Say Text no PTT");
    EXPECT_EQ(logCount(R"("text":"No information at this time.","keyed":false)"), 1u);
}

TEST_F(InformationTextsTest, TheClockShortcutsStartTheRecordedTimeAndMirrorTheClocksOptions) {
    start();
    Window& hub = *suite->program().window("hub");
    operate([&] {
        hub.controlAs<CheckBox>("HALFHOUR")->setValue(0);
        hub.controlAs<OptionButton>("OPTION1")->setValue(true);
    });
    run(1000);
    EXPECT_EQ(check("ClockHalfHour").value(), 0);
    EXPECT_EQ(check("ClockOnHour").value(), 1);
    EXPECT_TRUE(idents->controlAs<OptionButton>("Clock12Hour")->value());
    EXPECT_FALSE(check("ClockOnHour").enabled()) << "read-only";

    click("La Hora wav/mp3");
    run(10);
    EXPECT_TRUE(showsPttOn(suite->program(), "hub"));
    suite->host().setReceiving(true);
    run(1500);
    EXPECT_EQ(label("SignalStatus").caption(), "Señal Recibida");
}

}  // namespace
}  // namespace mv
