#include "core/host_call_log.h"

#include <type_traits>

#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"

namespace mv {

namespace {
constexpr int64_t kBusyRetryStepMs = 50;
}

HostCallLog::HostCallLog(std::unique_ptr<HostObject> inner, std::string window, Program& program)
    : m_inner(std::move(inner)), m_window(std::move(window)), m_program(program) {}

template <class F>
auto HostCallLog::call(const char* name, F&& f) -> decltype(f()) {
    // A busy host is waited for, as the process-wide policy allows; the
    // caller only sees an error once that time is up.
    const int64_t deadline = m_program.scheduler().now() + m_program.hostBusyWaitMs();
    for (;;) {
        try {
            return f();
        } catch (const HostBusyError& e) {
            if (m_program.scheduler().now() >= deadline) {
                m_program.log().error(m_window, std::string(name) + ": host busy: " + e.what());
                throw;
            }
            m_program.scheduler().block(kBusyRetryStepMs);
        } catch (const HostError& e) {
            m_program.log().error(m_window, std::string(name) + ": " + e.what());
            throw;
        }
    }
}

// Once the end has released the transmitter, nothing may key it again: a
// handler still on the stack unwinds at its next host call.
#define MV_REFUSE_AFTER_END() \
    if (m_program.ended()) throw ProgramEnded {}
#define MV_LOG(name, ...) \
    MV_REFUSE_AFTER_END(); \
    m_program.log().hostCall(m_window, name, {__VA_ARGS__})
#define MV_LOGR(name, result, ...) m_program.log().hostCall(m_window, name, {__VA_ARGS__}, LogValue{result})

void HostCallLog::connect(const std::string& c, bool flag) {
    MV_LOG("Connect", c, flag);
    call("Connect", [&] { m_inner->connect(c, flag); });
}
void HostCallLog::disconnect(const std::string& c) {
    MV_LOG("Disconnect", c);
    call("Disconnect", [&] { m_inner->disconnect(c); });
}
void HostCallLog::disconnectAll() {
    MV_LOG("DisconnectAll");
    call("DisconnectAll", [&] { m_inner->disconnectAll(); });
}
void HostCallLog::setPTT(bool on) {
    MV_LOG("SetPTT", on);
    call("SetPTT", [&] { m_inner->setPTT(on); });
}
bool HostCallLog::isBusy() {
    MV_REFUSE_AFTER_END();
    const bool r = call("IsBusy", [&] { return m_inner->isBusy(); });
    MV_LOGR("IsBusy", r);
    return r;
}
bool HostCallLog::isReceiving() {
    MV_REFUSE_AFTER_END();
    const bool r = call("IsReceiving", [&] { return m_inner->isReceiving(); });
    MV_LOGR("IsReceiving", r);
    return r;
}
bool HostCallLog::isTransmitting() {
    MV_REFUSE_AFTER_END();
    const bool r = call("IsTransmitting", [&] { return m_inner->isTransmitting(); });
    MV_LOGR("IsTransmitting", r);
    return r;
}
bool HostCallLog::isCarrierDetected() {
    MV_REFUSE_AFTER_END();
    const bool r = call("IsCarrierDetected", [&] { return m_inner->isCarrierDetected(); });
    MV_LOGR("IsCarrierDetected", r);
    return r;
}
void HostCallLog::sendCW(int32_t option, const std::string& text) {
    MV_LOG("SendCW", int64_t{option}, text);
    call("SendCW", [&] { m_inner->sendCW(option, text); });
}
bool HostCallLog::isConnectedTo(const std::string& c) {
    MV_REFUSE_AFTER_END();
    const bool r = call("IsConnectedTo", [&] { return m_inner->isConnectedTo(c); });
    MV_LOGR("IsConnectedTo", r, c);
    return r;
}
StationInfo HostCallLog::stationInfo() {
    MV_REFUSE_AFTER_END();
    StationInfo info = call("StationInfo", [&] { return m_inner->stationInfo(); });
    MV_LOGR("StationInfo", info.callsign);
    return info;
}
void HostCallLog::transmitDTMF(const std::string& digit) {
    MV_LOG("TransmitDTMF", digit);
    call("TransmitDTMF", [&] { m_inner->transmitDTMF(digit); });
}
void HostCallLog::setRTS(bool on) {
    MV_LOG("SetRTS", on);
    call("SetRTS", [&] { m_inner->setRTS(on); });
}
void HostCallLog::setDTR(bool on) {
    MV_LOG("SetDTR", on);
    call("SetDTR", [&] { m_inner->setDTR(on); });
}
void HostCallLog::sendChatText(const std::string& text) {
    MV_LOG("SendChatText", text);
    call("SendChatText", [&] { m_inner->sendChatText(text); });
}
void HostCallLog::executeDTMF(const std::string& digits) {
    MV_LOG("ExecuteDTMF", digits);
    call("ExecuteDTMF", [&] { m_inner->executeDTMF(digits); });
}
void HostCallLog::performAction(int32_t action) {
    MV_LOG("PerformAction", int64_t{action});
    call("PerformAction", [&] { m_inner->performAction(action); });
}

#undef MV_LOG
#undef MV_LOGR
#undef MV_REFUSE_AFTER_END

}  // namespace mv
