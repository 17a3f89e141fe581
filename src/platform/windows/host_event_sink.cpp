#include "platform/windows/host_event_sink.h"

#include <cwctype>
#include <string>
#include <vector>

#include "core/errors.h"
#include "core/scheduler.h"
#include "platform/windows/com_object.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/com_text.h"

namespace mv::com {

using Microsoft::WRL::ComPtr;
using host_automation::Event;

namespace {

[[noreturn]] void fail(const std::string& what, HRESULT hr) {
    throw HostError("the host's events: " + what + ": " + describeResult(hr));
}

bool sameName(BSTR name, std::string_view wanted) {
    if (SysStringLen(name) != wanted.size()) return false;
    for (size_t i = 0; i < wanted.size(); ++i)
        if (std::towlower(name[i]) != std::towlower(static_cast<wchar_t>(wanted[i]))) return false;
    return true;
}

ComPtr<ITypeInfo> classInfoOf(IUnknown* host) {
    ComPtr<ITypeInfo> info;
    ComPtr<IProvideClassInfo> provider;
    if (SUCCEEDED(host->QueryInterface(IID_PPV_ARGS(&provider))) && SUCCEEDED(provider->GetClassInfo(&info)))
        return info;
    // A host that does not say which class it is: its class is the host
    // class in the type library its interface comes from.
    ComPtr<IDispatch> dispatch;
    ComPtr<ITypeInfo> interfaceInfo;
    ComPtr<ITypeLib> library;
    UINT index = 0;
    HRESULT hr = host->QueryInterface(IID_PPV_ARGS(&dispatch));
    if (SUCCEEDED(hr)) hr = dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, &interfaceInfo);
    if (SUCCEEDED(hr)) hr = interfaceInfo->GetContainingTypeLib(&library, &index);
    if (SUCCEEDED(hr)) hr = library->GetTypeInfoOfGuid(host_automation::kHostClass, &info);
    if (FAILED(hr)) fail("the host has no type information", hr);
    return info;
}

ComPtr<ITypeInfo> defaultSourceOf(ITypeInfo* coclass) {
    TYPEATTR* attr = nullptr;
    HRESULT hr = coclass->GetTypeAttr(&attr);
    if (FAILED(hr)) fail("the host's class cannot be read", hr);
    const WORD count = attr->cImplTypes;
    coclass->ReleaseTypeAttr(attr);
    constexpr INT kWanted = IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE;
    for (UINT i = 0; i < count; ++i) {
        INT flags = 0;
        HREFTYPE ref = 0;
        ComPtr<ITypeInfo> source;
        if (SUCCEEDED(coclass->GetImplTypeFlags(i, &flags)) && (flags & kWanted) == kWanted &&
            SUCCEEDED(coclass->GetRefTypeOfImplType(i, &ref)) && SUCCEEDED(coclass->GetRefTypeInfo(ref, &source)))
            return source;
    }
    fail("the host's class names no default source interface", E_NOINTERFACE);
}

// Reads one argument as text or as a truth value, whether the host passes it
// by value or by reference.
std::string textArgument(VARIANT& v) {
    VARIANT text;
    VariantInit(&text);
    std::string result;
    if (SUCCEEDED(VariantChangeType(&text, &v, 0, VT_BSTR))) result = utf8Of(text.bstrVal);
    VariantClear(&text);
    return result;
}

bool truthArgument(VARIANT& v) {
    VARIANT truth;
    VariantInit(&truth);
    const bool result = SUCCEEDED(VariantChangeType(&truth, &v, 0, VT_BOOL)) && truth.boolVal != VARIANT_FALSE;
    VariantClear(&truth);
    return result;
}

void deliver(HostEvents& to, Event event, const std::vector<std::string>& text, bool flag) {
    switch (event) {
        case Event::DTMFString: to.onDTMFString(text[0]); break;
        case Event::RX: to.onRX(flag); break;
        case Event::CarrierDetect: to.onCarrierDetect(flag); break;
        case Event::Connected: to.onConnected(text[0], text[1], text[2]); break;
        case Event::Disconnected: to.onDisconnected(text[0]); break;
        case Event::ChatTextReceived: to.onChatTextReceived(text[0]); break;
        case Event::Closing: to.onClosing(); break;
    }
}

int argumentsOf(Event event) {
    for (const auto& e : host_automation::kEventNames)
        if (e.event == event) return e.arguments;
    return 0;
}

}  // namespace

HostEventInterface findHostEventInterface(IUnknown* host) {
    const ComPtr<ITypeInfo> source = defaultSourceOf(classInfoOf(host).Get());
    HostEventInterface found;
    TYPEATTR* attr = nullptr;
    HRESULT hr = source->GetTypeAttr(&attr);
    if (FAILED(hr)) fail("the host's event interface cannot be read", hr);
    found.iid = attr->guid;
    const WORD functions = attr->cFuncs;
    source->ReleaseTypeAttr(attr);
    for (UINT i = 0; i < functions; ++i) {
        FUNCDESC* desc = nullptr;
        if (FAILED(source->GetFuncDesc(i, &desc))) continue;
        Bstr name;
        if (SUCCEEDED(source->GetDocumentation(desc->memid, name.out(), nullptr, nullptr, nullptr)))
            for (const auto& e : host_automation::kEventNames)
                // An event with other arguments than ours is not the one we know.
                if (sameName(name.get(), e.name) && desc->cParams == e.arguments) found.events[desc->memid] = e.event;
        source->ReleaseFuncDesc(desc);
    }
    return found;
}

// The sink the host calls. Reference-counted by COM; it outlives its
// connection while the host still holds it, but then reaches no window.
class HostEventSink final : public IDispatch, private ComObject<HostEventSink> {
public:
    HostEventSink(HostEventInterface events, Scheduler& scheduler, HostEvents& window)
        : m_interface(std::move(events)), m_scheduler(scheduler), m_window(std::make_shared<HostEvents*>(&window)) {}

    void disconnect() { *m_window = nullptr; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        return answer(iid, out, static_cast<IDispatch*>(this), {IID_IUnknown, IID_IDispatch, m_interface.iid});
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return addReference(); }
    ULONG STDMETHODCALLTYPE Release() override { return dropReference(); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (count) *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        if (info) *info = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        const auto known = m_interface.events.find(id);
        if (known == m_interface.events.end()) return S_OK;  // an event no window handles
        const Event event = known->second;
        const int count = argumentsOf(event);
        if (count > 0 && (!params || params->cArgs < static_cast<UINT>(count))) return DISP_E_BADPARAMCOUNT;
        std::vector<std::string> text(3);
        bool flag = false;
        // Arguments arrive last first.
        for (int i = 0; i < count; ++i) {
            VARIANT& v = params->rgvarg[params->cArgs - 1 - i];
            if (event == Event::RX || event == Event::CarrierDetect)
                flag = truthArgument(v);
            else
                text[i] = textArgument(v);
        }
        m_scheduler.post([window = m_window, event, text = std::move(text), flag] {
            if (*window) deliver(**window, event, text, flag);
        });
        return S_OK;
    }

private:
    friend class ComObject<HostEventSink>;
    ~HostEventSink() = default;

    HostEventInterface m_interface;
    Scheduler& m_scheduler;
    // Cleared when the window's object goes, so queued events find no one.
    std::shared_ptr<HostEvents*> m_window;
};

EventConnection::EventConnection(IUnknown* host, Scheduler& scheduler, HostEvents& events) {
    HostEventInterface found = findHostEventInterface(host);
    const IID iid = found.iid;
    ComPtr<IConnectionPointContainer> container;
    HRESULT hr = host->QueryInterface(IID_PPV_ARGS(&container));
    if (FAILED(hr)) fail("the host offers no connection points", hr);
    hr = container->FindConnectionPoint(iid, &m_point);
    if (FAILED(hr)) fail("the host offers no connection point for its events", hr);
    m_sink = adopt(new HostEventSink(std::move(found), scheduler, events));
    hr = m_point->Advise(static_cast<IDispatch*>(m_sink.Get()), &m_cookie);
    if (FAILED(hr)) {
        m_sink->disconnect();
        fail("the host refused the subscription", hr);
    }
}

EventConnection::~EventConnection() {
    m_sink->disconnect();
    m_point->Unadvise(m_cookie);
}

}  // namespace mv::com
