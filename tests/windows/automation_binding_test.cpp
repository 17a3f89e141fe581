// The whole suite bound through COM to the registered stand-in (as
// scripts/test-windows.sh registers it) against the same suite on the
// simulated node in-process: the same script of events, failing calls and
// busy refusals gives the same log, line for line.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "app/suite.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

std::string runScript(HostBinding binding) {
    test::TempDir dir;
    std::ostringstream log;
    SuiteOptions options;
    options.settingsDir = dir.path();
    options.virtualStart = LocalDateTime{2026, 11, 22, 13, 59, 55, 0};
    options.logStream = &log;
    options.defaultVoiceFolder = installedVoiceFolder();
    options.host = binding;
    options.logQueries = true;
    Suite suite(options);
    std::string message;
    EXPECT_EQ(suite.program().start("hub", nullptr, message), Program::StartResult::Started) << message;
    SimulatedHost& node = suite.host();
    const auto run = [&](int64_t ms) { suite.scheduler().runUntil(suite.scheduler().now() + ms); };

    // A failing query: the hub's 100 ms poll logs it and goes on.
    node.setFailing("IsTransmitting", true);
    run(250);
    node.setFailing("IsTransmitting", false);
    // Busy refusals, given up on at once and then waited out.
    suite.program().setHostBusyWaitMs(0);
    node.refuseAsBusy(2);
    run(200);
    suite.program().setHostBusyWaitMs(1000);
    node.refuseAsBusy(3);
    run(200);
    node.receiveChat("N0CALL>que /ver/ usas");
    run(1000);
    // The hour: its announcement cannot key the transmitter.
    node.setFailing("SetPTT", true);
    run(4000);
    node.setFailing("SetPTT", false);
    run(10000);
    node.receiveDTMF("123");
    node.stationConnects("EA4ÑU-L", "José", "10.0.0.7");
    run(15000);
    node.closing();
    run(100);
    return log.str();
}

TEST(AutomationBinding, TheSuiteThroughCOMLogsWhatItLogsOnTheSimulatedNode) {
    const std::string simulated = runScript(HostBinding::Simulated);
    const std::string automation = runScript(HostBinding::Automation);
    // The script did reach the windows and did fail where it should.
    EXPECT_NE(simulated.find("IsTransmitting: IsTransmitting failed in the host"), std::string::npos);
    EXPECT_NE(simulated.find("SetPTT failed in the host"), std::string::npos);
    EXPECT_NE(simulated.find("host busy"), std::string::npos);
    EXPECT_NE(simulated.find("\"SendChatText\""), std::string::npos);
    EXPECT_NE(simulated.find("\"reason\":\"host closing\""), std::string::npos);
    EXPECT_EQ(automation, simulated);
}

}  // namespace
}  // namespace mv
