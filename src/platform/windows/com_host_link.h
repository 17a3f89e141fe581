#pragma once
// The host link over the host program's automation object. Every window gets
// an object of its own; a command is called through the default interface's
// table of functions at the command's position, its text as BSTR and its
// Booleans as the host's 16-bit values, and a failed result becomes a
// HostError in the calling handler (HostBusyError when the host asks to be
// called again later). Events arrive through the object's connection point.
#include <windows.h>

#include <unknwn.h>
#include <wrl/client.h>

#include <functional>
#include <memory>
#include <string>

#include "core/host_link.h"

namespace mv {
class Scheduler;
}

namespace mv::com {

class ComHostLink final : public HostLink {
public:
    using Creator = std::function<Microsoft::WRL::ComPtr<IUnknown>()>;
    // Objects come from `create`; by default, a new instance of the host's
    // class. Events are queued on `scheduler`. COM must be initialised on
    // this thread as a single-threaded apartment.
    explicit ComHostLink(Scheduler& scheduler, Creator create = {});

    // Throws HostError when the object cannot be made or does not offer the
    // host's interface or events.
    std::unique_ptr<HostObject> createObject(const std::string& windowName, HostEvents* events) override;

private:
    Scheduler& m_scheduler;
    Creator m_create;
};

// A new instance of the host's automation class, in or out of process.
Microsoft::WRL::ComPtr<IUnknown> createHostInstance();

}  // namespace mv::com
