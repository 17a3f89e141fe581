// What a window's host calls leave in the log: commands that change
// something, always; queries and repeats of a line's state only when asked
// for; and every call reaches the host either way.
#include "core/host_call_log.h"

#include <gtest/gtest.h>

#include "app/suite.h"
#include "core/errors.h"
#include "support/suite_rig.h"

namespace mv {
namespace {

class HostCallLogTest : public test::SuiteRig {
protected:
    void start(bool logQueries = false) {
        startSuite({2026, 11, 22, 13, 59, 50, 0}, "/nonexistent/voice/",
                   [&](Suite& s) { s.log().setRecordsQueries(logQueries); });
        hub = &suite->program().window("hub")->host();
        other = suite->program().createHostObject(*suite->program().window("hub"));
        logText.str("");
        suite->host().clearCommands();
    }
    size_t logged(const std::string& call, const std::string& args) const {
        return logCount("\"call\":\"" + call + "\",\"args\":" + args);
    }
    HostObject* hub = nullptr;
    std::unique_ptr<HostObject> other;
};

TEST_F(HostCallLogTest, QueriesReachTheHostButStayOutOfTheLogUnlessAskedFor) {
    for (bool asked : {false, true}) {
        SCOPED_TRACE(asked ? "--log-queries" : "default");
        start(asked);
        hub->isBusy();
        hub->isReceiving();
        hub->isTransmitting();
        hub->isCarrierDetected();
        hub->isConnectedTo("*ECHOTEST*");
        hub->stationInfo();
        EXPECT_EQ(suite->host().commands().size(), 6u);
        EXPECT_EQ(logCount("\"kind\":\"host\""), asked ? 6u : 0u) << logText.str();
        EXPECT_EQ(logged("IsConnectedTo", "[\"*ECHOTEST*\"],\"result\":false"), asked ? 1u : 0u);
        // A query that fails is an error, logged either way.
        suite->host().setFailing("IsBusy", true);
        EXPECT_THROW(hub->isBusy(), HostError);
        EXPECT_EQ(logCount("\"kind\":\"error\""), 1u);
        other.reset();  // before the host it belongs to
        suite.reset();
    }
}

TEST_F(HostCallLogTest, ALineSetToTheStateTheHostHasIsSentButLoggedOnlyWhenItChanges) {
    start();
    // The hub's load released the transmitter already; a release check
    // repeating it every second tells the host nothing new.
    for (int i = 0; i < 5; ++i) hub->setPTT(false);
    EXPECT_EQ(suite->host().countCommands("SetPTT"), 5u);
    EXPECT_EQ(logged("SetPTT", "[false]"), 0u);
    // Keying is a change whichever window does it; a second window keying
    // the already keyed transmitter is not.
    hub->setPTT(true);
    other->setPTT(true);
    hub->setPTT(true);
    other->setPTT(false);
    hub->setPTT(false);
    EXPECT_EQ(logged("SetPTT", "[true]"), 1u);
    EXPECT_EQ(logged("SetPTT", "[false]"), 1u);
    // The serial lines the same way, each on its own.
    other->setDTR(true);
    hub->setDTR(true);
    hub->setRTS(true);
    hub->setRTS(false);
    hub->setRTS(false);
    EXPECT_EQ(logged("SetDTR", "[true]"), 1u);
    EXPECT_EQ(logged("SetRTS", "[true]"), 1u);
    EXPECT_EQ(logged("SetRTS", "[false]"), 1u);
    // Other commands are logged every time, repeated or not.
    hub->sendChatText("hello");
    hub->sendChatText("hello");
    EXPECT_EQ(logged("SendChatText", "[\"hello\"]"), 2u);
}

TEST_F(HostCallLogTest, AFailedCommandLeavesTheLineUnknownSoTheNextOneIsLogged) {
    start();
    suite->host().setFailing("SetPTT", true);
    EXPECT_THROW(hub->setPTT(true), HostError);
    EXPECT_EQ(logCount("\"kind\":\"error\""), 1u);
    suite->host().setFailing("SetPTT", false);
    hub->setPTT(true);
    hub->setPTT(true);
    EXPECT_EQ(logged("SetPTT", "[true]"), 2u) << "the failed attempt and the first that went through";
}

TEST_F(HostCallLogTest, TheTransmitterDropsOnlyWhenTheLastWindowThatKeyedItLetsGo) {
    start();
    HostObject& idents = suite->program().window("idents")->host();
    HostObject& player = suite->program().window("player")->host();
    hub->setPTT(true);
    idents.setPTT(true);
    idents.setPTT(false);
    EXPECT_TRUE(suite->host().pttKeyed()) << "the hub's part is still on the air";
    // A window that holds nothing (an idle release check) cannot take it down either.
    player.setPTT(false);
    EXPECT_TRUE(suite->host().pttKeyed());
    EXPECT_EQ(suite->host().countCommands("SetPTT"), 2u) << "neither release reached the host";
    hub->setPTT(false);
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(logged("SetPTT", "[false]"), 1u);
    // Idle, any window may say so again.
    player.setPTT(false);
    EXPECT_EQ(suite->host().countCommands("SetPTT"), 4u);

    // A key the host refuses still counts: the keying window's release, not
    // a later one of another window, is what lets the transmitter go.
    suite->host().setFailing("SetPTT", true);
    EXPECT_THROW(idents.setPTT(true), HostError);
    suite->host().setFailing("SetPTT", false);
    hub->setPTT(true);
    hub->setPTT(false);
    EXPECT_TRUE(suite->host().pttKeyed());
    idents.setPTT(false);
    EXPECT_FALSE(suite->host().pttKeyed());

    // The program's end releases it whoever holds it.
    idents.setPTT(true);
    hub->setPTT(true);
    suite->program().shutdown("test");
    EXPECT_FALSE(suite->host().pttKeyed());
}

TEST_F(HostCallLogTest, AskedForQueriesRepeatsAreLoggedToo) {
    start(true);
    hub->setPTT(false);
    hub->setPTT(false);
    EXPECT_EQ(logged("SetPTT", "[false]"), 2u);
}

TEST_F(HostCallLogTest, AHostThatStopsAnsweringWritesALineAMinuteNotTenASecondPerWindow) {
    start();
    suite->host().setFailing("IsTransmitting", true);
    run(600'000);
    // Every window's 100 ms poll failed all along: thousands of failures.
    const size_t lines = logCount("\"message\":\"IsTransmitting: ");
    EXPECT_GE(lines, 10u);
    EXPECT_LE(lines, 11u) << "one line when it began, then one a minute";
    EXPECT_EQ(logCount("IsTransmitting failed in the host\"}"), 1u) << "only the first stands alone";
    suite->host().setFailing("IsTransmitting", false);
    run(60'000);
    EXPECT_EQ(logCount("IsTransmitting: answers again, after failing "), 1u);
    EXPECT_GE(suite->host().countCommands("IsTransmitting"), 1000u) << "every poll still reached the host";
}

TEST_F(HostCallLogTest, EveryFailureIsWrittenWhenEveryCallIs) {
    start(true);
    suite->host().setFailing("IsBusy", true);
    for (int i = 0; i < 5; ++i) EXPECT_THROW(hub->isBusy(), HostError);
    EXPECT_EQ(logCount("\"kind\":\"error\""), 5u);
}

}  // namespace
}  // namespace mv
