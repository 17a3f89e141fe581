// The DTMF control window as the node and the operator see it, in virtual time.
#include "dtmf/dtmf_control_window.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "core/errors.h"
#include "core/module_surfaces.h"
#include "dtmf_rig.h"
#include "support/read_text.h"

namespace mv {
namespace {

class DtmfControlTest : public test::DtmfRig {};

TEST_F(DtmfControlTest, LoadsHiddenUnkeyedAndSetsTheHostWaitForTheWholeProcess) {
    start();
    EXPECT_EQ(dtmf->caption(), "Marrowvane    N0CALL   v1.0.0   Control DTMF");
    EXPECT_TRUE(dtmf->isLoaded());
    EXPECT_FALSE(dtmf->isVisible());
    EXPECT_EQ(calls("StationInfo").size(), 1u);
    EXPECT_EQ(calls("SetPTT"), (Args{{"false"}}));
    EXPECT_EQ(suite->program().hostBusyWaitMs(), 900000);
    // The hub's button reaches it.
    operate([&] { static_cast<Button*>(suite->program().window("hub")->findByCaption("Control DTMF"))->click(); });
    EXPECT_TRUE(dtmf->isVisible());
    click("Hide");
    EXPECT_FALSE(dtmf->isVisible());
}

TEST_F(DtmfControlTest, AutoRowsAreConnectedOnceAMinuteUntilTheHostReportsThem) {
    start();
    type("CALL5", "12345");
    type("CALL9", "w1aw-l");
    operate([&] {
        check("CHECK5").setValue(1);
        check("CHECK9").setValue(1);
        check("CHECK7").setValue(1);  // row 7's station is empty
    });
    suite->host().connectDelayMs = 90000;  // the first attempt is still pending at the next minute
    run(59999);
    EXPECT_TRUE(calls("Connect").empty());
    run(1);
    EXPECT_EQ(calls("Connect"), (Args{{"12345", "true"}, {"W1AW-L", "true"}}));
    // The empty row is asked about, and nothing is connected for it.
    EXPECT_EQ(calls("IsConnectedTo"), (Args{{"12345"}, {""}, {"W1AW-L"}}));
    run(60000);
    EXPECT_EQ(calls("Connect").size(), 4u);
    run(30000);  // the first attempt completes
    ASSERT_TRUE(suite->host().isConnected("12345"));
    run(30000);
    EXPECT_EQ(calls("Connect").size(), 4u) << "connected rows are left alone";
    suite->host().stationDisconnects("12345");
    run(60000);
    EXPECT_EQ(calls("Connect").size(), 5u);
    EXPECT_EQ(calls("Connect").back(), (std::vector<std::string>{"12345", "true"}));
}

TEST_F(DtmfControlTest, AFailingHostCallSkipsOnlyItsOwnRow) {
    start();
    type("CALL1", "111");
    type("CALL2", "222");
    operate([&] {
        check("CHECK13").setValue(1);
        check("CHECK2").setValue(1);
    });
    suite->host().setFailing("Connect", true);
    run(60000);
    EXPECT_EQ(calls("Connect"), (Args{{"111", "true"}, {"222", "true"}}));
    EXPECT_GE(logCount("\"kind\":\"error\",\"window\":\"dtmf\""), 2u);
    suite->host().setFailing("Connect", false);
    suite->host().setFailing("IsConnectedTo", true);
    run(60000);
    EXPECT_EQ(calls("IsConnectedTo").size(), 4u);
    EXPECT_EQ(calls("Connect").size(), 2u);
}

TEST_F(DtmfControlTest, RowTestTogglesAndAnEmptyRowAsksNothing) {
    start();
    type("CALL5", "12345");
    suite->host().stationConnects("12345", "", "");
    run(0);
    click("RowTest5");
    EXPECT_EQ(calls("Disconnect"), (Args{{"12345"}}));
    EXPECT_FALSE(suite->host().isConnected("12345"));
    click("RowTest5");
    EXPECT_EQ(calls("Connect"), (Args{{"12345", "true"}}));
    const size_t before = suite->host().commands().size();
    click("RowTest6");
    EXPECT_EQ(suite->host().commands().size(), before);
}

TEST_F(DtmfControlTest, NodeNumberFieldsTakeDigitsOnly) {
    start();
    for (int n = 1; n <= 12; ++n)
        EXPECT_EQ(text("CALL" + std::to_string(n)).typeText("K1ABC"), n > 8) << "row " << n;
    for (int n = 1; n <= 10; ++n)
        EXPECT_EQ(text("GROUPCALL" + std::to_string(n)).typeText("K1ABC"), n > 6) << "member " << n;
    EXPECT_FALSE(text("BEACONPERIOD").typeText("1x"));
    EXPECT_FALSE(text("DTMFDELAYSECONDS").typeText("2s"));
}

TEST_F(DtmfControlTest, ClosedControlReopensAfterItsPeriodAndTheCountShowsEdits) {
    start();
    EXPECT_EQ(check("CHECK1").value(), 0);
    EXPECT_EQ(label("ReopenCountdown").caption(), "15");
    run(14000);
    EXPECT_EQ(check("CHECK1").value(), 0);
    EXPECT_EQ(label("ReopenCountdown").caption(), "1");
    run(1000);
    EXPECT_EQ(check("CHECK1").value(), 1);
    EXPECT_EQ(label("ReopenCountdown").caption(), "300");
    // While open the count holds; an edit shows the typed minutes as they are.
    run(5000);
    EXPECT_EQ(label("ReopenCountdown").caption(), "300");
    type("BEACONPERIOD", "7");
    EXPECT_EQ(label("ReopenCountdown").caption(), "7");
    operate([&] { check("CHECK1").setValue(0); });
    run(7000);
    EXPECT_EQ(check("CHECK1").value(), 1);
    EXPECT_EQ(label("ReopenCountdown").caption(), "420");
    // An emptied period reads "0" and becomes "1" at the next tick.
    type("BEACONPERIOD", "");
    EXPECT_EQ(text("BEACONPERIOD").text(), "0");
    run(1000);
    EXPECT_EQ(text("BEACONPERIOD").text(), "1");
}

TEST_F(DtmfControlTest, RemoteCommandsObeyOnlyExactCodesWhileControlIsOpen) {
    start();
    type("TEXT222", "5A");
    type("TEXT333", "66");
    type("CALL5", "12345");
    type("DTMF5", "*5");
    type("CALL6", "777");  // its code stays empty
    hear("*5");
    EXPECT_TRUE(calls("Connect").empty()) << "closed at start-up";
    EXPECT_EQ(logCount("\"function\":\"Con/Disc fila 5\",\"refused\""), 1u);
    hear("5a");
    EXPECT_EQ(check("CHECK1").value(), 0) << "letters are matched case and all";
    hear("5A");
    EXPECT_EQ(check("CHECK1").value(), 1);
    for (const char* near : {"*55", "*", "5", " *5", ""}) hear(near);
    EXPECT_TRUE(calls("Connect").empty()) << "only the whole code matches, and an empty code never";
    hear("*5");
    EXPECT_EQ(calls("Connect"), (Args{{"12345", "true"}}));
    EXPECT_EQ(logCount("\"kind\":\"dtmf\",\"window\":\"dtmf\",\"code\":\"*5\",\"function\":\"Con/Disc fila 5\"}"),
              1u);
    run(1000);
    hear("*5");
    EXPECT_EQ(calls("Disconnect"), (Args{{"12345"}}));
    hear("66");
    EXPECT_EQ(check("CHECK1").value(), 0);
    hear("*5");
    EXPECT_EQ(calls("Connect").size(), 1u);
}

TEST_F(DtmfControlTest, GroupLastAndAllCodesActOnTheirStations) {
    start();
    operate([&] {
        text("TEXT222").typeText("55");
        text("DTMFGROUP1CONNECT").typeText("71");
        text("DTMFGROUP1DISC").typeText("72");
        text("TEXT555").typeText("73");
        text("TEXT111").typeText("70");
        text("GROUPCALL1").typeText("1111");
        text("GROUPCALL9").typeText("w1aw-l");
    });
    hear("55");
    hear("71");
    EXPECT_EQ(calls("Connect"), (Args{{"1111", "true"}, {"W1AW-L", "true"}}));
    run(1000);
    EXPECT_EQ(text("LastConnection").text(), "W1AW-L");
    hear("73");
    EXPECT_EQ(calls("Disconnect"), (Args{{"W1AW-L"}}));
    suite->host().stationConnects("EA4XYZ", "Juan", "Madrid");
    run(0);
    EXPECT_EQ(text("LastConnection").text(), "EA4XYZ");
    hear("70");
    EXPECT_EQ(calls("DisconnectAll").size(), 1u);
    EXPECT_TRUE(suite->host().stations().empty());
    EXPECT_EQ(logCount("\"function\":\"Desconectar Todo\"}"), 1u);
}

TEST_F(DtmfControlTest, TheDelayLetsAStationOperateOnlyForItsAllowedSeconds) {
    start();
    type("TEXT222", "55");
    type("TEXT1111", "81");
    type("TEXT2222", "82");
    type("CALL5", "12345");
    type("DTMF5", "*5");
    type("DTMFDELAYSECONDS", "3");
    EXPECT_EQ(label("DelayCountdown").caption(), "3");
    hear("55");
    hear("81");
    EXPECT_EQ(check("USEDTMFDELAY").value(), 1);

    suite->host().setReceiving(true);
    run(1000);
    EXPECT_EQ(label("ReceptionIndicator").caption(), "Se\xC3\xB1" "al Recibida");
    run(2000);
    EXPECT_EQ(label("DelayCountdown").caption(), "0");
    hear("*5");
    EXPECT_TRUE(calls("Connect").empty()) << "transmitting longer than allowed";
    EXPECT_EQ(logCount("DTMF delay ran out"), 1u);
    // Stopped at "0" until the ident window starts it again.
    suite->host().setReceiving(false);
    run(5000);
    EXPECT_EQ(label("DelayCountdown").caption(), "0");
    operate([&] { surfaceOf<DtmfControl>(suite->program(), "dtmf")->startDelayTimer(); });
    run(1000);
    EXPECT_EQ(label("DelayCountdown").caption(), "3");
    EXPECT_EQ(label("ReceptionIndicator").caption(), "      ");
    hear("*5");
    EXPECT_EQ(calls("Connect").size(), 1u);

    // Without "Usar Retardo" the delay gates nothing.
    suite->host().setReceiving(true);
    run(4000);
    ASSERT_EQ(label("DelayCountdown").caption(), "0");
    hear("82");
    hear("*5");
    EXPECT_EQ(calls("IsConnectedTo").size(), 2u);
}

TEST_F(DtmfControlTest, AZeroOrEmptyAllowanceStopsTheDelay) {
    start();
    type("DTMFDELAYSECONDS", "4");
    ASSERT_EQ(label("DelayCountdown").caption(), "4");
    type("DTMFDELAYSECONDS", "");
    EXPECT_EQ(text("DTMFDELAYSECONDS").text(), "0");
    EXPECT_EQ(label("DelayCountdown").caption(), "0");
    const size_t asked = calls("IsReceiving").size();
    run(5000);
    EXPECT_EQ(calls("IsReceiving").size(), asked) << "no delay ticks while stopped";
    type("DTMFDELAYSECONDS", "00");
    EXPECT_EQ(text("DTMFDELAYSECONDS").text(), "0");
}

TEST_F(DtmfControlTest, SavedValuesComeBackAtTheNextStart) {
    start();
    operate([&] {
        text("CALL9").typeText("EA4XYZ-R");
        text("DTMF9").typeText("*9");
        check("CHECK13").setValue(1);
        text("GROUPCALL10").typeText("k1abc");
        text("TEXT111").typeText("70");
        text("BEACONPERIOD").typeText("7");
        text("DTMFDELAYSECONDS").typeText("10");
        text("DTMF").typeText("#1");
        check("USEDTMF").setValue(1);
    });
    click("Save");
    EXPECT_EQ(dtmf->statusText(), "Guardado 10:00:00");
    const std::string file = test::readText(settingsDir() / "dtmfctrl.ini");
    size_t keys = 0;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) keys += line.find('=') != std::string::npos;
    EXPECT_EQ(keys, 64u);
    EXPECT_NE(file.find("TEXT111=70"), std::string::npos);

    suite.reset();
    start();
    EXPECT_EQ(text("CALL9").text(), "EA4XYZ-R");
    EXPECT_EQ(text("DTMF9").text(), "*9");
    EXPECT_EQ(check("CHECK13").value(), 1);
    EXPECT_EQ(text("GROUPCALL10").text(), "k1abc");
    EXPECT_EQ(text("TEXT111").text(), "70");
    EXPECT_EQ(text("DTMF").text(), "#1");
    EXPECT_EQ(check("USEDTMF").value(), 1);
    // The fields' own handlers ran as the values arrived.
    EXPECT_EQ(label("ReopenCountdown").caption(), "7");
    EXPECT_EQ(label("DelayCountdown").caption(), "10");
}

TEST_F(DtmfControlTest, ClosePromptEndsEverythingOnYesWithoutSaving) {
    start();
    type("CALL1", "123");
    suite->scriptedDialogs().queueAnswer("No");
    operate([&] { dtmf->closeBox(); });
    EXPECT_NE(logText.str().find("\"title\":\"Exit Program\",\"text\":\"Quit Solvane - Are You Sure ? Remember To "
                                 "Save Any Changes  \",\"answer\":\"No\""),
              std::string::npos);
    EXPECT_TRUE(dtmf->isLoaded());
    EXPECT_FALSE(suite->program().ended());
    suite->scriptedDialogs().queueAnswer("Yes");
    operate([&] { dtmf->closeBox(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_EQ(calls("SetPTT").back(), (std::vector<std::string>{"false"}));
    EXPECT_FALSE(std::filesystem::exists(settingsDir() / "dtmfctrl.ini"));
}

TEST_F(DtmfControlTest, HostClosingReleasesTheTransmitterAndEnds) {
    start();
    operate([&] { dtmf->onClosing(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_EQ(calls("SetPTT").size(), 2u);
    EXPECT_EQ(calls("SetPTT").back(), (std::vector<std::string>{"false"}));
}

}  // namespace
}  // namespace mv
