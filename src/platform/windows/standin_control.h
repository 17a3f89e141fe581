#pragma once
// The private door of the host stand-in that tests register in place of the
// host program. A server whose class object answers IStandInControl is that
// stand-in, not the host: it wraps a simulated node, and the program hands
// its own node over through Attach so that scenarios drive it exactly as
// they drive the simulated host in-process.
#include <windows.h>

#include <unknwn.h>

#include <functional>
#include <string>

#include "core/host_link.h"

namespace mv::com {

// {2C758E6D-5A93-42A0-987E-5085AAA9BFB1}
inline constexpr IID kStandInControlInterface = {0x2C758E6D, 0x5A93, 0x42A0, {0x98, 0x7E, 0x50, 0x85, 0xAA, 0xA9, 0xBF, 0xB1}};

// The node as the stand-in sees it. The stand-in is a module of its own and
// an exception must not cross into it, so each host call it makes runs
// through guard(), which reports what the call threw instead of throwing.
class StandInNode {
public:
    enum class Outcome { Done, Busy, Failed };
    virtual HostLink& link() = 0;
    virtual Outcome guard(const std::function<void()>& call, std::string& message) noexcept = 0;

protected:
    ~StandInNode() = default;
};

struct IStandInControl : public IUnknown {
    // Null detaches: objects made afterwards fail to create.
    virtual HRESULT STDMETHODCALLTYPE Attach(StandInNode* node) = 0;
};

}  // namespace mv::com
