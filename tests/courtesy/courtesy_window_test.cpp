// The courtesy window as the operator and the node see it: its settings file,
// the RF courtesy behind the kerchunk filter, the ways the program ends, and
// what it costs while nothing happens.
#include "courtesy/courtesy_window.h"

#include <gtest/gtest.h>

#include <sstream>

#include "courtesy_rig.h"

namespace mv {
namespace {

class CourtesyWindowTest : public test::CourtesyRig {
protected:
    std::vector<std::string> fileKeys() const {
        std::vector<std::string> keys;
        std::istringstream lines(courtesyFile());
        for (std::string line; std::getline(lines, line);)
            if (const size_t eq = line.find('='); eq != std::string::npos) keys.push_back(line.substr(0, eq));
        return keys;
    }
};

TEST_F(CourtesyWindowTest, LoadsHiddenWithItsCaptionAndDefaultsAndTheHubButtonShowsIt) {
    start();
    EXPECT_TRUE(courtesy->isLoaded());
    EXPECT_FALSE(courtesy->isVisible());
    EXPECT_EQ(courtesy->caption(), "Marrowvane    N0CALL   v1.0.0          Dunmeral");
    EXPECT_EQ(text("COURTESYID").text(), "K");
    EXPECT_EQ(text("RFTONE").text(), std::string(MV_TEST_TONES_DIR) + "/RF.wav");
    EXPECT_EQ(text("INETTONE").text(), std::string(MV_TEST_TONES_DIR) + "/IP.wav");
    EXPECT_TRUE(std::filesystem::exists(text("RFTONE").text())) << "the default tone is built with the program";
    EXPECT_TRUE(courtesy->controlAs<OptionButton>("OPTION1")->value());
    EXPECT_EQ(check("CHECK1").value(), 1);
    EXPECT_EQ(courtesy->kerchunker().filterTimer().interval(), 5000);
    EXPECT_EQ(courtesy->kerchunker().pollTimer().interval(), 500);
    EXPECT_FALSE(courtesy->kerchunker().filterTimer().running());
    operate([&] { static_cast<Button*>(suite->program().window("hub")->findByCaption("Dunmeral"))->click(); });
    EXPECT_TRUE(courtesy->isVisible());
    click("btnHide");
    EXPECT_FALSE(courtesy->isVisible());
    EXPECT_TRUE(courtesy->isLoaded());
}

TEST_F(CourtesyWindowTest, SaveWritesEveryKeyInItsOrderAndTheCheckBoxesReadBackInEitherCase) {
    start("[SETTINGS]\nCheck4=1\ncheck6=1\nKERCHUNKWAIT=2000\nOPTION1=0\nOPTION2=1\n");
    EXPECT_EQ(check("CHECK4").value(), 1);
    EXPECT_EQ(check("CHECK6").value(), 1);
    EXPECT_EQ(courtesy->kerchunker().filterTimer().interval(), 2000);
    EXPECT_TRUE(courtesy->controlAs<OptionButton>("OPTION2")->value());
    click("btnSave");
    EXPECT_EQ(fileKeys(), (std::vector<std::string>{
                              "Check4", "check6", "KERCHUNKWAIT", "OPTION1", "OPTION2", "COURTESYID", "IPCOURTESY",
                              "HANGTIME", "RFTONE", "INETTONE", "VOLSET", "SPEEDSET", "CHECK1", "TEXT4", "TEXT5",
                              "TEXT6", "TEXT7", "TEXT8", "BEACONPERIOD", "BEACONPERIOD2", "BEACONPERIOD3", "CHECK2",
                              "CHECK3", "CHECK5", "CHECK7", "LEFT", "TOP"}))
        << "existing entries keep their place and spelling; new ones follow in the module's order";
    const std::string file = courtesyFile();
    EXPECT_NE(file.find("OPTION1=False"), std::string::npos);
    EXPECT_NE(file.find("OPTION2=True"), std::string::npos);
    EXPECT_NE(file.find("CHECK1=1"), std::string::npos);
    EXPECT_NE(file.find("TEXT7=#22#"), std::string::npos);
    EXPECT_NE(file.find("LEFT=300"), std::string::npos);
    EXPECT_EQ(courtesy->statusText().rfind("Guardado", 0), 0u);
}

TEST_F(CourtesyWindowTest, AFreshSaveWritesTheKeysInTheModulesOwnOrder) {
    start();
    click("btnSave");
    EXPECT_EQ(fileKeys(), (std::vector<std::string>{
                              "COURTESYID", "IPCOURTESY", "HANGTIME", "KERCHUNKWAIT", "RFTONE", "INETTONE", "VOLSET",
                              "SPEEDSET", "OPTION1", "OPTION2", "CHECK1", "TEXT4", "TEXT5", "TEXT6", "TEXT7", "TEXT8",
                              "BEACONPERIOD", "BEACONPERIOD2", "BEACONPERIOD3", "CHECK2", "CHECK3", "CHECK4", "CHECK5",
                              "CHECK6", "CHECK7", "LEFT", "TOP"}));
}

TEST_F(CourtesyWindowTest, AHandEditedFileStillLoadsWithEveryChoiceMadeAndTheFallbackLogged) {
    start("[SETTINGS]\nOPTION1=False\nOPTION2=False\nCheck1=yes\nHANGTIME=soon\n");
    EXPECT_TRUE(courtesy->controlAs<OptionButton>("OPTION1")->value()) << "CW when neither is chosen";
    EXPECT_EQ(check("CHECK1").value(), 1);
    EXPECT_EQ(logCount("CHECK1=\\\"yes\\\" is not a check-box value"), 1u);
    EXPECT_EQ(courtesy->kerchunker().pollTimer().interval(), 500) << "no period in the field: the old one stays";
}

TEST_F(CourtesyWindowTest, TheRfCourtesyFollowsOnlyACarrierThatOutlastedTheKerchunkWait) {
    struct Case {
        const char* what;
        std::vector<std::pair<int64_t, int64_t>> carrier;
        size_t letters;
    };
    for (const Case& c : {Case{"held 6 s", {{2000, 8000}}, 1}, Case{"held 4 s", {{2000, 6000}}, 0},
                          Case{"1 s, then again from 3 s past 5 s", {{2000, 3000}, {5000, 9000}}, 1}}) {
        SCOPED_TRACE(c.what);
        stopSuite();
        start();
        for (const auto& [on, off] : c.carrier) {
            at(on);
            suite->host().setCarrier(true);
            at(off);
            suite->host().setCarrier(false);
        }
        const int64_t drop = c.carrier.back().second;
        at(drop + 2000);
        const auto sent = times("SendCW");
        ASSERT_EQ(sent.size(), c.letters);
        if (sent.empty()) continue;
        EXPECT_EQ(lastArgs("SendCW"), (std::vector<std::string>{"0", "K"}));
        EXPECT_GE(sent[0] - drop, 0);
        EXPECT_LE(sent[0] - drop, 500);
        EXPECT_EQ(label("OK2Kerchunk").caption(), "No");
    }
}

TEST_F(CourtesyWindowTest, WithTheCourtesyOffAnAcceptedOverStillEndsTheFiltersWait) {
    start("[SETTINGS]\nCheck1=0\n");
    at(1000);
    suite->host().setCarrier(true);
    at(7000);
    EXPECT_EQ(label("OK2Kerchunk").caption(), "Yes");
    suite->host().setCarrier(false);
    at(8000);
    EXPECT_EQ(label("OK2Kerchunk").caption(), "No");
    EXPECT_EQ(count("SendCW"), 0u);
}

TEST_F(CourtesyWindowTest, TheHostClosingUnkeysSavesAndEndsTheProgramWhicheverWindowHearsItFirst) {
    start();
    ASSERT_EQ(suite->host().commands().front().window, "hub") << "the hub subscribed first and hears it first";
    operate([&] { text("TEXT6").setText("hasta luego"); });
    suite->host().closing();
    run(10);
    EXPECT_TRUE(suite->program().ended());
    EXPECT_EQ(lastArgs("SetPTT"), (std::vector<std::string>{"false"}));
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_NE(courtesyFile().find("TEXT6=hasta luego"), std::string::npos) << "the suite's one automatic save";
}

TEST_F(CourtesyWindowTest, TheCloseBoxEndsTheProgramAtOnceWithoutSavingOrLeavingATonePlayingKeyed) {
    const std::string ini = "[SETTINGS]\nOPTION2=True\n";
    start(ini);
    click("btnTestRFTone");
    ASSERT_TRUE(suite->host().pttKeyed());
    operate([&] { courtesy->closeBox(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_FALSE(courtesy->engine().player().hasGraph());
    EXPECT_EQ(courtesyFile(), ini) << "nothing saved";
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u) << "nothing asked";
}

TEST_F(CourtesyWindowTest, WhileNothingHappensThePollsRestAndTheHostIsAskedOnceASecond) {
    start();
    at(10);
    suite->host().clearCommands();
    at(60010);
    EXPECT_FALSE(courtesy->statusPoll().running());
    EXPECT_LE(count("IsTransmitting"), 61u);
    EXPECT_LE(count("IsCarrierDetected"), 61u);
    // A carrier held for a minute changes nothing the poll shows after its start.
    suite->host().setCarrier(true);
    at(120010);
    EXPECT_EQ(label("RFUser").caption(), "RX YES");
    EXPECT_FALSE(courtesy->statusPoll().running());
    EXPECT_LE(count("IsTransmitting"), 123u);
    EXPECT_FALSE(courtesy->engine().toneOnAir()) << "the 1 ms watch rests";
    EXPECT_FALSE(courtesy->timeOuts().quietWatch().running());
}

}  // namespace
}  // namespace mv
