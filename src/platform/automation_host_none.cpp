// Builds other than Windows have no automation interface to bind to.
#include <stdexcept>

#include "platform/automation_host.h"

namespace mv {

AutomationHost openAutomationHost(Scheduler&, EventLog&, SimulatedHost&) {
    throw std::runtime_error("this build cannot bind to the host program (only the Windows build can); "
                             "it runs on the simulated host");
}

}  // namespace mv
