// The signals a headless run answers, taken only where it waits.
#include "app/run_signals.h"

#include <gtest/gtest.h>

#include <csignal>

namespace mv {
namespace {

TEST(RunSignals, StopAndReopenSignalsWaitUntilTheRunLooksAndTheFirstStopCounts) {
    RunSignals signals;
    // Blocked from construction: raised now, they wait instead of killing.
    std::raise(SIGUSR1);
    std::raise(SIGHUP);
    EXPECT_EQ(signals.stopSignal(), 0);
    signals.wait(0);
    EXPECT_EQ(signals.stopSignal(), SIGHUP);
    EXPECT_TRUE(signals.takeReopenRequest());
    EXPECT_FALSE(signals.takeReopenRequest()) << "one reopen per signal";
    std::raise(SIGTERM);
    signals.wait(0);
    EXPECT_EQ(signals.stopSignal(), SIGHUP);
    EXPECT_STREQ(signalName(SIGHUP), "SIGHUP");
}

}  // namespace
}  // namespace mv
