// The RF and Internet time-outs in virtual time: how often the host action
// and the disconnect come, and how the two countdowns pause each other.
#include "courtesy/time_outs.h"

#include <gtest/gtest.h>

#include "courtesy_rig.h"

namespace mv {
namespace {

class TimeOutsTest : public test::CourtesyRig {
protected:
    Label& rfCountdown() { return label("RFCountdown"); }
    Label& ipCountdown() { return label("IPCountdown"); }
};

TEST_F(TimeOutsTest, IdleCountdownsStandAtTheirFullPeriodsAndAZeroPeriodBecomesOne) {
    start("[SETTINGS]\nBEACONPERIOD3=2\n");
    EXPECT_EQ(rfCountdown().caption(), "600") << "design value until the first tick";
    at(1000);
    EXPECT_EQ(rfCountdown().caption(), "300");
    EXPECT_EQ(ipCountdown().caption(), "120");
    for (const char* emptied : {"", "0"}) {
        operate([&] { text("BEACONPERIOD2").setText(emptied); });
        EXPECT_EQ(text("BEACONPERIOD2").text(), "1") << '"' << emptied << '"';
    }
    EXPECT_EQ(rfCountdown().caption(), "300") << "an edit leaves the count until the next tick";
    at(2000);
    EXPECT_EQ(rfCountdown().caption(), "60");
    EXPECT_TRUE(text("BEACONPERIOD3").digitsOnly());
}

TEST_F(TimeOutsTest, AnRfTimeOutActsOnceShowsDescansoAndActsTwiceAndDisconnectsWhenQuiet) {
    start("[SETTINGS]\nBEACONPERIOD2=1\nCHECK4=1\nCHECK6=1\n");
    at(2500);
    suite->host().setCarrier(true);
    at(61999);
    EXPECT_EQ(count("PerformAction"), 0u);
    EXPECT_EQ(rfCountdown().caption(), "1");
    at(62000);
    EXPECT_EQ(count("PerformAction"), 1u);
    EXPECT_EQ(lastArgs("PerformAction"), (std::vector<std::string>{"7"}));
    EXPECT_EQ(rfCountdown().caption(), "60") << "restarts at the full period";
    at(62100);
    EXPECT_EQ(label("TimeOutLabel").caption(), "DESCANSO");
    EXPECT_EQ(label("TimeOutLabel").backColor(), (Rgb{255, 0, 0}));
    EXPECT_FALSE(courtesy->longTransmission().rfCounter().tickSource().running())
        << "the RF message counter stops for good";
    at(70000);
    suite->host().setCarrier(false);
    at(70050);
    EXPECT_EQ(label("TimeOutLabel").caption(), "Funcionamiento");
    EXPECT_EQ(label("TimeOutLabel").backColor(), (Rgb{128, 255, 128}));
    EXPECT_EQ(count("PerformAction"), 3u);
    EXPECT_EQ(count("DisconnectAll"), 1u);
    at(200000);
    EXPECT_EQ(count("PerformAction"), 3u);
    EXPECT_FALSE(courtesy->timeOuts().quietWatch().running());
}

TEST_F(TimeOutsTest, DescansoLastsWhileAnInternetStationTalksAndWithoutCheck6NobodyIsDisconnected) {
    start("[SETTINGS]\nBEACONPERIOD2=1\nCHECK4=1\n");
    at(2500);
    suite->host().setCarrier(true);
    at(62500);
    suite->host().setReceiving(true);
    suite->host().setCarrier(false);
    at(66000);
    EXPECT_EQ(label("TimeOutLabel").caption(), "DESCANSO");
    EXPECT_EQ(count("PerformAction"), 1u);
    suite->host().setReceiving(false);
    at(66010);
    EXPECT_EQ(count("PerformAction"), 3u);
    EXPECT_EQ(count("DisconnectAll"), 0u);
}

TEST_F(TimeOutsTest, AStationThatTalksOnIsTimedOutAgainAfterAnotherFullPeriod) {
    start("[SETTINGS]\nBEACONPERIOD2=1\nCHECK4=1\n");
    at(2500);
    suite->host().setCarrier(true);
    at(122000);
    EXPECT_EQ(times("PerformAction"), (std::vector<int64_t>{62000, 122000}));
}

TEST_F(TimeOutsTest, AnInternetTimeOutActsTwiceOrFourTimesAndDisconnectsOnlyWithCheck5) {
    struct Case {
        const char* check5;
        size_t actions;
        size_t disconnects;
    };
    for (const Case& c : {Case{"0", 2, 0}, Case{"1", 4, 1}, Case{"2", 2, 0}}) {
        SCOPED_TRACE(std::string("CHECK5=") + c.check5);
        stopSuite();
        start(std::string("[SETTINGS]\nBEACONPERIOD3=1\nCHECK7=1\nCHECK5=") + c.check5 + "\n");
        at(2500);
        suite->host().setReceiving(true);
        at(61999);
        EXPECT_EQ(count("PerformAction"), 0u);
        at(62000);
        EXPECT_EQ(count("PerformAction"), c.actions);
        EXPECT_EQ(count("DisconnectAll"), c.disconnects);
        EXPECT_EQ(ipCountdown().caption(), "60");
        if (c.disconnects) {
            const auto& all = suite->host().commands();
            size_t lastAction = 0, disconnect = 0;
            for (size_t i = 0; i < all.size(); ++i) {
                if (all[i].call == "PerformAction") lastAction = i;
                if (all[i].call == "DisconnectAll") disconnect = i;
            }
            EXPECT_GT(disconnect, lastAction) << "the disconnect follows the actions";
        }
    }
}

TEST_F(TimeOutsTest, WithoutCheck4TheRfCountdownHoldsButStillPausesTheInternetOne) {
    start("[SETTINGS]\nBEACONPERIOD3=1\nCHECK7=1\n");
    at(2500);
    suite->host().setCarrier(true);
    at(10000);
    suite->host().setReceiving(true);
    at(200000);
    EXPECT_EQ(rfCountdown().caption(), "300");
    EXPECT_EQ(ipCountdown().caption(), "60") << "paused while the RF user holds the channel";
    EXPECT_FALSE(courtesy->timeOuts().internet().tickSource().running());
    EXPECT_EQ(count("PerformAction"), 0u);
    // The RF side falls quiet: the Internet countdown runs and times out.
    suite->host().setCarrier(false);
    at(262000);
    EXPECT_EQ(count("PerformAction"), 2u);
}

TEST_F(TimeOutsTest, TheSideFoundFirstKeepsCountingAndBothRunAgainOnceItIsQuiet) {
    start("[SETTINGS]\nBEACONPERIOD2=1\nBEACONPERIOD3=1\nCHECK4=1\nCHECK7=1\n");
    at(2500);
    // Both sides start within the same second: the RF countdown ticks first.
    suite->host().setCarrier(true);
    suite->host().setReceiving(true);
    at(12000);
    EXPECT_EQ(rfCountdown().caption(), "50");
    EXPECT_EQ(ipCountdown().caption(), "60");
    EXPECT_FALSE(courtesy->timeOuts().internet().tickSource().running());
    suite->host().setCarrier(false);
    at(22000);
    EXPECT_EQ(rfCountdown().caption(), "60");
    EXPECT_EQ(ipCountdown().caption(), "51");
    EXPECT_FALSE(courtesy->timeOuts().rf().tickSource().running());
    EXPECT_TRUE(courtesy->timeOuts().internet().tickSource().running()) << "never both paused";
    suite->host().setReceiving(false);
    at(24000);
    EXPECT_EQ(ipCountdown().caption(), "60");
    EXPECT_TRUE(courtesy->timeOuts().internet().tickSource().running());
    EXPECT_TRUE(courtesy->timeOuts().rf().tickSource().running());
}

TEST_F(TimeOutsTest, AFailingHostActionDoesNotKeepTheStationConnected) {
    start("[SETTINGS]\nBEACONPERIOD3=1\nCHECK7=1\nCHECK5=1\n");
    suite->host().setFailing("PerformAction", true);
    at(2500);
    suite->host().setReceiving(true);
    at(62000);
    EXPECT_EQ(count("PerformAction"), 4u);
    EXPECT_EQ(count("DisconnectAll"), 1u);
    EXPECT_GE(logCount("PerformAction failed"), 1u);
}

}  // namespace
}  // namespace mv
