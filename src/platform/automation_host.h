#pragma once
// The host program's automation interface, where this build can bind to it:
// on Windows through COM, elsewhere not at all (the suite then runs on the
// simulated host). When the registered server turns out to be the test
// stand-in, the program's simulated node is handed to it, so a scenario's
// host events reach the windows through the automation interface.
#include <memory>
#include <string>

#include "core/host_link.h"

namespace mv {

class EventLog;
class Scheduler;
class SimulatedHost;

struct AutomationHost {
    std::unique_ptr<HostLink> link;
    // The server is the stand-in driving `node`.
    bool drivesNode = false;
};

// Throws std::runtime_error, with the reason, when there is no host to bind to.
AutomationHost openAutomationHost(Scheduler& scheduler, EventLog& log, SimulatedHost& node);

}  // namespace mv
