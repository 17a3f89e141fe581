// The host stand-in: an in-process automation server with the host's class
// and interface identifiers whose every command and event is the simulated
// node's, handed over by the program through IStandInControl. It is strict
// where a real host may be lenient, so a client's mistakes show: a Boolean
// must be 0 or -1, Morse text must come as a variant holding a string, and
// a member the suite never uses answers E_NOTIMPL.
#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>
#include <olectl.h>
#include <wrl/client.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host_standin.h"
#include "platform/windows/com_object.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/com_text.h"
#include "platform/windows/standin_control.h"

using Microsoft::WRL::ComPtr;
using mv::com::Bstr;
using mv::com::StandInNode;

namespace {

HMODULE g_module = nullptr;
StandInNode* g_node = nullptr;
std::atomic<long> g_objects{0};
std::atomic<long> g_locks{0};
const wchar_t kServerName[] = L"Marrowvane host stand-in";

std::wstring modulePath() {
    std::wstring path(MAX_PATH, L'\0');
    const DWORD n = GetModuleFileNameW(g_module, path.data(), static_cast<DWORD>(path.size()));
    path.resize(n);
    return path;
}

ITypeLib* typeLibrary() {
    static ComPtr<ITypeLib> library;
    if (!library) LoadTypeLibEx(modulePath().c_str(), REGKIND_NONE, &library);
    return library.Get();
}

ComPtr<ITypeInfo> typeInfoOf(REFGUID guid) {
    ComPtr<ITypeInfo> info;
    if (ITypeLib* library = typeLibrary()) library->GetTypeInfoOfGuid(guid, &info);
    return info;
}

// Leaves the reason for the caller to read, as automation servers do.
HRESULT failure(HRESULT hr, const std::string& why) {
    ComPtr<ICreateErrorInfo> create;
    if (SUCCEEDED(CreateErrorInfo(&create))) {
        const std::wstring text = mv::com::widen(why);
        create->SetGUID(IID_IHostAutomation);
        create->SetSource(const_cast<LPOLESTR>(kServerName));
        create->SetDescription(const_cast<LPOLESTR>(text.c_str()));
        ComPtr<IErrorInfo> info;
        if (SUCCEEDED(create.As(&info))) SetErrorInfo(0, info.Get());
    }
    return hr;
}

// The host's Booleans are 0 and -1; anything else is a client's mistake.
bool readTruth(VARIANT_BOOL value, bool& truth) {
    truth = value == VARIANT_TRUE;
    return value == VARIANT_TRUE || value == VARIANT_FALSE;
}

HRESULT notTruth(VARIANT_BOOL value) {
    return failure(E_INVALIDARG, "a Boolean must be 0 or -1, not " + std::to_string(value));
}

HRESULT runOnNode(const std::function<void()>& call) {
    if (!g_node) return failure(E_UNEXPECTED, "the stand-in has no simulated node");
    std::string message;
    switch (g_node->guard(call, message)) {
        case StandInNode::Outcome::Done: return S_OK;
        case StandInNode::Outcome::Busy: return failure(RPC_E_SERVERCALL_RETRYLATER, message);
        case StandInNode::Outcome::Failed: break;
    }
    return failure(E_FAIL, message);
}

// IDispatch through the type library, for clients that call by name.
template <class Interface>
class DispatchThroughTypeInfo : public Interface {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        ComPtr<ITypeInfo> ours = typeInfoOf(__uuidof(Interface));
        if (!ours) return E_FAIL;
        *info = ours.Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        ComPtr<ITypeInfo> ours = typeInfoOf(__uuidof(Interface));
        return ours ? DispGetIDsOfNames(ours.Get(), names, count, ids) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                     EXCEPINFO* exception, UINT* argumentError) override {
        ComPtr<ITypeInfo> ours = typeInfoOf(__uuidof(Interface));
        return ours ? DispInvoke(static_cast<Interface*>(this), ours.Get(), id, flags, params, result, exception,
                                 argumentError)
                    : E_FAIL;
    }
};

class StationInfoObject final : public DispatchThroughTypeInfo<IStationInfo>,
                                private mv::com::ComObject<StationInfoObject> {
public:
    explicit StationInfoObject(std::string callsign) : m_callsign(std::move(callsign)) { ++g_objects; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        return answer(iid, out, static_cast<IStationInfo*>(this), {IID_IUnknown, IID_IDispatch, IID_IStationInfo});
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return addReference(); }
    ULONG STDMETHODCALLTYPE Release() override { return dropReference(); }
    HRESULT STDMETHODCALLTYPE get_Callsign(BSTR* callsign) override {
        if (!callsign) return E_POINTER;
        *callsign = Bstr(m_callsign).release();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) override {
        if (!name) return E_POINTER;
        *name = Bstr("").release();
        return S_OK;
    }

private:
    friend class mv::com::ComObject<StationInfoObject>;
    ~StationInfoObject() { --g_objects; }
    std::string m_callsign;
};

class HostStandIn;

// The one connection point: the host's events, to every advised sink.
class EventPoint final : public IConnectionPoint {
public:
    explicit EventPoint(HostStandIn& owner) : m_owner(owner) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_IConnectionPoint) {
            *out = static_cast<IConnectionPoint*>(this);
            AddRef();
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override {
        if (!iid) return E_POINTER;
        *iid = DIID_DHostEvents;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer** container) override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override {
        if (!sink || !cookie) return E_POINTER;
        ComPtr<IDispatch> events;
        if (FAILED(sink->QueryInterface(DIID_DHostEvents, reinterpret_cast<void**>(events.GetAddressOf()))))
            return CONNECT_E_CANNOTCONNECT;
        *cookie = ++m_lastCookie;
        m_sinks[*cookie] = events;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override {
        return m_sinks.erase(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
    }
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) override {
        if (connections) *connections = nullptr;
        return E_NOTIMPL;
    }

    // Arguments in their declared order.
    void fire(const wchar_t* event, std::vector<VARIANT> arguments) {
        ComPtr<ITypeInfo> events = typeInfoOf(DIID_DHostEvents);
        DISPID id = DISPID_UNKNOWN;
        LPOLESTR name = const_cast<LPOLESTR>(event);
        if (!events || FAILED(events->GetIDsOfNames(&name, 1, &id))) return;
        std::reverse(arguments.begin(), arguments.end());
        DISPPARAMS params{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        // A sink may go away while the event goes round.
        std::vector<ComPtr<IDispatch>> sinks;
        for (const auto& [cookie, sink] : m_sinks) sinks.push_back(sink);
        for (const auto& sink : sinks)
            sink->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
    }

private:
    HostStandIn& m_owner;
    std::map<DWORD, ComPtr<IDispatch>> m_sinks;
    DWORD m_lastCookie = 0;
};

// Texts go by reference, as the type library declares them; what a sink
// leaves in them is freed here.
class TextByReference {
public:
    explicit TextByReference(const std::string& text) : m_text(text) {}
    VARIANT variant() {
        VARIANT v;
        VariantInit(&v);
        v.vt = VT_BSTR | VT_BYREF;
        v.pbstrVal = m_text.reference();
        return v;
    }

private:
    Bstr m_text;
};

VARIANT textByValue(Bstr& text) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_BSTR;
    v.bstrVal = text.get();
    return v;
}

VARIANT truthByValue(bool truth) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_BOOL;
    v.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    return v;
}

class HostStandIn final : public DispatchThroughTypeInfo<IHostAutomation>,
                          public IConnectionPointContainer,
                          public IProvideClassInfo,
                          public ISupportErrorInfo,
                          private mv::HostEvents,
                          private mv::com::ComObject<HostStandIn> {
public:
    HostStandIn() : m_events(*this) { ++g_objects; }

    // Binds to the node; false (with the reason left) when it cannot.
    HRESULT bind() {
        return runOnNode([this] { m_host = g_node->link().createObject("automation", this); });
    }

    // --- IUnknown ---
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IHostAutomation)
            *out = static_cast<IHostAutomation*>(this);
        else if (iid == IID_IConnectionPointContainer)
            *out = static_cast<IConnectionPointContainer*>(this);
        else if (iid == IID_IProvideClassInfo)
            *out = static_cast<IProvideClassInfo*>(this);
        else if (iid == IID_ISupportErrorInfo)
            *out = static_cast<ISupportErrorInfo*>(this);
        else {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return addReference(); }
    ULONG STDMETHODCALLTYPE Release() override { return dropReference(); }

    // --- the commands ---
    HRESULT STDMETHODCALLTYPE Connect(BSTR call, VARIANT_BOOL flag) override {
        bool f = false;
        if (!readTruth(flag, f)) return notTruth(flag);
        return runOnNode([&] { m_host->connect(mv::com::utf8Of(call), f); });
    }
    HRESULT STDMETHODCALLTYPE Disconnect(BSTR call) override {
        return runOnNode([&] { m_host->disconnect(mv::com::utf8Of(call)); });
    }
    HRESULT STDMETHODCALLTYPE DisconnectAll() override { return runOnNode([&] { m_host->disconnectAll(); }); }
    HRESULT STDMETHODCALLTYPE SetPTT(VARIANT_BOOL on) override { return setLine(on, &mv::HostObject::setPTT); }
    HRESULT STDMETHODCALLTYPE IsBusy(VARIANT_BOOL* r) override { return query(r, &mv::HostObject::isBusy); }
    HRESULT STDMETHODCALLTYPE IsReceiving(VARIANT_BOOL* r) override { return query(r, &mv::HostObject::isReceiving); }
    HRESULT STDMETHODCALLTYPE IsTransmitting(VARIANT_BOOL* r) override {
        return query(r, &mv::HostObject::isTransmitting);
    }
    HRESULT STDMETHODCALLTYPE IsCarrierDetected(VARIANT_BOOL* r) override {
        return query(r, &mv::HostObject::isCarrierDetected);
    }
    HRESULT STDMETHODCALLTYPE SendCW(LONG option, VARIANT text) override {
        if (text.vt != VT_BSTR) return failure(DISP_E_TYPEMISMATCH, "SendCW takes its text as a variant holding a string");
        return runOnNode([&] { m_host->sendCW(option, mv::com::utf8Of(text.bstrVal)); });
    }
    HRESULT STDMETHODCALLTYPE IsConnectedTo(BSTR call, VARIANT_BOOL* r) override {
        if (!r) return E_POINTER;
        bool connected = false;
        const HRESULT hr = runOnNode([&] { connected = m_host->isConnectedTo(mv::com::utf8Of(call)); });
        *r = connected ? VARIANT_TRUE : VARIANT_FALSE;
        return hr;
    }
    HRESULT STDMETHODCALLTYPE StationInfo(IStationInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        std::string callsign;
        const HRESULT hr = runOnNode([&] { callsign = m_host->stationInfo().callsign; });
        if (SUCCEEDED(hr)) *info = new StationInfoObject(callsign);
        return hr;
    }
    HRESULT STDMETHODCALLTYPE TransmitDTMF(BSTR digit) override {
        return runOnNode([&] { m_host->transmitDTMF(mv::com::utf8Of(digit)); });
    }
    HRESULT STDMETHODCALLTYPE SetRTS(VARIANT_BOOL on) override { return setLine(on, &mv::HostObject::setRTS); }
    HRESULT STDMETHODCALLTYPE SetDTR(VARIANT_BOOL on) override { return setLine(on, &mv::HostObject::setDTR); }
    HRESULT STDMETHODCALLTYPE SendChatText(BSTR text) override {
        return runOnNode([&] { m_host->sendChatText(mv::com::utf8Of(text)); });
    }
    HRESULT STDMETHODCALLTYPE ExecuteDTMF(BSTR digits) override {
        return runOnNode([&] { m_host->executeDTMF(mv::com::utf8Of(digits)); });
    }
    HRESULT STDMETHODCALLTYPE PerformAction(LONG action) override {
        return runOnNode([&] { m_host->performAction(action); });
    }

#define MV_RESERVED(n) \
    HRESULT STDMETHODCALLTYPE Reserved##n() override { return failure(E_NOTIMPL, "member " #n " is not one the suite uses"); }
    MV_RESERVED(01) MV_RESERVED(05) MV_RESERVED(12) MV_RESERVED(14) MV_RESERVED(15) MV_RESERVED(16)
    MV_RESERVED(17) MV_RESERVED(18) MV_RESERVED(19) MV_RESERVED(20) MV_RESERVED(21) MV_RESERVED(22)
    MV_RESERVED(23) MV_RESERVED(24) MV_RESERVED(26) MV_RESERVED(27) MV_RESERVED(29) MV_RESERVED(30)
    MV_RESERVED(31) MV_RESERVED(35) MV_RESERVED(36) MV_RESERVED(38) MV_RESERVED(39)
#undef MV_RESERVED

    // --- IConnectionPointContainer ---
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) override {
        if (points) *points = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        if (!point) return E_POINTER;
        *point = nullptr;
        if (iid != DIID_DHostEvents) return CONNECT_E_NOCONNECTION;
        *point = &m_events;
        m_events.AddRef();
        return S_OK;
    }

    // --- IProvideClassInfo ---
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override {
        if (!info) return E_POINTER;
        ComPtr<ITypeInfo> ours = typeInfoOf(CLSID_HostStandIn);
        *info = ours.Detach();
        return *info ? S_OK : E_FAIL;
    }

    // --- ISupportErrorInfo ---
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == IID_IHostAutomation ? S_OK : S_FALSE;
    }

private:
    ~HostStandIn() {
        m_host.reset();
        --g_objects;
    }

    HRESULT setLine(VARIANT_BOOL on, void (mv::HostObject::*set)(bool)) {
        bool b = false;
        if (!readTruth(on, b)) return notTruth(on);
        return runOnNode([&] { (m_host.get()->*set)(b); });
    }
    HRESULT query(VARIANT_BOOL* result, bool (mv::HostObject::*ask)()) {
        if (!result) return E_POINTER;
        bool answer = false;
        const HRESULT hr = runOnNode([&] { answer = (m_host.get()->*ask)(); });
        *result = answer ? VARIANT_TRUE : VARIANT_FALSE;
        return hr;
    }

    // --- the node's events, out through the connection point ---
    void onDTMFString(const std::string& digits) override {
        TextByReference d(digits);
        m_events.fire(L"DTMFString", {d.variant()});
    }
    void onRX(bool receiving) override { m_events.fire(L"RX", {truthByValue(receiving)}); }
    void onCarrierDetect(bool carrier) override { m_events.fire(L"CarrierDetect", {truthByValue(carrier)}); }
    void onConnected(const std::string& call, const std::string& name, const std::string& address) override {
        Bstr c(call), n(name), a(address);
        m_events.fire(L"connected", {textByValue(c), textByValue(n), textByValue(a)});
    }
    void onDisconnected(const std::string& call) override {
        TextByReference c(call);
        m_events.fire(L"Disconnected", {c.variant()});
    }
    void onChatTextReceived(const std::string& text) override {
        TextByReference t(text);
        m_events.fire(L"ChatTextReceived", {t.variant()});
    }
    void onClosing() override { m_events.fire(L"Closing", {}); }

    friend class mv::com::ComObject<HostStandIn>;
    EventPoint m_events;
    std::unique_ptr<mv::HostObject> m_host;

    friend class EventPoint;
};

ULONG EventPoint::AddRef() { return m_owner.AddRef(); }
ULONG EventPoint::Release() { return m_owner.Release(); }
HRESULT EventPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) return E_POINTER;
    *container = &m_owner;
    m_owner.AddRef();
    return S_OK;
}

class ClassObject final : public IClassFactory, public mv::com::IStandInControl {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_IClassFactory)
            *out = static_cast<IClassFactory*>(this);
        else if (iid == mv::com::kStandInControlInterface)
            *out = static_cast<mv::com::IStandInControl*>(this);
        else {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        return S_OK;
    }
    // One static object: its count keeps the module loaded, nothing else.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        ComPtr<HostStandIn> object = mv::com::adopt(new HostStandIn());
        const HRESULT hr = object->bind();
        if (FAILED(hr)) return hr;
        return object->QueryInterface(iid, out);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        lock ? ++g_locks : --g_locks;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Attach(StandInNode* node) override {
        g_node = node;
        return S_OK;
    }
};

ClassObject g_classObject;

std::wstring guidText(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

LONG setValue(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    HKEY opened = nullptr;
    LONG status = RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &opened, nullptr);
    if (status != ERROR_SUCCESS) return status;
    status = RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                            static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(opened);
    return status;
}

// Registered for the whole machine, as regsvr32 does by default: Wine looks
// up classes there only (on Windows this needs an administrator).
const std::wstring kClassKey = L"CLSID\\" + guidText(CLSID_HostStandIn);

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_module = module;
        DisableThreadLibraryCalls(module);
    }
    return TRUE;
}

HRESULT WINAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (clsid != CLSID_HostStandIn) return CLASS_E_CLASSNOTAVAILABLE;
    return g_classObject.QueryInterface(iid, out);
}

HRESULT WINAPI DllCanUnloadNow() { return g_objects == 0 && g_locks == 0 && !g_node ? S_OK : S_FALSE; }

HRESULT WINAPI DllRegisterServer() {
    const std::wstring path = modulePath();
    if (setValue(HKEY_CLASSES_ROOT, kClassKey, nullptr, kServerName) != ERROR_SUCCESS ||
        setValue(HKEY_CLASSES_ROOT, kClassKey + L"\\InprocServer32", nullptr, path) != ERROR_SUCCESS ||
        setValue(HKEY_CLASSES_ROOT, kClassKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment") != ERROR_SUCCESS ||
        setValue(HKEY_CLASSES_ROOT, kClassKey + L"\\TypeLib", nullptr, guidText(LIBID_MarrowvaneHostStandIn)) != ERROR_SUCCESS)
        return SELFREG_E_CLASS;
    ITypeLib* library = typeLibrary();
    if (!library || FAILED(RegisterTypeLib(library, const_cast<OLECHAR*>(path.c_str()), nullptr)))
        return SELFREG_E_TYPELIB;
    return S_OK;
}

HRESULT WINAPI DllUnregisterServer() {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kClassKey.c_str());
    UnRegisterTypeLib(LIBID_MarrowvaneHostStandIn, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
    return S_OK;
}

}  // extern "C"
