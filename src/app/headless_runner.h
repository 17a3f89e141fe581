#pragma once
// Runs a scenario against the whole suite, in virtual time as fast as the CPU
// allows (or on the real clock), writing the event log.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/local_time.h"

namespace mv {

struct HeadlessOptions {
    std::string scenarioPath;
    std::string logPath;  // empty: standard output
    std::string recordPath;
    std::string settingsDir;  // empty: the default settings folder
    bool realtime = false;
    // Log every host query and every repeated command too (off: the log
    // keeps to what changes something).
    bool logQueries = false;
    // Bind to the host program's automation interface instead of the
    // simulated node (Windows builds).
    bool automationHost = false;
    // The seed of the suite's random choices. Virtual time uses 1 unless told
    // otherwise, so a scenario replays the same way; a real-time run draws
    // one. Either way the log names it once the suite has started.
    std::optional<uint64_t> seed;
    // The local date-time at which the run stops at the latest (--until),
    // whatever the scenario's own end; in real time, a wall-clock reading.
    std::optional<LocalDateTime> until;
    // The desktop only (--show): windows to show once the suite has started,
    // by the names a scenario uses ("player", "idents" ...), or "all".
    std::vector<std::string> showWindows;
};

// Exit status: 0 done (also when a signal ended it in order), 1 could not run
// (another copy runs, files) or a fatal error, 2 bad scenario or --until.
int runHeadless(const HeadlessOptions& options);

}  // namespace mv
