#include "platform/simulated_host.h"

#include <algorithm>
#include <cctype>

#include "core/errors.h"
#include "core/event_log.h"
#include "core/scheduler.h"
#include "platform/morse.h"

namespace mv {

namespace {
std::string upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}
std::string boolText(bool b) { return b ? "true" : "false"; }
}  // namespace

std::pair<double, double> dtmfFrequencies(char key) {
    static const char* rows[] = {"123A", "456B", "789C", "*0#D"};
    static const double low[] = {697, 770, 852, 941};
    static const double high[] = {1209, 1336, 1477, 1633};
    const char k = static_cast<char>(std::toupper(static_cast<unsigned char>(key)));
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (rows[r][c] == k) return {low[r], high[c]};
    return {0, 0};
}

// One window's reference to the simulated node.
class SimulatedHostObject final : public HostObject {
public:
    SimulatedHostObject(SimulatedHost& host, uint64_t id, std::string window)
        : m_host(host), m_id(id), m_window(std::move(window)) {}
    ~SimulatedHostObject() override { m_host.unsubscribe(m_id); }

    void connect(const std::string& call, bool flag) override {
        enter("Connect", {call, boolText(flag)});
        m_host.connect(call);
    }
    void disconnect(const std::string& call) override {
        enter("Disconnect", {call});
        m_host.disconnect(call);
    }
    void disconnectAll() override {
        enter("DisconnectAll", {});
        m_host.disconnectAll();
    }
    void setPTT(bool on) override {
        enter("SetPTT", {boolText(on)}, m_host.pttKeyed() == on);
        m_host.setPtt(on);
    }
    bool isBusy() override {
        enter("IsBusy", {});
        return m_host.busy();
    }
    bool isReceiving() override {
        enter("IsReceiving", {});
        return m_host.receiving();
    }
    bool isTransmitting() override {
        enter("IsTransmitting", {});
        return m_host.transmitting();
    }
    bool isCarrierDetected() override {
        enter("IsCarrierDetected", {});
        return m_host.carrier();
    }
    void sendCW(int32_t option, const std::string& text) override {
        enter("SendCW", {std::to_string(option), text});
        m_host.sendCW(text);
    }
    bool isConnectedTo(const std::string& call) override {
        enter("IsConnectedTo", {call});
        return m_host.isConnected(call);
    }
    StationInfo stationInfo() override {
        enter("StationInfo", {});
        return {m_host.callsign};
    }
    void transmitDTMF(const std::string& digit) override {
        enter("TransmitDTMF", {digit});
        m_host.transmitDTMF(digit);
    }
    void setRTS(bool on) override {
        enter("SetRTS", {boolText(on)}, m_host.rts() == on);
        m_host.setRts(on);
    }
    void setDTR(bool on) override {
        enter("SetDTR", {boolText(on)}, m_host.dtr() == on);
        m_host.setDtr(on);
    }
    void sendChatText(const std::string& text) override { enter("SendChatText", {text}); }
    void executeDTMF(const std::string& digits) override {
        enter("ExecuteDTMF", {digits});
        m_host.receiveDTMF(digits);
    }
    void performAction(int32_t action) override { enter("PerformAction", {std::to_string(action)}); }

private:
    // Records the call, then applies the faults a test has injected.
    void enter(const char* call, std::vector<std::string> args, bool repeat = false) {
        if (m_host.m_busyRefusals > 0) {
            --m_host.m_busyRefusals;
            throw HostBusyError(std::string(call) + ": the host is busy");
        }
        m_host.drawFault(call, m_window, args);
        m_host.record(m_window, call, std::move(args), repeat);
        if (m_host.m_failing.count(std::string_view(call))) throw HostError(std::string(call) + " failed in the host");
    }

    SimulatedHost& m_host;
    uint64_t m_id;
    std::string m_window;
};

SimulatedHost::SimulatedHost(Scheduler& scheduler, EventLog& log) : m_scheduler(scheduler), m_log(log) {}

SimulatedHost::~SimulatedHost() = default;

std::unique_ptr<HostObject> SimulatedHost::createObject(const std::string& windowName, HostEvents* events) {
    const uint64_t id = m_nextId++;
    if (events) m_subscribers.push_back({id, windowName, events});
    return std::make_unique<SimulatedHostObject>(*this, id, windowName);
}

void SimulatedHost::unsubscribe(uint64_t id) {
    m_subscribers.erase(std::remove_if(m_subscribers.begin(), m_subscribers.end(),
                                       [id](const Subscriber& s) { return s.id == id; }),
                        m_subscribers.end());
}

void SimulatedHost::shuffleDelivery(uint32_t seed) { m_shuffle.emplace(seed); }

void SimulatedHost::raise(const std::function<void(HostEvents&)>& deliver) {
    std::vector<uint64_t> order;
    for (const Subscriber& s : m_subscribers) order.push_back(s.id);
    if (m_shuffle) std::shuffle(order.begin(), order.end(), *m_shuffle);
    const auto deliverTo = [this](uint64_t id, const std::function<void(HostEvents&)>& to) {
        for (const Subscriber& s : m_subscribers)
            if (s.id == id) {
                to(*s.events);
                return;
            }
    };
    if (m_deliverAtOnce) {
        for (uint64_t id : order) deliverTo(id, deliver);
        return;
    }
    // One message per window: each handler runs on its own, and a window that
    // unloaded before its turn simply misses the event.
    for (uint64_t id : order) m_scheduler.post([deliverTo, id, deliver] { deliverTo(id, deliver); });
}

void SimulatedHost::changed() {
    if (m_stateListener) m_stateListener();
}

void SimulatedHost::setCarrier(bool on) {
    m_carrier = on;
    m_log.hostEvent("EchoLink_CarrierDetect", {on});
    changed();
    raise([on](HostEvents& e) { e.onCarrierDetect(on); });
}

void SimulatedHost::setReceiving(bool on) {
    m_receiving = on;
    m_log.hostEvent("EchoLink_RX", {on});
    changed();
    raise([on](HostEvents& e) { e.onRX(on); });
}

void SimulatedHost::setBusy(bool on) {
    m_busy = on;
    m_log.hostEvent("busy", {on});
    changed();
}

void SimulatedHost::receiveDTMF(const std::string& digits) {
    m_log.hostEvent("EchoLink_DTMFString", {digits});
    raise([digits](HostEvents& e) { e.onDTMFString(digits); });
}

void SimulatedHost::stationConnects(const std::string& call, const std::string& name, const std::string& address) {
    m_stations[upper(call)] = {name, address};
    m_connecting.erase(upper(call));
    m_log.hostEvent("Echolink_connected", {call, name, address});
    changed();
    raise([call, name, address](HostEvents& e) { e.onConnected(call, name, address); });
}

void SimulatedHost::stationDisconnects(const std::string& call) {
    m_stations.erase(upper(call));
    m_log.hostEvent("Echolink_Disconnected", {call});
    changed();
    raise([call](HostEvents& e) { e.onDisconnected(call); });
}

void SimulatedHost::receiveChat(const std::string& text) {
    m_log.hostEvent("EchoLink_ChatTextReceived", {text});
    raise([text](HostEvents& e) { e.onChatTextReceived(text); });
}

void SimulatedHost::closing() {
    m_log.hostEvent("EchoLink_Closing", {});
    raise([](HostEvents& e) { e.onClosing(); });
}

bool SimulatedHost::transmitting() const { return m_ptt || m_scheduler.now() < m_toneKeyedUntil; }

bool SimulatedHost::isConnected(const std::string& call) const { return m_stations.count(upper(call)) > 0; }

size_t SimulatedHost::countCommands(const std::string& call, const std::string& window) const {
    return static_cast<size_t>(std::count_if(m_commands.begin(), m_commands.end(), [&](const Command& c) {
        return c.call == call && (window.empty() || c.window == window);
    }));
}

void SimulatedHost::setFailing(const std::string& call, bool failing) {
    if (failing)
        m_failing.insert(call);
    else
        m_failing.erase(call);
}

void SimulatedHost::setRandomFaults(double failShare, double busyShare, uint32_t seed) {
    m_failShare = std::clamp(failShare, 0.0, 1.0);
    m_busyShare = std::clamp(busyShare, 0.0, 1.0 - m_failShare);
    if (m_failShare == 0 && m_busyShare == 0)
        m_faultRandom.reset();
    else
        m_faultRandom.emplace(seed);
}

void SimulatedHost::drawFault(const char* call, const std::string& window, std::vector<std::string>& args) {
    if (!m_faultRandom) return;
    ++m_faultCounts.calls;
    const double draw = std::uniform_real_distribution<double>(0.0, 1.0)(*m_faultRandom);
    if (draw < m_busyShare) {
        ++m_faultCounts.refused;
        throw HostBusyError(std::string(call) + ": the host is busy");
    }
    if (draw < m_busyShare + m_failShare) {
        ++m_faultCounts.failed;
        // A failed call reached the host, so it is in the record like any other.
        record(window, call, std::move(args));
        throw HostError(std::string(call) + " failed in the host");
    }
}

void SimulatedHost::record(const std::string& window, std::string call, std::vector<std::string> args, bool repeat) {
    m_commands.push_back({m_scheduler.now(), window, std::move(call), std::move(args), repeat});
    // A day of idle polling would otherwise grow the record without bound.
    if (m_commands.size() > 200000) m_commands.erase(m_commands.begin(), m_commands.begin() + 100000);
    if (m_commandListener) m_commandListener(m_commands.back());
}

void SimulatedHost::after(int delayMs, std::function<void()> action) {
    // Finished one-shots are dropped here rather than from inside their own handler.
    m_pending.erase(std::remove_if(m_pending.begin(), m_pending.end(),
                                   [](const std::unique_ptr<Timer>& t) { return !t->enabled() && !t->inHandler(); }),
                    m_pending.end());
    auto timer = std::make_unique<Timer>(m_scheduler, "host", std::max(1, delayMs), true, nullptr);
    Timer* raw = timer.get();
    raw->setHandler([raw, action = std::move(action)] {
        raw->setEnabled(false);
        action();
    });
    m_pending.push_back(std::move(timer));
}

void SimulatedHost::connect(const std::string& call) {
    const std::string key = upper(call);
    if (call.empty() || m_stations.count(key) || m_connecting.count(key)) return;
    m_connecting.insert(key);
    after(connectDelayMs, [this, call, key] {
        if (!m_connecting.count(key)) return;
        stationConnects(call, "", "");
    });
}

void SimulatedHost::disconnect(const std::string& call) {
    m_connecting.erase(upper(call));
    if (isConnected(call)) stationDisconnects(call);
}

void SimulatedHost::disconnectAll() {
    m_connecting.clear();
    std::vector<std::string> calls;
    for (const auto& [c, s] : m_stations) calls.push_back(c);
    for (const std::string& c : calls) stationDisconnects(c);
}

void SimulatedHost::setPtt(bool on) {
    if (on == m_ptt) return;
    m_ptt = on;
    if (m_transmitterListener) m_transmitterListener(m_ptt, m_toneKeyedUntil);
    changed();
}

void SimulatedHost::keyToneUntil(int64_t endMs) {
    m_toneKeyedUntil = std::max(m_toneKeyedUntil, endMs);
    if (m_transmitterListener) m_transmitterListener(m_ptt, m_toneKeyedUntil);
    changed();
}

void SimulatedHost::sendCW(const std::string& text) {
    // Morse sent while earlier Morse is still going follows it.
    const int64_t start = std::max(m_scheduler.now(), m_toneKeyedUntil);
    const auto elements = morse::elements(text, cwWpm);
    if (elements.empty()) return;
    if (m_toneSink)
        for (const morse::Element& e : elements) m_toneSink({start + e.startMs, e.durationMs, cwPitchHz, 0});
    keyToneUntil(start + elements.back().startMs + elements.back().durationMs);
}

void SimulatedHost::transmitDTMF(const std::string& digit) {
    const auto [low, high] = digit.size() == 1 ? dtmfFrequencies(digit[0]) : std::pair<double, double>{0, 0};
    if (low == 0) throw HostError("TransmitDTMF: \"" + digit + "\" is not a DTMF key");
    const int64_t start =
        m_toneKeyedUntil > m_scheduler.now() ? m_toneKeyedUntil + dtmfGapMs : m_scheduler.now();
    if (m_toneSink) m_toneSink({start, dtmfToneMs, low, high});
    keyToneUntil(start + dtmfToneMs);
}

void SimulatedHost::setDtr(bool on) {
    m_dtr = on;
    changed();
}

void SimulatedHost::setRts(bool on) {
    m_rts = on;
    changed();
}

}  // namespace mv
