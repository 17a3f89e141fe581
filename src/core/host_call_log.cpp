#include "core/host_call_log.h"

#include <type_traits>

#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"

namespace mv {

namespace {
constexpr int64_t kBusyRetryStepMs = 50;
LogValue resultValue(bool r) { return r; }
LogValue resultValue(const StationInfo& info) { return info.callsign; }
}  // namespace

HostCallLog::HostCallLog(std::unique_ptr<HostObject> inner, std::string window, Program& program)
    : m_inner(std::move(inner)), m_window(std::move(window)), m_program(program) {}

void HostCallLog::refuseAfterEnd() const {
    // Once the end has released the transmitter, nothing may key it again:
    // a handler still on the stack unwinds at its next host call.
    if (m_program.ended()) throw ProgramEnded{};
}

template <class F>
auto HostCallLog::call(const char* name, F&& f, const std::string& about) -> decltype(f()) {
    // A busy host is waited for, as the process-wide policy allows; the
    // caller only sees an error once that time is up.
    const int64_t deadline = m_program.scheduler().now() + m_program.hostBusyWaitMs();
    for (;;) {
        try {
            if constexpr (std::is_void_v<decltype(f())>) {
                f();
                succeeded(name, about);
                return;
            } else {
                auto r = f();
                succeeded(name, about);
                return r;
            }
        } catch (HostBusyError& e) {
            if (m_program.scheduler().now() >= deadline) {
                failed(name, about, std::string("host busy: ") + e.what());
                e.markLogged();
                throw;
            }
            m_program.scheduler().block(kBusyRetryStepMs);
        } catch (HostError& e) {
            failed(name, about, e.what());
            e.markLogged();
            throw;
        }
    }
}

void HostCallLog::failed(const char* name, const std::string& about, const std::string& message) {
    // Every failure is written when every call is (--log-queries).
    if (m_program.log().recordsQueries()) {
        m_program.log().error(m_window, std::string(name) + ": " + message);
        return;
    }
    if (auto line = m_program.hostFailures().failed(name, about, message, m_program.scheduler().now()))
        m_program.log().error(m_window, *line);
}

void HostCallLog::succeeded(const char* name, const std::string& about) {
    FailureFold& fold = m_program.hostFailures();
    if (fold.quiet()) return;
    if (auto line = fold.succeeded(name, about, m_program.scheduler().now())) m_program.log().error(m_window, *line);
}

template <class F>
auto HostCallLog::query(const char* name, std::vector<LogValue> args, F&& f, const std::string& about)
    -> decltype(f()) {
    // The 100 ms timers ask the same questions all day long; the answers are
    // in the log only when asked for (--log-queries).
    refuseAfterEnd();
    auto r = call(name, std::forward<F>(f), about);
    if (m_program.log().recordsQueries()) m_program.log().hostCall(m_window, name, std::move(args), resultValue(r));
    return r;
}

template <class F>
void HostCallLog::setLine(const char* name, std::optional<bool> HostLineMemory::*line, bool on, F&& f) {
    refuseAfterEnd();
    std::optional<bool>& known = m_program.hostLines().*line;
    // A release check that unkeys every second while nothing is keyed tells
    // the host nothing new: sent as always, logged only when it changes the
    // line (or when asked for every call).
    if (known != on || m_program.log().recordsQueries()) m_program.log().hostCall(m_window, name, {on});
    known.reset();
    call(name, std::forward<F>(f), on ? "true" : "false");
    known = on;
}

#define MV_COMMAND(name, ...)    \
    refuseAfterEnd();            \
    m_program.log().hostCall(m_window, name, {__VA_ARGS__})

void HostCallLog::connect(const std::string& c, bool flag) {
    MV_COMMAND("Connect", c, flag);
    call("Connect", [&] { m_inner->connect(c, flag); }, c);
}
void HostCallLog::disconnect(const std::string& c) {
    MV_COMMAND("Disconnect", c);
    call("Disconnect", [&] { m_inner->disconnect(c); }, c);
}
void HostCallLog::disconnectAll() {
    MV_COMMAND("DisconnectAll");
    call("DisconnectAll", [&] { m_inner->disconnectAll(); });
}
void HostCallLog::setPTT(bool on) {
    refuseAfterEnd();
    Transmitter& transmitter = m_program.transmitter();
    if (on) {
        transmitter.key(m_window);
    } else if (!transmitter.release(m_window)) {
        // This window's part is over, but another window is still on the
        // air: the transmitter stays keyed until that one releases it.
        return;
    }
    setLine("SetPTT", &HostLineMemory::ptt, on, [&] { m_inner->setPTT(on); });
    m_program.keyingCommandIssued(on);
}
void HostCallLog::keepKeyedFor(const std::string& holder) {
    refuseAfterEnd();
    m_program.transmitter().key(holder);
    setLine("SetPTT", &HostLineMemory::ptt, true, [&] { m_inner->setPTT(true); });
    m_program.keyingCommandIssued(true);
}
bool HostCallLog::isBusy() {
    return query("IsBusy", {}, [&] { return m_inner->isBusy(); });
}
bool HostCallLog::isReceiving() {
    return query("IsReceiving", {}, [&] { return m_inner->isReceiving(); });
}
bool HostCallLog::isTransmitting() {
    return query("IsTransmitting", {}, [&] { return m_inner->isTransmitting(); });
}
bool HostCallLog::isCarrierDetected() {
    return query("IsCarrierDetected", {}, [&] { return m_inner->isCarrierDetected(); });
}
void HostCallLog::sendCW(int32_t option, const std::string& text) {
    MV_COMMAND("SendCW", int64_t{option}, text);
    call("SendCW", [&] { m_inner->sendCW(option, text); }, text);
    m_program.keyingCommandIssued(true);
}
bool HostCallLog::isConnectedTo(const std::string& c) {
    return query("IsConnectedTo", {c}, [&] { return m_inner->isConnectedTo(c); }, c);
}
StationInfo HostCallLog::stationInfo() {
    return query("StationInfo", {}, [&] { return m_inner->stationInfo(); });
}
void HostCallLog::transmitDTMF(const std::string& digit) {
    MV_COMMAND("TransmitDTMF", digit);
    call("TransmitDTMF", [&] { m_inner->transmitDTMF(digit); }, digit);
    m_program.keyingCommandIssued(true);
}
void HostCallLog::setRTS(bool on) {
    setLine("SetRTS", &HostLineMemory::rts, on, [&] { m_inner->setRTS(on); });
}
void HostCallLog::setDTR(bool on) {
    setLine("SetDTR", &HostLineMemory::dtr, on, [&] { m_inner->setDTR(on); });
}
void HostCallLog::sendChatText(const std::string& text) {
    MV_COMMAND("SendChatText", text);
    call("SendChatText", [&] { m_inner->sendChatText(text); }, text);
}
void HostCallLog::executeDTMF(const std::string& digits) {
    MV_COMMAND("ExecuteDTMF", digits);
    call("ExecuteDTMF", [&] { m_inner->executeDTMF(digits); }, digits);
}
void HostCallLog::performAction(int32_t action) {
    MV_COMMAND("PerformAction", int64_t{action});
    call("PerformAction", [&] { m_inner->performAction(action); }, std::to_string(action));
}

#undef MV_COMMAND

}  // namespace mv
