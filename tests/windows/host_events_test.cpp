// The host's events through the stand-in's connection point: each one reaches
// every window's host object exactly once, as a message of its own queued in
// the order the simulated host queues them, with its texts and truth values
// intact whether the host passes them by value or by reference.
#include <gtest/gtest.h>

#include <windows.h>

#include <oaidl.h>

#include <string>
#include <vector>

#include "core/clock.h"
#include "core/event_log.h"
#include "core/scheduler.h"
#include "platform/simulated_host.h"
#include "platform/windows/com_host_link.h"
#include "platform/windows/host_event_sink.h"
#include "support/loaded_standin.h"

namespace mv::com {
namespace {

using Microsoft::WRL::ComPtr;

// Every window writes what it got into one shared record, so the order
// across windows shows too.
class RecordingWindow final : public HostEvents {
public:
    RecordingWindow(std::string name, std::vector<std::string>& record) : m_name(std::move(name)), m_record(record) {}
    void onDTMFString(const std::string& d) override { note("DTMFString " + d); }
    void onRX(bool r) override { note(std::string("RX ") + (r ? "true" : "false")); }
    void onCarrierDetect(bool c) override { note(std::string("CarrierDetect ") + (c ? "true" : "false")); }
    void onConnected(const std::string& call, const std::string& name, const std::string& address) override {
        note("connected " + call + "|" + name + "|" + address);
    }
    void onDisconnected(const std::string& call) override { note("Disconnected " + call); }
    void onChatTextReceived(const std::string& text) override { note("ChatTextReceived " + text); }
    void onClosing() override { note("Closing"); }

private:
    void note(const std::string& what) { m_record.push_back(m_name + ": " + what); }
    std::string m_name;
    std::vector<std::string>& m_record;
};

class HostEventsTest : public ::testing::Test {
protected:
    HostEventsTest() { node.setDeliverAtOnce(true); }
    void runDue() { scheduler.runUntil(scheduler.now()); }

    VirtualClock clock{LocalDateTime{2026, 11, 23, 10, 0, 0, 0}};
    Scheduler scheduler{clock};
    EventLog log;
    SimulatedHost node{scheduler, log};
    test::LoadedStandIn standIn{node};
    ComHostLink link{scheduler, standIn.creator()};
    std::vector<std::string> record;
};

TEST_F(HostEventsTest, EveryEventReachesEveryWindowOnceAsAMessageOfItsOwn) {
    RecordingWindow hub("hub", record), player("player", record), idents("idents", record);
    auto a = link.createObject("hub", &hub);
    auto b = link.createObject("player", &player);
    auto c = link.createObject("idents", &idents);

    node.receiveDTMF("*123#");
    // Queued for the windows, never handled inside the host's own call.
    EXPECT_TRUE(record.empty());
    runDue();
    node.setReceiving(true);
    node.setCarrier(false);
    node.stationConnects("EA4ÑU-L", "José María", "10.0.0.7");
    node.stationDisconnects("EA4ÑU-L");
    node.receiveChat("73 de EA4ÑU ☺ \"bye\"");
    node.closing();
    runDue();

    std::vector<std::string> expected;
    for (const char* event :
         {"DTMFString *123#", "RX true", "CarrierDetect false", "connected EA4ÑU-L|José María|10.0.0.7",
          "Disconnected EA4ÑU-L", "ChatTextReceived 73 de EA4ÑU ☺ \"bye\"", "Closing"})
        for (const char* window : {"hub", "player", "idents"}) expected.push_back(std::string(window) + ": " + event);
    EXPECT_EQ(record, expected);
}

TEST_F(HostEventsTest, AWindowWhoseObjectIsGoneHearsNothingMoreNotEvenWhatWasQueued) {
    RecordingWindow hub("hub", record), player("player", record);
    auto a = link.createObject("hub", &hub);
    auto b = link.createObject("player", &player);
    node.receiveDTMF("1");
    b.reset();
    node.receiveDTMF("2");
    runDue();
    EXPECT_EQ(record, (std::vector<std::string>{"hub: DTMFString 1", "hub: DTMFString 2"}));
}

TEST_F(HostEventsTest, ObjectsWithoutHandlersAreNotSubscribed) {
    RecordingWindow hub("hub", record);
    auto quiet = link.createObject("program", nullptr);
    auto a = link.createObject("hub", &hub);
    node.receiveChat("hello");
    runDue();
    EXPECT_EQ(record, (std::vector<std::string>{"hub: ChatTextReceived hello"}));
}

// A host object that only says which interface it has, not which class it is.
class DispatchOnly final : public IDispatch {
public:
    explicit DispatchOnly(ITypeInfo* info) : m_info(info) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (iid == IID_IUnknown || iid == IID_IDispatch) {
            *out = static_cast<IDispatch*>(this);
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override {
        *n = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        m_info->AddRef();
        *info = m_info;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

private:
    ITypeInfo* m_info;
};

TEST_F(HostEventsTest, TheEventsAreFoundByNameWhateverDispatchIdsTheHostGivesThem) {
    ComPtr<ITypeInfo> hostInterface;
    ASSERT_EQ(standIn.typeLibrary()->GetTypeInfoOfGuid(host_automation::kHostInterface, &hostInterface), S_OK);
    DispatchOnly host(hostInterface.Get());
    const HostEventInterface found = findHostEventInterface(&host);

    // {883E5A89-FC1C-425E-BB4C-D98373183ECB}, the stand-in's event interface.
    const IID events = {0x883E5A89, 0xFC1C, 0x425E, {0xBB, 0x4C, 0xD9, 0x83, 0x73, 0x18, 0x3E, 0xCB}};
    EXPECT_TRUE(IsEqualIID(found.iid, events));
    using host_automation::Event;
    // The stand-in's own numbering; one event of its own is none of ours.
    const std::map<DISPID, Event> expected = {{9, Event::DTMFString}, {3, Event::RX},
                                              {23, Event::CarrierDetect}, {5, Event::Connected},
                                              {11, Event::Disconnected}, {17, Event::ChatTextReceived},
                                              {42, Event::Closing}};
    EXPECT_EQ(found.events, expected);
}

}  // namespace
}  // namespace mv::com
