// The COM host link against a host object built by hand at the level of its
// table of functions: every entry after IDispatch's records which entry was
// called and what it was given, so a command reaching the wrong position, a
// Boolean that is not -1, a string or variant of the wrong shape, a result
// read wrongly, an error lost or a BSTR or object leaked all show.
#include <gtest/gtest.h>

#include <windows.h>

#include <objidl.h>
#include <oleauto.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/clock.h"
#include "core/errors.h"
#include "core/scheduler.h"
#include "platform/windows/com_host_link.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/com_text.h"
#include "platform/windows/host_automation.h"

// Turns the BSTR cache off, so a freed string is really freed: in oleaut32,
// but not declared by MinGW's headers.
extern "C" void WINAPI SetOaNoCache();

namespace mv::com {
namespace {

using Microsoft::WRL::ComPtr;

// What each position takes, from the host's table of commands.
enum class Arg { Text, Truth, Whole, VariantText, OutTruth, OutObject };
const std::map<int, std::vector<Arg>> kSignatures = {
    {2, {Arg::Text, Arg::Truth}}, {3, {Arg::Text}},          {4, {}},
    {6, {Arg::Truth}},            {7, {Arg::OutTruth}},      {8, {Arg::OutTruth}},
    {9, {Arg::OutTruth}},         {10, {Arg::OutTruth}},     {11, {Arg::Whole, Arg::VariantText}},
    {13, {Arg::Text, Arg::OutTruth}}, {25, {Arg::OutObject}}, {28, {Arg::Text}},
    {32, {Arg::Truth}},           {33, {Arg::Truth}},        {34, {Arg::Text}},
    {37, {Arg::Text}},            {40, {Arg::Whole}},
};
constexpr int kMembers = 7 + 40;

struct Call {
    int position;
    std::vector<std::string> args;
};

// The station information the fake host hands out: its first own member
// gives the callsign as a new BSTR, which becomes the caller's to free.
struct FakeStationInfo {
    void** table;
    std::atomic<long> references{1};
    std::wstring callsign;

    static HRESULT STDMETHODCALLTYPE queryInterface(FakeStationInfo* self, REFIID iid, void** out) {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == host_automation::kStationInfoInterface) {
            ++self->references;
            *out = self;
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    static ULONG STDMETHODCALLTYPE addRef(FakeStationInfo* self) { return ++self->references; }
    static ULONG STDMETHODCALLTYPE release(FakeStationInfo* self) { return --self->references; }
    static HRESULT STDMETHODCALLTYPE notDispatch(FakeStationInfo*) { return E_NOTIMPL; }
    static HRESULT STDMETHODCALLTYPE callsignOf(FakeStationInfo* self, BSTR* out) {
        *out = SysAllocStringLen(self->callsign.data(), static_cast<UINT>(self->callsign.size()));
        return S_OK;
    }
    static void** vtable() {
        static void* entries[] = {
            reinterpret_cast<void*>(&queryInterface), reinterpret_cast<void*>(&addRef),
            reinterpret_cast<void*>(&release),        reinterpret_cast<void*>(&notDispatch),
            reinterpret_cast<void*>(&notDispatch),    reinterpret_cast<void*>(&notDispatch),
            reinterpret_cast<void*>(&notDispatch),    reinterpret_cast<void*>(&callsignOf)};
        return entries;
    }
    FakeStationInfo() : table(vtable()) {}
};

class FakeHost;

// The fake host's ISupportErrorInfo, a C++ object beside the hand-made table.
class ErrorInfoSupport final : public ISupportErrorInfo {
public:
    explicit ErrorInfoSupport(FakeHost& host) : m_host(host) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == host_automation::kHostInterface ? S_OK : S_FALSE;
    }

private:
    FakeHost& m_host;
};

class FakeHost {
    void** m_table;  // first, where every caller looks for the table of functions

public:
    FakeHost() : m_table(vtable()), m_support(*this) {}

    std::vector<Call> calls;
    VARIANT_BOOL truthAnswer = VARIANT_FALSE;
    FakeStationInfo station;
    HRESULT result = S_OK;
    std::string errorDescription;  // left with the failed result, when not empty
    bool describesErrors = true;
    std::atomic<long> references{1};

    ComPtr<IUnknown> object() {
        ++references;
        return adopt(reinterpret_cast<IUnknown*>(this));
    }

    static HRESULT STDMETHODCALLTYPE queryInterface(FakeHost* self, REFIID iid, void** out) {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == host_automation::kHostInterface) {
            ++self->references;
            *out = self;
            return S_OK;
        }
        if (iid == IID_ISupportErrorInfo && self->describesErrors) {
            ++self->references;
            *out = static_cast<ISupportErrorInfo*>(&self->m_support);
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    static ULONG STDMETHODCALLTYPE addRef(FakeHost* self) { return ++self->references; }
    static ULONG STDMETHODCALLTYPE release(FakeHost* self) { return --self->references; }
    static HRESULT STDMETHODCALLTYPE notDispatch(FakeHost*) { return E_NOTIMPL; }

    template <int Slot>
    static HRESULT STDMETHODCALLTYPE member(FakeHost* self, uintptr_t a, uintptr_t b, uintptr_t c) {
        return self->called(Slot - 7 + 1, {a, b, c});
    }

private:
    HRESULT called(int position, std::vector<uintptr_t> words) {
        Call call{position, {}};
        const auto known = kSignatures.find(position);
        if (known == kSignatures.end()) {
            calls.push_back(call);
            return E_NOTIMPL;
        }
        for (size_t i = 0; i < known->second.size(); ++i) {
            const uintptr_t w = words[i];
            switch (known->second[i]) {
                case Arg::Text: call.args.push_back(utf8Of(reinterpret_cast<BSTR>(w))); break;
                case Arg::Truth: call.args.push_back(std::to_string(static_cast<VARIANT_BOOL>(w & 0xFFFF))); break;
                case Arg::Whole: call.args.push_back(std::to_string(static_cast<LONG>(w & 0xFFFFFFFF))); break;
                case Arg::VariantText: {
                    // A VARIANT, larger than a register, is passed as a pointer to the caller's copy.
                    const VARIANT* v = reinterpret_cast<const VARIANT*>(w);
                    call.args.push_back(v->vt == VT_BSTR ? "BSTR " + utf8Of(v->bstrVal) : "vt " + std::to_string(v->vt));
                    break;
                }
                case Arg::OutTruth: *reinterpret_cast<VARIANT_BOOL*>(w) = truthAnswer; break;
                case Arg::OutObject:
                    ++station.references;
                    *reinterpret_cast<void**>(w) = &station;
                    break;
            }
        }
        calls.push_back(call);
        if (FAILED(result) && !errorDescription.empty()) {
            ComPtr<ICreateErrorInfo> create;
            CreateErrorInfo(&create);
            const std::wstring text = widen(errorDescription);
            create->SetDescription(const_cast<LPOLESTR>(text.c_str()));
            ComPtr<IErrorInfo> info;
            create.As(&info);
            SetErrorInfo(0, info.Get());
        }
        return result;
    }

    template <size_t... I>
    static void** makeTable(std::index_sequence<I...>) {
        static void* entries[] = {reinterpret_cast<void*>(&queryInterface), reinterpret_cast<void*>(&addRef),
                                  reinterpret_cast<void*>(&release),        reinterpret_cast<void*>(&notDispatch),
                                  reinterpret_cast<void*>(&notDispatch),    reinterpret_cast<void*>(&notDispatch),
                                  reinterpret_cast<void*>(&notDispatch),
                                  reinterpret_cast<void*>(&member<static_cast<int>(I) + 7>)...};
        return entries;
    }
    static void** vtable() { return makeTable(std::make_index_sequence<kMembers - 7>()); }

    ErrorInfoSupport m_support;
};

HRESULT ErrorInfoSupport::QueryInterface(REFIID iid, void** out) {
    return FakeHost::queryInterface(&m_host, iid, out);
}
ULONG ErrorInfoSupport::AddRef() { return ++m_host.references; }
ULONG ErrorInfoSupport::Release() { return --m_host.references; }

class ComHostLinkTest : public ::testing::Test {
protected:
    std::unique_ptr<HostObject> hostObject() {
        ComHostLink link(scheduler, [this] { return fake.object(); });
        return link.createObject("hub", nullptr);
    }

    VirtualClock clock{LocalDateTime{2026, 11, 23, 10, 0, 0, 0}};
    Scheduler scheduler{clock};
    FakeHost fake;
};

TEST_F(ComHostLinkTest, EachCommandCallsItsPositionWithTheHostsArgumentForms) {
    struct Case {
        const char* name;
        std::function<void(HostObject&)> call;
        int position;
        std::vector<std::string> args;
    };
    const std::vector<Case> cases = {
        {"Connect", [](HostObject& h) { h.connect("*ECHOTEST*", true); }, 2, {"*ECHOTEST*", "-1"}},
        {"Disconnect", [](HostObject& h) { h.disconnect("EA4ABC-L"); }, 3, {"EA4ABC-L"}},
        {"DisconnectAll", [](HostObject& h) { h.disconnectAll(); }, 4, {}},
        {"SetPTT on", [](HostObject& h) { h.setPTT(true); }, 6, {"-1"}},
        {"SetPTT off", [](HostObject& h) { h.setPTT(false); }, 6, {"0"}},
        {"IsBusy", [](HostObject& h) { h.isBusy(); }, 7, {}},
        {"IsReceiving", [](HostObject& h) { h.isReceiving(); }, 8, {}},
        {"IsTransmitting", [](HostObject& h) { h.isTransmitting(); }, 9, {}},
        {"IsCarrierDetected", [](HostObject& h) { h.isCarrierDetected(); }, 10, {}},
        {"SendCW", [](HostObject& h) { h.sendCW(0, "CQ DE N0CALL"); }, 11, {"0", "BSTR CQ DE N0CALL"}},
        {"SendCW empty", [](HostObject& h) { h.sendCW(0, ""); }, 11, {"0", "BSTR "}},
        {"IsConnectedTo", [](HostObject& h) { h.isConnectedTo("W1AW"); }, 13, {"W1AW"}},
        {"StationInfo", [](HostObject& h) { h.stationInfo(); }, 25, {}},
        {"TransmitDTMF", [](HostObject& h) { h.transmitDTMF("#"); }, 28, {"#"}},
        {"SetRTS", [](HostObject& h) { h.setRTS(true); }, 32, {"-1"}},
        {"SetDTR", [](HostObject& h) { h.setDTR(false); }, 33, {"0"}},
        {"SendChatText", [](HostObject& h) { h.sendChatText("Hola, ¿qué tal? 73 ☺"); }, 34, {"Hola, ¿qué tal? 73 ☺"}},
        {"ExecuteDTMF", [](HostObject& h) { h.executeDTMF("*123#"); }, 37, {"*123#"}},
        {"PerformAction", [](HostObject& h) { h.performAction(7); }, 40, {"7"}},
    };
    auto host = hostObject();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        fake.calls.clear();
        c.call(*host);
        ASSERT_EQ(fake.calls.size(), 1u);
        EXPECT_EQ(fake.calls[0].position, c.position);
        EXPECT_EQ(fake.calls[0].args, c.args);
    }
}

TEST_F(ComHostLinkTest, ResultsReadTheHostsBooleansAndTheCallsignAndReleaseWhatTheyGot) {
    auto host = hostObject();
    fake.truthAnswer = VARIANT_TRUE;
    EXPECT_TRUE(host->isBusy());
    EXPECT_TRUE(host->isConnectedTo("W1AW"));
    fake.truthAnswer = VARIANT_FALSE;
    EXPECT_FALSE(host->isCarrierDetected());
    // Any non-zero value is True to the host's language, not only -1.
    fake.truthAnswer = 1;
    EXPECT_TRUE(host->isTransmitting());

    fake.station.callsign = L"EA4ÑU-L";
    EXPECT_EQ(host->stationInfo().callsign, "EA4ÑU-L");
    EXPECT_EQ(fake.station.references, 1) << "the station information was not released";
    host.reset();
    EXPECT_EQ(fake.references, 1) << "the host object was not released";
}

TEST_F(ComHostLinkTest, AFailedResultBecomesAHostErrorWithTheHostsOwnWords) {
    auto host = hostObject();
    fake.result = E_FAIL;
    fake.errorDescription = "the transmitter is locked out";
    try {
        host->setPTT(true);
        FAIL() << "no error";
    } catch (const HostBusyError&) {
        FAIL() << "not a busy host";
    } catch (const HostError& e) {
        EXPECT_STREQ(e.what(), "the transmitter is locked out");
    }

    // A host that does not describe its errors: the result code is the message.
    fake.describesErrors = false;
    auto plain = hostObject();
    fake.errorDescription.clear();
    try {
        plain->disconnectAll();
        FAIL() << "no error";
    } catch (const HostError& e) {
        EXPECT_NE(std::string(e.what()).find("0x80004005"), std::string::npos) << e.what();
    }

    fake.result = RPC_E_SERVERCALL_RETRYLATER;
    EXPECT_THROW(plain->isBusy(), HostBusyError);
}

// Counts the task allocator's blocks (BSTRs among them) made and not freed.
class OutstandingBlocks final : public IMallocSpy {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (iid == IID_IUnknown || iid == IID_IMallocSpy) {
            *out = static_cast<IMallocSpy*>(this);
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override { return size; }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        if (block) live.insert(block);
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL) override {
        live.erase(block);
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL) override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** newRequest, BOOL) override {
        live.erase(block);
        *newRequest = block;
        return size;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL) override {
        if (block) live.insert(block);
        return block;
    }
    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, BOOL, int actual) override { return actual; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}

    std::set<void*> live;
};

TEST_F(ComHostLinkTest, NoStringOrErrorIsLeftBehindByAnyCommand) {
    auto host = hostObject();
    fake.station.callsign = L"N0CALL";
    fake.truthAnswer = VARIANT_TRUE;
    const auto everything = [&] {
        host->connect("W1AW", true);
        host->disconnect("W1AW");
        host->isConnectedTo("W1AW");
        host->sendCW(0, "73");
        host->stationInfo();
        host->transmitDTMF("5");
        host->sendChatText("chat");
        host->executeDTMF("123");
        fake.result = E_FAIL;
        fake.errorDescription = "refused";
        EXPECT_THROW(host->sendChatText("refused"), HostError);
        fake.result = S_OK;
        fake.errorDescription.clear();
    };
    // Once before counting, so caches the system keeps are already made.
    everything();
    OutstandingBlocks spy;
    // Cached BSTRs would be reused rather than freed, and hide a leak.
    SetOaNoCache();
    ASSERT_EQ(CoRegisterMallocSpy(&spy), S_OK);
    everything();
    const size_t left = spy.live.size();
    CoRevokeMallocSpy();
    EXPECT_EQ(left, 0u) << "blocks allocated while calling the host and never freed";
}

}  // namespace
}  // namespace mv::com
