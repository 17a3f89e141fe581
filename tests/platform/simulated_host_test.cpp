// The simulated node: event fan-out, transmitter keying, connections, faults.
#include "platform/simulated_host.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/errors.h"
#include "core/event_log.h"
#include "core/scheduler.h"

namespace mv {
namespace {

struct Recorder : HostEvents {
    std::string name;
    std::vector<std::string>* trace;
    Recorder(std::string n, std::vector<std::string>* t) : name(std::move(n)), trace(t) {}
    void onDTMFString(const std::string& d) override { trace->push_back(name + ":dtmf " + d); }
    void onConnected(const std::string& c, const std::string&, const std::string&) override {
        trace->push_back(name + ":connected " + c);
    }
    void onClosing() override { trace->push_back(name + ":closing"); }
};

class SimulatedHostTest : public ::testing::Test {
protected:
    VirtualClock clock{LocalDateTime{2026, 11, 22, 14, 0, 0, 0}};
    Scheduler scheduler{clock};
    EventLog log;
    SimulatedHost host{scheduler, log};
    std::vector<std::string> trace;
};

TEST_F(SimulatedHostTest, EachEventReachesEverySubscriberOnceAsItsOwnMessage) {
    Recorder a("a", &trace), b("b", &trace);
    auto objA = host.createObject("a", &a);
    auto objB = host.createObject("b", &b);
    auto silent = host.createObject("tts", nullptr);
    host.receiveDTMF("123");
    EXPECT_TRUE(trace.empty()) << "events are delivered by the scheduler, not inside the injection";
    EXPECT_EQ(scheduler.dispatchedMessages(), 0u);
    scheduler.runUntil(0);
    EXPECT_EQ(trace, (std::vector<std::string>{"a:dtmf 123", "b:dtmf 123"}));
    EXPECT_EQ(scheduler.dispatchedMessages(), 2u);

    objB.reset();  // an unloaded window hears nothing more
    host.closing();
    scheduler.runUntil(1);
    EXPECT_EQ(trace.back(), "a:closing");
    EXPECT_EQ(trace.size(), 3u);
}

TEST_F(SimulatedHostTest, BehindTheAutomationInterfaceEventsAreHandedOverAtOnceInOrder) {
    // There, each window's sink queues its own message; the node must not queue them twice.
    Recorder a("a", &trace), b("b", &trace);
    auto objA = host.createObject("a", &a);
    auto objB = host.createObject("b", &b);
    host.setDeliverAtOnce(true);
    host.receiveDTMF("123");
    EXPECT_EQ(trace, (std::vector<std::string>{"a:dtmf 123", "b:dtmf 123"}));
    objA.reset();
    host.closing();
    EXPECT_EQ(trace.back(), "b:closing");
    EXPECT_EQ(trace.size(), 3u);
    EXPECT_EQ(scheduler.dispatchedMessages(), 0u);
}

TEST_F(SimulatedHostTest, ShuffledDeliveryStillReachesEveryoneOnce) {
    std::vector<std::unique_ptr<Recorder>> windows;
    std::vector<std::unique_ptr<HostObject>> objects;
    for (int i = 0; i < 8; ++i) {
        windows.push_back(std::make_unique<Recorder>("w" + std::to_string(i), &trace));
        objects.push_back(host.createObject(windows.back()->name, windows.back().get()));
    }
    host.shuffleDelivery(42);
    host.receiveDTMF("#5");
    scheduler.runUntil(0);
    std::vector<std::string> sorted = trace;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
    EXPECT_EQ(sorted.size(), 8u);
    EXPECT_NE(trace, sorted) << "seed 42 should not give subscription order";
}

TEST_F(SimulatedHostTest, ConnectConnectsAfterAShortDelayAndRaisesTheEvent) {
    Recorder a("a", &trace);
    auto obj = host.createObject("hub", &a);
    obj->connect("*ECHOTEST*", true);
    obj->connect("*ECHOTEST*", true);  // already on its way
    EXPECT_FALSE(obj->isConnectedTo("*echotest*"));
    scheduler.runUntil(host.connectDelayMs);
    EXPECT_TRUE(obj->isConnectedTo("*echotest*"));
    EXPECT_EQ(trace, (std::vector<std::string>{"a:connected *ECHOTEST*"}));
    obj->disconnect("*ECHOTEST*");
    EXPECT_FALSE(obj->isConnectedTo("*ECHOTEST*"));
}

TEST_F(SimulatedHostTest, MorseAndDtmfKeyTheTransmitterForExactlyTheirLength) {
    std::vector<ToneBurst> tones;
    host.setToneSink([&](const ToneBurst& t) { tones.push_back(t); });
    auto obj = host.createObject("idents", nullptr);
    obj->sendCW(0, "K");  // -.- at 20 WPM: 9 dots of 60 ms
    EXPECT_TRUE(obj->isTransmitting());
    scheduler.runUntil(539);
    EXPECT_TRUE(obj->isTransmitting());
    scheduler.runUntil(540);
    EXPECT_FALSE(obj->isTransmitting());
    ASSERT_EQ(tones.size(), 3u);
    EXPECT_EQ(tones[1].startMs, 240);
    EXPECT_EQ(tones[1].durationMs, 60);
    EXPECT_DOUBLE_EQ(tones[0].frequency1, 800.0);

    tones.clear();
    obj->transmitDTMF("5");
    obj->transmitDTMF("#");
    ASSERT_EQ(tones.size(), 2u);
    EXPECT_DOUBLE_EQ(tones[0].frequency1, 770);
    EXPECT_DOUBLE_EQ(tones[0].frequency2, 1336);
    EXPECT_EQ(tones[1].startMs, tones[0].startMs + host.dtmfToneMs + host.dtmfGapMs);
    EXPECT_THROW(obj->transmitDTMF("X"), HostError);
    EXPECT_THROW(obj->transmitDTMF("12"), HostError);
    // SetPTT keys on its own, independent of tones.
    scheduler.runUntil(2000);
    obj->setPTT(true);
    EXPECT_TRUE(obj->isTransmitting());
    obj->setPTT(false);
    EXPECT_FALSE(obj->isTransmitting());
}

TEST_F(SimulatedHostTest, FaultsCanBeInjectedAndEveryCommandIsRecorded) {
    auto obj = host.createObject("hub", nullptr);
    host.setFailing("SetPTT", true);
    EXPECT_THROW(obj->setPTT(true), HostError);
    EXPECT_FALSE(host.pttKeyed());
    host.setFailing("SetPTT", false);
    host.refuseAsBusy(1);
    EXPECT_THROW(obj->isBusy(), HostBusyError);
    EXPECT_FALSE(obj->isBusy());
    obj->sendChatText("hello");
    EXPECT_EQ(host.countCommands("SetPTT", "hub"), 1u);
    EXPECT_EQ(host.countCommands("SendChatText"), 1u);
    EXPECT_EQ(host.commands().back().args, (std::vector<std::string>{"hello"}));
}

TEST_F(SimulatedHostTest, RandomFaultsFailTheirShareWithoutEffectAndRepeatPerSeed) {
    auto obj = host.createObject("hub", nullptr);
    // Keys and releases in turn; a call that faults must leave the line as it was.
    auto drive = [&](SimulatedHost& h, HostObject& o) {
        std::string outcomes;
        for (int i = 0; i < 2000; ++i) {
            const bool before = h.pttKeyed();
            try {
                o.setPTT(i % 2 == 0);
                outcomes += 'o';
            } catch (const HostBusyError&) {
                outcomes += 'b';
            } catch (const HostError&) {
                outcomes += 'f';
            }
            if (outcomes.back() != 'o') EXPECT_EQ(h.pttKeyed(), before) << "call " << i;
            else EXPECT_EQ(h.pttKeyed(), i % 2 == 0) << "call " << i;
        }
        return outcomes;
    };
    host.setRandomFaults(0.10, 0.05, 7);
    const std::string first = drive(host, *obj);
    const auto& counts = host.faultCounts();
    EXPECT_EQ(counts.calls, 2000u);
    EXPECT_EQ(counts.failed, static_cast<uint64_t>(std::count(first.begin(), first.end(), 'f')));
    EXPECT_EQ(counts.refused, static_cast<uint64_t>(std::count(first.begin(), first.end(), 'b')));
    EXPECT_NEAR(counts.failed / 2000.0, 0.10, 0.025);
    EXPECT_NEAR(counts.refused / 2000.0, 0.05, 0.02);
    // A failed call reached the host and is recorded; a busy refusal is not.
    EXPECT_EQ(host.countCommands("SetPTT"), 2000u - counts.refused);

    // The same seed gives the same faults on another node.
    SimulatedHost again{scheduler, log};
    auto obj2 = again.createObject("hub", nullptr);
    again.setRandomFaults(0.10, 0.05, 7);
    EXPECT_EQ(drive(again, *obj2), first);

    host.setRandomFaults(0, 0, 0);
    EXPECT_EQ(drive(host, *obj).find_first_not_of('o'), std::string::npos);
}

}  // namespace
}  // namespace mv
