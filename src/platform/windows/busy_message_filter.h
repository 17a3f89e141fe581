#pragma once
// The process-wide policy for a host that is busy, as an OLE message filter
// on the engine's apartment: a call the host turns away as busy is retried
// for up to 15 minutes before it fails (no busy dialog: nobody may be there
// to answer one), and while a call is pending the operator's input waits,
// with a notice only once the same 15 minutes are up.
#include <windows.h>

#include <objidl.h>

#include <functional>
#include <string>

#include "platform/windows/com_object.h"

namespace mv::com {

inline constexpr DWORD kHostBusyWaitMs = 900000;

class BusyMessageFilter final : public IMessageFilter, private ComObject<BusyMessageFilter> {
public:
    // `notice` hears, once per pending call, that the host has not answered
    // within the limit.
    explicit BusyMessageFilter(std::function<void(const std::string&)> notice = {}, DWORD limitMs = kHostBusyWaitMs);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return addReference(); }
    ULONG STDMETHODCALLTYPE Release() override { return dropReference(); }

    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD callType, HTASK caller, DWORD elapsedMs, LPINTERFACEINFO info) override;
    // How long to wait before calling again a host that turned a call away,
    // `elapsedMs` after the first try: a delay, or -1 to give up.
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK callee, DWORD elapsedMs, DWORD rejectType) override;
    // A message arrived while a call has been pending for `elapsedMs`: keep
    // waiting; the notice goes out once the limit is reached.
    DWORD STDMETHODCALLTYPE MessagePending(HTASK callee, DWORD elapsedMs, DWORD pendingType) override;

private:
    friend class ComObject<BusyMessageFilter>;
    ~BusyMessageFilter() = default;

    std::function<void(const std::string&)> m_notice;
    DWORD m_limitMs;
    bool m_noticeGiven = false;
};

// COM on this thread as a single-threaded apartment with the busy policy
// installed, for as long as it lives.
class ComApartment {
public:
    explicit ComApartment(std::function<void(const std::string&)> notice = {});
    ~ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    bool m_initialised = false;
    IMessageFilter* m_previous = nullptr;
    BusyMessageFilter* m_filter = nullptr;
};

}  // namespace mv::com
