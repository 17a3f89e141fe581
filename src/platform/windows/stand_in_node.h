#pragma once
// The program's simulated node as handed to the host stand-in: its host link,
// and the guard that turns whatever a host call throws into an outcome the
// stand-in can answer with a failed result.
#include "platform/windows/standin_control.h"

namespace mv {

class SimulatedHost;

namespace com {

class SimulatedStandInNode final : public StandInNode {
public:
    explicit SimulatedStandInNode(SimulatedHost& node) : m_node(node) {}
    HostLink& link() override;
    Outcome guard(const std::function<void()>& call, std::string& message) noexcept override;

private:
    SimulatedHost& m_node;
};

}  // namespace com
}  // namespace mv
