#include "platform/windows/busy_message_filter.h"

#include <stdexcept>

#include "platform/windows/com_text.h"

namespace mv::com {

namespace {
// How long the host is given before each new try.
constexpr DWORD kRetryAfterMs = 100;
constexpr DWORD kGiveUp = static_cast<DWORD>(-1);
}  // namespace

BusyMessageFilter::BusyMessageFilter(std::function<void(const std::string&)> notice, DWORD limitMs)
    : m_notice(std::move(notice)), m_limitMs(limitMs) {}

HRESULT BusyMessageFilter::QueryInterface(REFIID iid, void** out) {
    return answer(iid, out, static_cast<IMessageFilter*>(this), {IID_IUnknown, IID_IMessageFilter});
}

DWORD BusyMessageFilter::HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) {
    // The host's events are taken at once: the sink only queues them.
    return SERVERCALL_ISHANDLED;
}

DWORD BusyMessageFilter::RetryRejectedCall(HTASK, DWORD elapsedMs, DWORD rejectType) {
    // A call refused outright is not retried; only "busy, call again later" is.
    if (rejectType != SERVERCALL_RETRYLATER) return kGiveUp;
    return elapsedMs < m_limitMs ? kRetryAfterMs : kGiveUp;
}

DWORD BusyMessageFilter::MessagePending(HTASK, DWORD elapsedMs, DWORD) {
    if (elapsedMs < m_limitMs) {
        m_noticeGiven = false;
    } else if (!m_noticeGiven) {
        // No busy dialog: an unattended node has no one to answer it.
        m_noticeGiven = true;
        if (m_notice) m_notice("the host has not answered a call for " + std::to_string(elapsedMs / 60000) + " minutes");
    }
    return PENDINGMSG_WAITDEFPROCESS;
}

ComApartment::ComApartment(std::function<void(const std::string&)> notice) {
    const HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(hr)) throw std::runtime_error("COM cannot start on this thread: " + describeResult(hr));
    m_initialised = true;
    m_filter = new BusyMessageFilter(std::move(notice));
    CoRegisterMessageFilter(m_filter, &m_previous);
}

ComApartment::~ComApartment() {
    IMessageFilter* ours = nullptr;
    CoRegisterMessageFilter(m_previous, &ours);
    if (ours) ours->Release();
    if (m_previous) m_previous->Release();
    m_filter->Release();
    if (m_initialised) CoUninitialize();
}

}  // namespace mv::com
