// The host in another apartment, as the real host program is in another
// process: calls, their strings, Booleans and the station object go through
// proxies made from the registered type library, and the host's events reach
// a waiting run only because the run's wait dispatches the thread's window
// messages. (Wine does not turn calls away when a server's message filter
// asks it to, so the busy filter's retries are tested on their own.)
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "app/run_signals.h"
#include "core/clock.h"
#include "core/event_log.h"
#include "core/scheduler.h"
#include "platform/simulated_host.h"
#include "platform/windows/busy_message_filter.h"
#include "platform/windows/com_host_link.h"
#include "support/loaded_standin.h"

namespace mv::com {
namespace {

using Microsoft::WRL::ComPtr;

constexpr UINT kRaiseDtmf = WM_APP + 1;

// The stand-in and its node on a thread and apartment of their own.
class HostThread {
public:
    HostThread() {
        m_thread = std::thread([this] { run(); });
        std::unique_lock lock(m_mutex);
        m_ready.wait(lock, [this] { return m_started; });
    }
    ~HostThread() {
        PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
        m_thread.join();
    }
    // The host object, unmarshalled into the calling apartment.
    ComPtr<IUnknown> object() {
        ComPtr<IUnknown> proxy;
        CoGetInterfaceAndReleaseStream(m_stream, IID_IUnknown, reinterpret_cast<void**>(proxy.GetAddressOf()));
        m_stream = nullptr;
        return proxy;
    }
    void raiseDtmf() { PostThreadMessageW(m_threadId, kRaiseDtmf, 0, 0); }

private:
    void run() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            VirtualClock clock{LocalDateTime{2026, 11, 23, 10, 0, 0, 0}};
            Scheduler scheduler{clock};
            EventLog log;
            SimulatedHost node{scheduler, log};
            node.setDeliverAtOnce(true);
            test::LoadedStandIn standIn(node);
            ComPtr<IUnknown> object = standIn.creator()();
            CoMarshalInterThreadInterfaceInStream(IID_IUnknown, object.Get(), &m_stream);
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // the thread's queue exists from here
            {
                std::lock_guard lock(m_mutex);
                m_threadId = GetCurrentThreadId();
                m_started = true;
            }
            m_ready.notify_all();
            while (GetMessageW(&message, nullptr, 0, 0) > 0) {
                if (message.message == kRaiseDtmf) node.receiveDTMF("42");
                DispatchMessageW(&message);
            }
        }
        CoUninitialize();
    }

    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_ready;
    bool m_started = false;
    DWORD m_threadId = 0;
    IStream* m_stream = nullptr;
};

class Recorder final : public HostEvents {
public:
    void onDTMFString(const std::string& digits) override { seen.push_back(digits); }
    std::vector<std::string> seen;
};

class CrossApartmentTest : public ::testing::Test {
protected:
    // The apartment as the program sets it up, busy filter included.
    ComApartment apartment;
    VirtualClock clock{LocalDateTime{2026, 11, 23, 10, 0, 0, 0}};
    Scheduler scheduler{clock};
    HostThread host;
};

TEST_F(CrossApartmentTest, CallsReachTheHostThroughProxies) {
    ComHostLink link(scheduler, [this] { return host.object(); });
    auto object = link.createObject("hub", nullptr);
    EXPECT_EQ(object->stationInfo().callsign, "N0CALL");
    EXPECT_FALSE(object->isTransmitting());
    object->setPTT(true);
    EXPECT_TRUE(object->isTransmitting());
    object->setPTT(false);
    EXPECT_FALSE(object->isTransmitting());
    // The host keys itself while it sends its Morse (its clock stands still here).
    object->sendCW(0, "73");
    EXPECT_TRUE(object->isTransmitting());
    object->connect("W1AW", true);
    EXPECT_FALSE(object->isConnectedTo("W1AW")) << "the node connects half a second later, in its own time";
}

TEST_F(CrossApartmentTest, EventsFromAnotherApartmentArriveWhileTheRunWaits) {
    ComHostLink link(scheduler, [this] { return host.object(); });
    Recorder hub;
    auto object = link.createObject("hub", &hub);
    RunSignals signals;
    host.raiseDtmf();
    // Bounded: the event crosses threads, so it takes what it takes.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (hub.seen.empty() && std::chrono::steady_clock::now() < deadline) {
        signals.wait(20);
        scheduler.runUntil(scheduler.now());
    }
    EXPECT_EQ(hub.seen, std::vector<std::string>{"42"});
}

}  // namespace
}  // namespace mv::com
