#include "platform/windows/com_host_link.h"

#include <oaidl.h>

#include "core/errors.h"
#include "platform/windows/com_text.h"
#include "platform/windows/host_automation.h"
#include "platform/windows/host_event_sink.h"

namespace mv::com {

using Microsoft::WRL::ComPtr;
using host_automation::Command;
using host_automation::fromHostBool;
using host_automation::tableSlot;
using host_automation::toHostBool;

namespace {

// What a failed call says: the host's own description when it gives one.
std::string failureText(HRESULT hr, bool hostDescribesErrors) {
    if (hostDescribesErrors) {
        ComPtr<IErrorInfo> info;
        Bstr description;
        if (GetErrorInfo(0, &info) == S_OK && SUCCEEDED(info->GetDescription(description.out())) &&
            SysStringLen(description.get()) > 0)
            return description.utf8();
    }
    return "the host answered " + describeResult(hr);
}

class ComHostObject final : public HostObject {
public:
    ComHostObject(ComPtr<IUnknown> host, Scheduler& scheduler, HostEvents* events) : m_host(std::move(host)) {
        ComPtr<ISupportErrorInfo> support;
        m_describesErrors = SUCCEEDED(m_host.As(&support)) &&
                            support->InterfaceSupportsErrorInfo(host_automation::kHostInterface) == S_OK;
        if (events) m_events = std::make_unique<EventConnection>(m_host.Get(), scheduler, *events);
    }

    void connect(const std::string& call, bool flag) override {
        Bstr c(call);
        check(invoke(Command::Connect, c.get(), toHostBool(flag)));
    }
    void disconnect(const std::string& call) override {
        Bstr c(call);
        check(invoke(Command::Disconnect, c.get()));
    }
    void disconnectAll() override { check(invoke(Command::DisconnectAll)); }
    void setPTT(bool on) override { check(invoke(Command::SetPTT, toHostBool(on))); }
    bool isBusy() override { return query(Command::IsBusy); }
    bool isReceiving() override { return query(Command::IsReceiving); }
    bool isTransmitting() override { return query(Command::IsTransmitting); }
    bool isCarrierDetected() override { return query(Command::IsCarrierDetected); }
    void sendCW(int32_t option, const std::string& text) override {
        // The text goes as a variant holding a string, even when it is empty.
        VARIANT v;
        VariantInit(&v);
        v.vt = VT_BSTR;
        v.bstrVal = Bstr(text).release();
        const HRESULT hr = invoke(Command::SendCW, static_cast<LONG>(option), v);
        VariantClear(&v);
        check(hr);
    }
    bool isConnectedTo(const std::string& call) override {
        Bstr c(call);
        VARIANT_BOOL result = VARIANT_FALSE;
        check(invoke(Command::IsConnectedTo, c.get(), &result));
        return fromHostBool(result);
    }
    StationInfo stationInfo() override {
        ComPtr<IUnknown> returned;
        check(invoke(Command::StationInfo, returned.GetAddressOf()));
        ComPtr<IUnknown> info;
        if (!returned || FAILED(returned->QueryInterface(host_automation::kStationInfoInterface,
                                                         reinterpret_cast<void**>(info.GetAddressOf()))))
            throw HostError("the host returned no station information");
        using Read = HRESULT(STDMETHODCALLTYPE*)(IUnknown*, BSTR*);
        Bstr callsign;
        const HRESULT hr = reinterpret_cast<Read>(table(info.Get())[host_automation::kCallsignSlot])(info.Get(), callsign.out());
        if (FAILED(hr)) throw HostError("the callsign cannot be read: " + describeResult(hr));
        return {callsign.utf8()};
    }
    void transmitDTMF(const std::string& digit) override {
        Bstr d(digit);
        check(invoke(Command::TransmitDTMF, d.get()));
    }
    void setRTS(bool on) override { check(invoke(Command::SetRTS, toHostBool(on))); }
    void setDTR(bool on) override { check(invoke(Command::SetDTR, toHostBool(on))); }
    void sendChatText(const std::string& text) override {
        Bstr t(text);
        check(invoke(Command::SendChatText, t.get()));
    }
    void executeDTMF(const std::string& digits) override {
        Bstr d(digits);
        check(invoke(Command::ExecuteDTMF, d.get()));
    }
    void performAction(int32_t action) override {
        check(invoke(Command::PerformAction, static_cast<LONG>(action)));
    }

private:
    static void** table(IUnknown* object) { return *reinterpret_cast<void***>(object); }

    // Calls the function at the command's position with the host's own
    // calling convention: the object first, then the arguments as declared.
    template <class... Args>
    HRESULT invoke(Command command, Args... args) {
        using Function = HRESULT(STDMETHODCALLTYPE*)(IUnknown*, Args...);
        return reinterpret_cast<Function>(table(m_host.Get())[tableSlot(command)])(m_host.Get(), args...);
    }

    bool query(Command command) {
        VARIANT_BOOL result = VARIANT_FALSE;
        check(invoke(command, &result));
        return fromHostBool(result);
    }

    void check(HRESULT hr) const {
        if (SUCCEEDED(hr)) return;
        const std::string text = failureText(hr, m_describesErrors);
        // "Call me again later" from a host that is busy: the wait policy
        // decides how long the call is retried.
        if (hr == RPC_E_SERVERCALL_RETRYLATER) throw HostBusyError(text);
        throw HostError(text);
    }

    ComPtr<IUnknown> m_host;  // the host's default interface
    bool m_describesErrors = false;
    std::unique_ptr<EventConnection> m_events;  // after m_host: it goes first
};

}  // namespace

ComPtr<IUnknown> createHostInstance() {
    ComPtr<IUnknown> host;
    const HRESULT hr = CoCreateInstance(host_automation::kHostClass, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                        IID_IUnknown, reinterpret_cast<void**>(host.GetAddressOf()));
    if (FAILED(hr)) throw HostError("the host's automation object cannot be created: " + describeResult(hr));
    return host;
}

ComHostLink::ComHostLink(Scheduler& scheduler, Creator create)
    : m_scheduler(scheduler), m_create(create ? std::move(create) : Creator(createHostInstance)) {}

std::unique_ptr<HostObject> ComHostLink::createObject(const std::string&, HostEvents* events) {
    const ComPtr<IUnknown> object = m_create();
    ComPtr<IUnknown> host;
    const HRESULT hr = object->QueryInterface(host_automation::kHostInterface, reinterpret_cast<void**>(host.GetAddressOf()));
    if (FAILED(hr)) throw HostError("the host's object does not offer its automation interface: " + describeResult(hr));
    return std::make_unique<ComHostObject>(std::move(host), m_scheduler, events);
}

}  // namespace mv::com
