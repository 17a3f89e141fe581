#include "platform/windows/stand_in_node.h"

#include "core/errors.h"
#include "platform/simulated_host.h"

namespace mv::com {

HostLink& SimulatedStandInNode::link() { return m_node; }

StandInNode::Outcome SimulatedStandInNode::guard(const std::function<void()>& call, std::string& message) noexcept {
    try {
        call();
        return Outcome::Done;
    } catch (const HostBusyError& e) {
        message = e.what();
        return Outcome::Busy;
    } catch (const std::exception& e) {
        message = e.what();
    } catch (...) {
        message = "the simulated node failed";
    }
    return Outcome::Failed;
}

}  // namespace mv::com
