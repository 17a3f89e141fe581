#pragma once
// A host that behaves like a real node, for running the suite without one:
// carrier, Internet receive, transmitter (keyed by SetPTT and by the host
// itself while it sends Morse or DTMF tones), busy flag, connected stations,
// DTR and RTS lines and the node's callsign. Every command is recorded; events
// are injected by the host console, scenarios and tests, and each one reaches
// every subscribed window as a separate message.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "core/host_link.h"

namespace mv {

class Scheduler;
class Timer;
class EventLog;

// A burst of tone the host puts on the air: one frequency (Morse) or a pair (DTMF).
struct ToneBurst {
    int64_t startMs;  // monotonic
    int64_t durationMs;
    double frequency1;
    double frequency2;  // 0 for a single tone
};

class SimulatedHost final : public HostLink {
public:
    SimulatedHost(Scheduler& scheduler, EventLog& log);
    ~SimulatedHost() override;

    std::unique_ptr<HostObject> createObject(const std::string& windowName, HostEvents* events) override;

    // --- the node's own settings ---
    std::string callsign = "N0CALL";
    int cwWpm = 20;
    double cwPitchHz = 800.0;
    int connectDelayMs = 500;
    int dtmfToneMs = 100;
    int dtmfGapMs = 50;

    // --- events, as the node would raise them ---
    void setCarrier(bool on);
    void setReceiving(bool on);
    void setBusy(bool on);
    void receiveDTMF(const std::string& digits);
    void stationConnects(const std::string& call, const std::string& name, const std::string& address);
    void stationDisconnects(const std::string& call);
    void receiveChat(const std::string& text);
    void closing();

    // --- state ---
    bool carrier() const { return m_carrier; }
    bool receiving() const { return m_receiving; }
    bool busy() const { return m_busy; }
    bool pttKeyed() const { return m_ptt; }
    bool transmitting() const;
    // Until when the host keys itself for the Morse and DTMF tones it was given.
    int64_t toneKeyedUntilMs() const { return m_toneKeyedUntil; }
    bool dtr() const { return m_dtr; }
    bool rts() const { return m_rts; }
    struct Station {
        std::string name;
        std::string address;
    };
    const std::map<std::string, Station>& stations() const { return m_stations; }
    bool isConnected(const std::string& call) const;

    struct Command {
        int64_t timeMs;
        std::string window;
        std::string call;
        std::vector<std::string> args;
        // A line set to the state it already had (SetPTT(false) while released).
        bool repeat = false;
    };
    const std::vector<Command>& commands() const { return m_commands; }
    size_t countCommands(const std::string& call, const std::string& window = {}) const;
    void clearCommands() { m_commands.clear(); }
    // Something that wants to follow commands live (the host console).
    void setCommandListener(std::function<void(const Command&)> listener) { m_commandListener = std::move(listener); }
    // Where the host's own tones go (the air mixer).
    void setToneSink(std::function<void(const ToneBurst&)> sink) { m_toneSink = std::move(sink); }
    // The air: told the transmitter's state whenever it changes, as PTT and
    // the time until which the host keys itself for its own tones.
    void setTransmitterListener(std::function<void(bool ptt, int64_t toneKeyedUntilMs)> listener) {
        m_transmitterListener = std::move(listener);
    }
    // Something that wants to hear of state changes (the host console).
    void setStateListener(std::function<void()> listener) { m_stateListener = std::move(listener); }

    // --- faults, for tests ---
    // The named call fails with a host error from now on (until cleared).
    void setFailing(const std::string& call, bool failing);
    // The next n calls are refused as busy.
    void refuseAsBusy(int calls) { m_busyRefusals = calls; }
    // Deliver each event to the windows in a shuffled order.
    void shuffleDelivery(uint32_t seed);
    // A flaky node: from now on each call, drawn from a generator seeded with
    // `seed`, fails with a host error (recorded, without its effect) with
    // probability `failShare`, or is refused as busy (not recorded) with
    // probability `busyShare`. Both 0 turns it off.
    void setRandomFaults(double failShare, double busyShare, uint32_t seed);
    struct FaultCounts {
        uint64_t calls = 0;   // calls made while random faults were on
        uint64_t failed = 0;  // of those, failed with a host error
        uint64_t refused = 0; // of those, refused as busy
    };
    const FaultCounts& faultCounts() const { return m_faultCounts; }

    // Hand each event to every subscriber at once, inside the call that
    // raises it, instead of queuing one message per window: for a node behind
    // the automation interface, whose receiving end queues each window's
    // message itself (at the same moment, in the same order).
    void setDeliverAtOnce(bool atOnce) { m_deliverAtOnce = atOnce; }

    // Called by the host objects.
    void record(const std::string& window, std::string call, std::vector<std::string> args, bool repeat = false);
    void connect(const std::string& call);
    void disconnect(const std::string& call);
    void disconnectAll();
    void setPtt(bool on);
    void sendCW(const std::string& text);
    void transmitDTMF(const std::string& digit);
    void setDtr(bool on);
    void setRts(bool on);
    void unsubscribe(uint64_t id);

private:
    struct Subscriber {
        uint64_t id;
        std::string window;
        HostEvents* events;
    };
    void raise(const std::function<void(HostEvents&)>& deliver);
    void keyToneUntil(int64_t endMs);
    void changed();
    // Throws the fault the random fault mode draws for this call, if any.
    void drawFault(const char* call, const std::string& window, std::vector<std::string>& args);
    void after(int delayMs, std::function<void()> action);

    Scheduler& m_scheduler;
    EventLog& m_log;
    std::vector<Subscriber> m_subscribers;
    uint64_t m_nextId = 1;
    bool m_carrier = false;
    bool m_receiving = false;
    bool m_busy = false;
    bool m_ptt = false;
    bool m_dtr = false;
    bool m_rts = false;
    int64_t m_toneKeyedUntil = 0;
    std::map<std::string, Station> m_stations;
    std::set<std::string> m_connecting;
    std::vector<Command> m_commands;
    std::set<std::string, std::less<>> m_failing;
    int m_busyRefusals = 0;
    std::optional<std::mt19937> m_shuffle;
    std::optional<std::mt19937_64> m_faultRandom;
    double m_failShare = 0;
    double m_busyShare = 0;
    FaultCounts m_faultCounts;
    bool m_deliverAtOnce = false;
    std::vector<std::unique_ptr<Timer>> m_pending;
    std::function<void(const Command&)> m_commandListener;
    std::function<void(const ToneBurst&)> m_toneSink;
    std::function<void()> m_stateListener;
    std::function<void(bool, int64_t)> m_transmitterListener;

    friend class SimulatedHostObject;
};

// Standard DTMF frequencies (low, high) of a key, or {0, 0} for none.
std::pair<double, double> dtmfFrequencies(char key);

}  // namespace mv
