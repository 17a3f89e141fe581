#pragma once
// One window's subscription to the host's events. The host's event interface
// is found at run time from its type information (the object's class, its
// default source interface), the event names are mapped to whatever dispatch
// ids the host gives them, and each event received is queued on the
// scheduler as a message of its own for the window, so a handler never runs
// inside a call into or out of the host.
#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>
#include <wrl/client.h>

#include <map>
#include <memory>

#include "core/host_link.h"
#include "platform/windows/host_automation.h"

namespace mv {
class Scheduler;
}

namespace mv::com {

// The host's event interface as found in its type information.
struct HostEventInterface {
    IID iid{};
    std::map<DISPID, host_automation::Event> events;
};

// Throws HostError when the object has no type information to find its
// default source interface in.
HostEventInterface findHostEventInterface(IUnknown* host);

class HostEventSink;

class EventConnection {
public:
    // Subscribes `events` to `host`'s events; throws HostError when the host
    // has no connection point for them.
    EventConnection(IUnknown* host, Scheduler& scheduler, HostEvents& events);
    // Unsubscribes; events already queued for the window are dropped too.
    ~EventConnection();
    EventConnection(const EventConnection&) = delete;
    EventConnection& operator=(const EventConnection&) = delete;

private:
    Microsoft::WRL::ComPtr<HostEventSink> m_sink;
    Microsoft::WRL::ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
};

}  // namespace mv::com
