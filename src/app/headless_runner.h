#pragma once
// Runs a scenario against the whole suite, in virtual time as fast as the CPU
// allows (or on the real clock), writing the event log.
#include <string>

namespace mv {

struct HeadlessOptions {
    std::string scenarioPath;
    std::string logPath;  // empty: standard output
    std::string recordPath;
    std::string settingsDir;  // empty: the default settings folder
    bool realtime = false;
};

// Exit status: 0 done, 1 could not run (another copy runs, files), 2 bad scenario.
int runHeadless(const HeadlessOptions& options);

}  // namespace mv
