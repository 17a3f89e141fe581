// Windows: the host link through COM, on a single-threaded apartment with
// the busy policy installed, for as long as the suite runs.
#include <stdexcept>

#include "core/event_log.h"
#include "platform/automation_host.h"
#include "platform/simulated_host.h"
#include "platform/windows/busy_message_filter.h"
#include "platform/windows/com_host_link.h"
#include "platform/windows/com_text.h"
#include "platform/windows/host_automation.h"
#include "platform/windows/stand_in_node.h"
#include "platform/windows/standin_control.h"

namespace mv {

using Microsoft::WRL::ComPtr;

namespace {

class ComAutomationHost final : public HostLink {
public:
    ComAutomationHost(Scheduler& scheduler, EventLog& log, SimulatedHost& node)
        : m_apartment([&log](const std::string& notice) { log.error("", notice); }), m_node(node),
          m_link(scheduler) {
        ComPtr<IClassFactory> factory;
        const HRESULT hr = CoGetClassObject(host_automation::kHostClass, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                            nullptr, IID_PPV_ARGS(&factory));
        if (FAILED(hr))
            throw std::runtime_error("the host program's automation object is not available (" +
                                     com::describeResult(hr) + "); is the host installed?");
        if (SUCCEEDED(factory->QueryInterface(com::kStandInControlInterface,
                                              reinterpret_cast<void**>(m_standIn.GetAddressOf())))) {
            // The stand-in's node raises each event straight into the
            // windows' sinks, which queue one message per window themselves.
            node.setDeliverAtOnce(true);
            m_standIn->Attach(&m_node);
        }
    }
    ~ComAutomationHost() override {
        if (m_standIn) m_standIn->Attach(nullptr);
    }

    std::unique_ptr<HostObject> createObject(const std::string& windowName, HostEvents* events) override {
        return m_link.createObject(windowName, events);
    }
    bool drivesNode() const { return static_cast<bool>(m_standIn); }

private:
    com::ComApartment m_apartment;
    com::SimulatedStandInNode m_node;
    com::ComHostLink m_link;
    ComPtr<com::IStandInControl> m_standIn;
};

}  // namespace

AutomationHost openAutomationHost(Scheduler& scheduler, EventLog& log, SimulatedHost& node) {
    auto host = std::make_unique<ComAutomationHost>(scheduler, log, node);
    const bool drives = host->drivesNode();
    return {std::move(host), drives};
}

}  // namespace mv
