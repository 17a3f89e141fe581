// Silence mode and the other DTMF switches of the ident window, in virtual
// time with the real voice: the notices spoken and sent as chat, the reading
// of text messages, and the spoken time a station asks for.
#include "idents/announcement_switches.h"

#include <gtest/gtest.h>

#include "idents/idents_rig.h"

namespace mv {
namespace {

class AnnouncementSwitchesTest : public test::IdentsRig {
protected:
    void dtmf(const std::string& digits) {
        suite->host().receiveDTMF(digits);
        run(0);
    }
    bool silenced() { return check("Check1").ticked(); }
};

TEST_F(AnnouncementSwitchesTest, WarnedSilenceIsAnnouncedFirstThenBeginsAndItsEndIsSpokenAndSent) {
    start(true);
    set("AnnounceOff", "70");
    set("AnnounceOn", "71");
    set("Check2", "1");
    dtmf("70");
    EXPECT_FALSE(silenced()) << "not before the notice is heard";
    EXPECT_TRUE(idents->switches().silenceAwaitsNotice());
    EXPECT_EQ(chatSent(), (std::vector<std::string>{"23/11/2026 10:01:00  <Abierto modo Silencio>"}));
    run(1500);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Abierto modo Silencio"}));
    EXPECT_TRUE(silenced());

    // In silence nothing is said, not even a connect.
    suite->host().stationConnects("K1ABC", "Ann", "192.0.2.44");
    run(2000);
    EXPECT_EQ(keyedTexts().size(), 1u);

    dtmf("71");
    EXPECT_FALSE(silenced());
    ASSERT_EQ(chatSent().size(), 2u);
    const std::string expected = suite->scheduler().wallNow().dateTimeText() + "  <Cerrado modo Silencio>";
    EXPECT_EQ(chatSent()[1], expected);
    run(1500);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Abierto modo Silencio", "Cerrado modo Silencio"}));
    const AirRecording air = stopRecording();
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f);
    EXPECT_EQ(logCount(R"("kind":"dtmf","window":"idents")"), 2u) << logText.str();
}

TEST_F(AnnouncementSwitchesTest, AWarnedSilenceWaitsForTheCarrierToDropBeforeItsNotice) {
    start();
    set("AnnounceOff", "70");
    set("Check2", "1");
    suite->host().setCarrier(true);
    run(0);
    dtmf("70");
    run(5000);
    EXPECT_FALSE(silenced());
    EXPECT_TRUE(keyedTexts().empty());
    suite->host().setCarrier(false);
    run(3000);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Abierto modo Silencio"}));
    EXPECT_TRUE(silenced());
    // The courtesy window's letter for the local over goes out first; the
    // notice waits until the host has sent it.
    int64_t letterAt = -1;
    for (const auto& c : suite->host().commands())
        if (c.call == "SendCW" && c.window == "courtesy") letterAt = c.timeMs;
    ASSERT_GE(letterAt, 0);
    EXPECT_GT(logMs(speechLines().at(0)), letterAt);
}

TEST_F(AnnouncementSwitchesTest, UnwarnedSilenceIsImmediateAndQuietAndTheOnCodeAlwaysEndsIt) {
    start();
    set("AnnounceOff", "70");
    set("AnnounceOn", "71");
    dtmf("70");
    EXPECT_TRUE(silenced());
    dtmf("71");
    EXPECT_FALSE(silenced());
    dtmf("71");
    EXPECT_FALSE(silenced());
    run(3000);
    EXPECT_TRUE(keyedTexts().empty());
    EXPECT_TRUE(chatSent().empty());

    // An empty code field never matches, not even an empty string.
    set("AnnounceOff", "");
    dtmf("");
    EXPECT_FALSE(silenced());
}

TEST_F(AnnouncementSwitchesTest, TheToggleCodeSwitchesMessageReadingAndSaysWhich) {
    start();
    set("ToggleText", "55");
    dtmf("55");
    EXPECT_TRUE(check("SayText").ticked());
    run(1500);
    dtmf("55");
    EXPECT_FALSE(check("SayText").ticked());
    run(1500);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"Abierto los Mensaje de Texto", "Cerrado los Mensaje de Texto"}));
}

TEST_F(AnnouncementSwitchesTest, TheDtmfWindowsTimeCodeAsksForTheTimeOnlyWhileItsBoxIsTicked) {
    start();
    Window& dtmfWindow = *suite->program().window("dtmf");
    operate([&] { dtmfWindow.controlAs<TextBox>("DTMF")->setText("99"); });
    dtmf("99");
    run(1500);
    EXPECT_TRUE(keyedTexts().empty()) << "\"Usar\" is not ticked";
    operate([&] { dtmfWindow.controlAs<CheckBox>("USEDTMF")->setValue(1); });
    dtmf("99");
    run(2000);
    EXPECT_EQ(keyedTexts(), (std::vector<std::string>{"La Hora es10 01"})) << "24-hour form unless 12 is selected";
}

}  // namespace
}  // namespace mv
