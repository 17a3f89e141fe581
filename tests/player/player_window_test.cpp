// The player window as the operator and the node see it: its load, the
// sample beacons out of the box, "Pellisand.ini" read and written key by key,
// the close prompt and the host closing.
#include "player/player_window.h"

#include <gtest/gtest.h>

#include <fstream>

#include "core/errors.h"
#include "player_rig.h"
#include "support/read_text.h"

namespace mv {
namespace {

class PlayerWindowTest : public test::PlayerRig {
protected:
    const LocalDateTime kStart{2026, 11, 23, 10, 0, 5, 0};
    void writeFile(const std::string& content) {
        std::filesystem::create_directories(settingsDir());
        std::ofstream(settingsDir() / kPlayerSettingsFile, std::ios::binary) << content;
    }
    std::vector<std::string> savedKeys() {
        std::vector<std::string> keys;
        std::istringstream lines(test::readText(settingsDir() / kPlayerSettingsFile));
        for (std::string line; std::getline(lines, line);)
            if (const size_t eq = line.find('='); eq != std::string::npos) keys.push_back(line.substr(0, eq));
        return keys;
    }
    std::string saved(const std::string& key) {
        std::istringstream lines(test::readText(settingsDir() / kPlayerSettingsFile));
        for (std::string line; std::getline(lines, line);)
            if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1, line.find_last_not_of('\r') - key.size());
        return "<missing>";
    }
};

TEST_F(PlayerWindowTest, LoadsHiddenUnkeyedWithItsCaptionAndTheHubButtonShowsIt) {
    start(kStart);
    EXPECT_TRUE(player->isLoaded());
    EXPECT_FALSE(player->isVisible());
    EXPECT_EQ(player->caption(), "Marrowvane    N0CALL   v1.0.0      Balizas");
    EXPECT_EQ(suite->host().countCommands("SetPTT", "player"), 1u);
    EXPECT_EQ(playerPtt(false), 1u);
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    EXPECT_FLOAT_EQ(player->leftTwips(), 300);
    operate([&] { static_cast<Button*>(hub->findByCaption("Balizas"))->click(); });
    EXPECT_TRUE(player->isVisible());
    click("Ocultar");
    EXPECT_FALSE(player->isVisible());
    // Hidden, it still answers its code.
    setRow(1, tone("t.wav", 0.2));
    type("TEXT4", "0");
    suite->host().receiveDTMF("0");
    run(0);
    EXPECT_EQ(playerPtt(true), 1u);
}

TEST_F(PlayerWindowTest, OutOfTheBoxTheFirstRowsHoldTheSampleBeacons) {
    start(kStart, true, true);
    for (int row = 1; row <= 3; ++row) {
        SCOPED_TRACE(row);
        EXPECT_TRUE(std::filesystem::is_regular_file(text(FileRows::fileKey(row)).text()));
    }
    EXPECT_TRUE(text(FileRows::fileKey(4)).text().empty());
    EXPECT_TRUE(text("TEXT4").text().empty()) << "no DTMF code until the operator sets one";
    clickControl("PlayRow1");
    ASSERT_GT(releasedWithin(10000), 0);
    const AirRecording rec = air();
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f);
    ASSERT_EQ(rec.keyedSpans().size(), 1u);
    EXPECT_GT(rec.soundSpans().size(), 0u) << "the sample is heard";
}

TEST_F(PlayerWindowTest, SaveWritesEveryKeyInOrderAndALoadReadsThemBack) {
    start(kStart);
    operate([&] {
        text("TEXT4").typeText("#12");
        text("TEXT5").setText("07");
        check("ONHOUR").setValue(1);
        check("STOPCLOCK1").setValue(2);
        option("StopClock0").click();
        option("Option5").setValue(true);
        text("TEXT49").setText("/srv/beacons/id.wav");
        text("BeaconPeriod1").typeText("30");
        player->player().strip().volumeSlider().setValue(-1200);
        player->move(1500, 2400);
        click("Salvar Configuracion");
    });
    std::vector<std::string> expected = {"TEXT5",        "VOLSET",      "ONHOUR",    "HALFHOUR",  "QUARTERHOUR",
                                         "BEACONPERIOD1", "BEACONPERIOD3", "STOPCLOCK3", "TEXT4", "MAXRAND"};
    for (int row = 1; row <= 20; ++row) expected.push_back(FileRows::fileKey(row));
    for (int row = 1; row <= 20; ++row) expected.push_back("OPTION" + std::to_string(row));
    for (const char* k : {"STOPCLOCK0", "STOPCLOCK1", "STOPCLOCK2", "LEFT", "TOP"}) expected.push_back(k);
    EXPECT_EQ(savedKeys(), expected);
    EXPECT_EQ(saved("OPTION5"), "True");
    EXPECT_EQ(saved("OPTION1"), "False");
    EXPECT_EQ(saved("STOPCLOCK0"), "True");
    EXPECT_EQ(saved("STOPCLOCK2"), "False");
    EXPECT_EQ(saved("STOPCLOCK1"), "2");
    EXPECT_EQ(saved("VOLSET"), "-1200");
    EXPECT_EQ(saved("LEFT"), "1500");
    EXPECT_NE(player->statusText().find("Guardado"), std::string::npos);

    // A fresh start reads it all back.
    suite.reset();
    start(kStart);
    EXPECT_EQ(text("TEXT4").text(), "#12");
    EXPECT_EQ(text("TEXT5").text(), "07");
    EXPECT_EQ(check("ONHOUR").value(), 1);
    EXPECT_EQ(check("StopClock1").value(), 2);
    EXPECT_TRUE(option("StopClock0").value());
    EXPECT_FALSE(option("StopClock2").value());
    EXPECT_TRUE(option("Option5").value());
    EXPECT_EQ(text("TEXT49").text(), "/srv/beacons/id.wav");
    EXPECT_EQ(label("BeaconSeconds1").caption(), "1800") << "the countdown restarts at the full period";
    EXPECT_EQ(player->player().strip().volumeSlider().value(), -1200);
    EXPECT_EQ(text("VolSet").text(), "-1200");
    EXPECT_FLOAT_EQ(player->topTwips(), 2400);
}

TEST_F(PlayerWindowTest, AHandEditedFileLoadsWithWhatCanBeUsed) {
    writeFile("[SETTINGS]\n"
              "option1=0\noption3=1\n"
              "ONHOUR=abc\n"
              "VolSet=loud\n"
              "BeaconPeriod1=0\n"
              "STOPCLOCK2=False\nSTOPCLOCK0=False\n");
    start(kStart);
    EXPECT_TRUE(option("Option3").value());
    EXPECT_FALSE(option("Option1").value());
    EXPECT_EQ(check("ONHOUR").value(), 0);
    EXPECT_EQ(player->player().strip().volumeSlider().value(), 0);
    EXPECT_EQ(text("VolSet").text(), "0");
    EXPECT_EQ(text("BeaconPeriod1").text(), "0");
    EXPECT_EQ(label("BeaconSeconds1").caption(), "0");
    EXPECT_GE(logCount("\"kind\":\"error\",\"window\":\"player\""), 2u) << "each unusable value is named";
    // Neither mode chosen: a play is a random one, and its pick is marked.
    type("TEXT4", "3");
    suite->host().receiveDTMF("3");
    run(0);
    const int pick = player->player().randomPick();
    ASSERT_GE(pick, 1);
    EXPECT_TRUE(option("Option" + std::to_string(pick)).value());
}

TEST_F(PlayerWindowTest, TheCloseBoxAsksAndYesUnkeysAndEndsEverything) {
    start(kStart);
    setRow(1, tone("long.wav", 20.0));
    clickControl("PlayRow1");
    suite->scriptedDialogs().queueAnswer("No");
    operate([&] { player->closeBox(); });
    EXPECT_EQ(logCount("\"title\":\"Exit Program\",\"text\":\"Quit - Remember to save your settings - Are You Sure ? \""),
              1u);
    EXPECT_FALSE(suite->program().ended());
    EXPECT_TRUE(suite->host().pttKeyed()) << "No changes nothing";
    suite->scriptedDialogs().queueAnswer("Yes");
    operate([&] { player->closeBox(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    EXPECT_FALSE(std::filesystem::exists(settingsDir() / kPlayerSettingsFile)) << "nothing is saved on close";
}

TEST_F(PlayerWindowTest, TheHostClosingUnkeysDropsDtrAndEndsEvenIfACallFails) {
    start(kStart);
    setRow(1, tone("long.wav", 20.0));
    clickControl("PlayRow1");
    suite->host().setFailing("SetDTR", true);
    // Every window hears the host close; this is the player's own answer.
    operate([&] { player->onClosing(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(playerPtt(false), 2u) << "at load and at closing";
    EXPECT_EQ(suite->host().countCommands("SetDTR", "player"), 1u);
    EXPECT_EQ(logCount("\"kind\":\"end\",\"reason\":\"host closing\""), 1u);
}

}  // namespace
}  // namespace mv
