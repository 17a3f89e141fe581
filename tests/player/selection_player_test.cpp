// Putting the player's files on the air: the DTMF code, the static and random
// choice, the keying around each file and its release, the hub's release
// check held off while this window is on the air, and every bad file, asked
// for by the operator or by no one.
#include "player/selection_player.h"

#include <gtest/gtest.h>

#include <set>

#include "core/module_surfaces.h"
#include "player_rig.h"

namespace mv {
namespace {

class SelectionTest : public test::PlayerRig {
protected:
    const LocalDateTime kStart{2026, 11, 23, 10, 0, 5, 0};
};

TEST_F(SelectionTest, TheCodePlaysTheMarkedRowKeyedAndReleasesWithinASecondOfItsEnd) {
    start(kStart, true);
    setRow(1, tone("one.wav", 1.5));
    type("TEXT4", "55");
    run(500);
    const int64_t asked = suite->scheduler().now();
    suite->host().receiveDTMF("55");
    run(0);
    EXPECT_TRUE(suite->host().pttKeyed());
    EXPECT_EQ(playerPtt(true), 1u);
    EXPECT_EQ(label("PTT").caption(), "PTT ON");
    const int64_t released = releasedWithin(3000);
    ASSERT_GT(released, 0);
    EXPECT_GE(released - asked, 1500);
    EXPECT_LE(released - asked, 2500) << "released within a second of the file's end";
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");

    // Nothing but the whole code plays.
    for (const char* digits : {"555", "5", "55 ", " 55", ""}) suite->host().receiveDTMF(digits);
    run(3000);
    EXPECT_EQ(playerPtt(true), 1u);
    EXPECT_EQ(runs().size(), 1u);
    // An emptied code is switched off, even for an empty string from the host.
    operate([&] { text("TEXT4").setText(""); });
    suite->host().receiveDTMF("");
    run(0);
    EXPECT_EQ(playerPtt(true), 1u);

    const AirRecording rec = air();
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f) << "no sound outside the keyed span";
    ASSERT_EQ(rec.keyedSpans().size(), 1u);
    const auto sound = rec.soundSpans();
    ASSERT_EQ(sound.size(), 1u);
    EXPECT_NEAR(sound[0].lengthMs(), 1500, 2);
    EXPECT_GE(sound[0].startMs, rec.keyedSpans()[0].startMs);
    EXPECT_LE(sound[0].endMs, rec.keyedSpans()[0].endMs);
}

TEST_F(SelectionTest, NothingPlaysWhileTheClockSpeaksAndTheCodeWorksAgainAfter) {
    start({2026, 11, 23, 9, 59, 55, 0}, false, false, true);
    setRow(1, tone("one.wav", 0.5));
    type("TEXT4", "#7");
    runTo(10, 0, 1);
    ASSERT_TRUE(showsPttOn(suite->program(), "hub")) << "the clock is announcing";
    suite->host().receiveDTMF("#7");
    clickControl("PlayRow1");
    run(0);
    EXPECT_EQ(playerPtt(true), 0u);
    EXPECT_TRUE(runs().empty());
    EXPECT_EQ(logCount("the talking clock is on the air"), 1u) << "the log says why the code did nothing";
    runTo(10, 0, 30);
    ASSERT_FALSE(showsPttOn(suite->program(), "hub"));
    suite->host().receiveDTMF("#7");
    run(0);
    EXPECT_EQ(playerPtt(true), 1u) << "the dropped request was not kept for later, the new one plays";
}

TEST_F(SelectionTest, TheRandomRangeIsPulledIntoOneToTwentyBeforeTheDraw) {
    start(kStart);
    for (int row = 1; row <= 20; ++row) setRow(row, tone("r" + std::to_string(row) + ".wav", 0.1));
    type("TEXT4", "9");
    operate([&] { option("StopClock0").click(); });
    struct Case {
        const char* typed;
        const char* settled;
    };
    for (const Case& c : {Case{"35", "20"}, Case{"0", "1"}, Case{"", "1"}, Case{"abc", "1"}, Case{"-4", "1"},
                          Case{"7", "7"}}) {
        SCOPED_TRACE(c.typed);
        operate([&] { text("MaxRand").setText(c.typed); });
        suite->host().receiveDTMF("9");
        run(1500);
        EXPECT_EQ(text("MaxRand").text(), c.settled);
        const int pick = player->player().randomPick();
        EXPECT_GE(pick, 1);
        EXPECT_LE(pick, std::stoi(c.settled));
        EXPECT_TRUE(option("Option" + std::to_string(pick)).value()) << "the pick is marked";
        ASSERT_FALSE(runs().empty());
        EXPECT_EQ(runs().back(), text(FileRows::fileKey(pick)).text());
    }
}

TEST_F(SelectionTest, RandomDrawsCoverTheRangeAndTheLastPickBecomesTheStaticChoice) {
    start(kStart);
    for (int row = 1; row <= 4; ++row) setRow(row, tone("r" + std::to_string(row) + ".wav", 0.05));
    type("TEXT4", "1");
    operate([&] {
        option("StopClock0").click();
        text("MaxRand").setText("3");
    });
    std::set<int> picks;
    for (int i = 0; i < 40; ++i) {
        suite->host().receiveDTMF("1");
        run(1100);
        picks.insert(player->player().randomPick());
    }
    EXPECT_EQ(picks, (std::set<int>{1, 2, 3}));
    EXPECT_EQ(playerPtt(true), 40u);
    EXPECT_EQ(playerPtt(false), 1u + 40u) << "the release at load, then every play released";

    const int last = player->player().randomPick();
    operate([&] { option("StopClock2").click(); });
    for (int i = 0; i < 3; ++i) {
        suite->host().receiveDTMF("1");
        run(1100);
        EXPECT_EQ(runs().back(), text(FileRows::fileKey(last)).text());
    }
}

TEST_F(SelectionTest, StaticPlaysTheMarkedRowOrNothingAndARowButtonLeavesTheMark) {
    start(kStart);
    setRow(1, tone("one.wav", 0.1));
    setRow(4, tone("four.wav", 0.1));
    type("TEXT4", "4");
    operate([&] { option("Option4").setValue(true); });
    suite->host().receiveDTMF("4");
    run(1500);
    ASSERT_EQ(runs().size(), 1u);
    EXPECT_EQ(runs().back(), text("TEXT53").text());

    clickControl("PlayRow1");
    run(1500);
    ASSERT_EQ(runs().size(), 2u);
    EXPECT_EQ(runs().back(), text("TEXT59").text());
    EXPECT_TRUE(option("Option4").value()) << "a row's play button does not move the mark";
    EXPECT_FALSE(option("Option1").value());

    operate([&] { option("Option4").setValue(false); });
    suite->host().receiveDTMF("4");
    run(1500);
    EXPECT_EQ(runs().size(), 2u) << "no row marked: nothing plays";
}

TEST_F(SelectionTest, AMissingFileAskedForUnattendedLogsAnErrorAndKeysNothing) {
    start(kStart);
    type("TEXT4", "55");
    suite->host().receiveDTMF("55");
    run(2000);
    setRow(1, (dir.path() / "gone.wav").string());
    suite->host().receiveDTMF("55");
    run(2000);
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u) << "no dialog waits for an operator who is not there";
    EXPECT_EQ(logCount("row 1 (TEXT59) has no file; nothing was played"), 1u);
    EXPECT_EQ(logCount("row 1 (TEXT59): no such file"), 1u);
    EXPECT_EQ(suite->host().countCommands("SetPTT", "player"), 1u) << "only the release at load";
    EXPECT_FALSE(suite->host().pttKeyed());
}

TEST_F(SelectionTest, TheOperatorIsAskedForAFileAndToldWhenNoneWasChosen) {
    start(kStart);
    // Row 1 is empty: the play button opens the file dialog; Cancel gives the message.
    suite->scriptedDialogs().queueAnswer("Cancel");
    clickControl("PlayRow1");
    EXPECT_EQ(logCount("\"title\":\"Open\",\"text\":\"*.wav, *.mp2, *.mp3, *.mid|*.wav;*.mp2;*.mp3;*.mid\""), 1u);
    EXPECT_EQ(logCount("\"title\":\"Error\",\"text\":\"Por Favor, Seleccione un archivo, Gracias\""), 1u);
    // Row 9 says it with a capital "A"; a path that does not exist is no file either.
    suite->scriptedDialogs().queueAnswer((dir.path() / "nowhere.wav").string());
    clickControl("PlayRow9");
    EXPECT_EQ(logCount("\"title\":\"Error\",\"text\":\"Por Favor, Seleccione un Archivo, Gracias\""), 1u);
    EXPECT_EQ(playerPtt(true), 0u);
    EXPECT_TRUE(text("TEXT21").text().empty());

    // A file chosen in the dialog goes into the row and plays.
    const std::string chosen = tone("chosen.wav", 0.2);
    suite->scriptedDialogs().queueAnswer(chosen);
    clickControl("PlayRow9");
    EXPECT_EQ(text("TEXT21").text(), chosen);
    EXPECT_EQ(playerPtt(true), 1u);
}

TEST_F(SelectionTest, ACorruptFileReleasesEverythingAndOnlyTheOperatorSeesADialog) {
    start(kStart, true);
    setRow(1, tone("long.wav", 5.0));
    const std::string corrupt = (dir.path() / "corrupt.wav").string();
    test::writeBytes(corrupt, {'R', 'I', 'F', 'F', 1, 2, 3});
    setRow(2, corrupt);
    type("TEXT4", "55");

    // Unattended: an error line, no dialog, nothing keyed.
    operate([&] { option("Option2").setValue(true); });
    suite->host().receiveDTMF("55");
    run(0);
    EXPECT_EQ(logCount("cannot render"), 1u);
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u);
    EXPECT_EQ(playerPtt(true), 0u);

    // The operator plays row 1, then row 2 while row 1 is on the air: the
    // transmitter goes at once, before the message is shown, and nothing more is heard.
    clickControl("PlayRow1");
    run(1000);
    ASSERT_TRUE(suite->host().pttKeyed());
    suite->scriptedDialogs().queueAnswer("OK");
    clickControl("PlayRow2");
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    EXPECT_EQ(logCount("\"title\":\"Error\",\"text\":\"Render error no rendering device found\""), 1u);
    EXPECT_FALSE(player->player().strip().hasGraph());
    run(6000);
    EXPECT_FALSE(suite->host().pttKeyed());
    const auto sound = air().soundSpans();
    ASSERT_EQ(sound.size(), 1u);
    EXPECT_NEAR(sound[0].lengthMs(), 1000, 2);
}

TEST_F(SelectionTest, BuscarLoadsWithoutPlayingAndCancelLeavesTheRowEmpty) {
    start(kStart);
    setRow(3, tone("old.wav", 0.2));
    const std::string chosen = tone("new.wav", 0.4);
    suite->scriptedDialogs().queueAnswer(chosen);
    clickControl("Browse3");
    EXPECT_EQ(text("TEXT55").text(), chosen);
    EXPECT_EQ(player->player().currentFile(), chosen);
    EXPECT_EQ(player->player().selectedSlot(), 3);
    EXPECT_EQ(player->player().strip().lengthField().text(), "00:00:00");
    EXPECT_EQ(player->player().strip().lengthDisplay().text(), "0.4");
    EXPECT_EQ(playerPtt(true), 0u);
    EXPECT_TRUE(runs().empty()) << "loaded, not played";

    suite->scriptedDialogs().queueAnswer("Cancel");
    clickControl("Browse3");
    EXPECT_TRUE(text("TEXT55").text().empty());
    EXPECT_EQ(logCount("Por Favor, Seleccione un archivo, Gracias"), 1u);
}

TEST_F(SelectionTest, TheLocalPlayerNeverKeysAndDoesNothingBeforeARowIsChosen) {
    start(kStart);
    type("TEXT4", "123");
    for (const char* caption : {"Play", "Stop", "Resume", "File"}) click(caption);
    EXPECT_EQ(logCount("\"kind\":\"media\",\"window\":\"player\""), 0u);
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u);
    EXPECT_EQ(text("TEXT4").text(), "123") << "\"File\" leaves the DTMF code alone";

    const std::string path = tone("t.wav", 1.0);
    suite->scriptedDialogs().queueAnswer(path);
    clickControl("Browse2");
    click("Play");
    ASSERT_EQ(runs().size(), 1u);
    run(500);
    click("Stop");
    const std::string used = player->player().strip().elapsedDisplay().text();
    run(500);
    EXPECT_EQ(player->player().strip().elapsedDisplay().text(), used);
    click("Resume");
    run(1000);
    EXPECT_TRUE(player->player().strip().fileEnded());
    click("File");
    EXPECT_EQ(logCount("\"op\":\"render\""), 2u) << "\"File\" reloads the selected row";
    EXPECT_EQ(text("TEXT4").text(), "123");
    EXPECT_EQ(suite->host().countCommands("SetPTT", "player"), 1u) << "only the release at load";

    // "Stop" takes a file that is on the air off the air: stopped, it would never end.
    clickControl("PlayRow2");
    run(300);
    ASSERT_TRUE(suite->host().pttKeyed());
    click("Stop");
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
}

TEST_F(SelectionTest, WhileOnTheAirTheHubsReleaseCheckIsHeldOff) {
    start(kStart);
    setRow(1, tone("five.wav", 5.0));
    run(3000);
    // The hub's idle check unkeys once a second; none of that while the file plays.
    ASSERT_GE(suite->host().countCommands("SetPTT", "hub"), 2u);
    clearCommands();
    clickControl("PlayRow1");
    const int64_t released = releasedWithin(7000);
    ASSERT_GT(released, 0);
    EXPECT_EQ(suite->host().countCommands("SetPTT", "hub"), 0u);
    EXPECT_EQ(playerPtt(false), 1u);
    run(2500);
    EXPECT_GE(suite->host().countCommands("SetPTT", "hub"), 2u) << "back on once the player is off the air";
}

TEST_F(SelectionTest, AClockAnnouncementDuringABeaconKeepsTheAirKeyedUntilBothEndThenReleases) {
    start({2026, 11, 23, 9, 59, 50, 0}, true, false, true);
    setRow(1, tone("four.wav", 4.0));
    type("TEXT4", "55");
    runTo(9, 59, 58);
    clearCommands();
    suite->host().receiveDTMF("55");
    runTo(10, 0, 20);
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(playerPtt(false), 0u) << "the player left the transmitter to the clock";
    const AirRecording rec = air();
    ASSERT_EQ(rec.keyedSpans().size(), 1u) << "one unbroken transmission";
    const auto sound = rec.soundSpans();
    ASSERT_FALSE(sound.empty());
    EXPECT_LE(rec.keyedSpans()[0].endMs - sound.back().endMs, 1000.0) << "released within a second of the last word";
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f);
}

}  // namespace
}  // namespace mv
