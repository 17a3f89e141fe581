#pragma once
// Wraps a window's host object: logs the commands that change something, with
// the calling window, its arguments and its result, leaves out what only
// repeats (queries, unless asked for, and a line set to the state it already
// has), applies the process-wide wait policy to calls the host refuses as
// busy, refuses every call once the program has ended, and keys the shared
// transmitter on the window's behalf (a release only drops the line when no
// other window still holds it).
#include <memory>
#include <optional>
#include <string>

#include "core/event_log.h"
#include "core/host_link.h"

namespace mv {

class Program;

// What the suite last told the host about its switchable lines, shared by
// every window's call log. Unknown until first set, and again after a call
// that failed. Only the log uses it: every command still goes to the host.
struct HostLineMemory {
    std::optional<bool> ptt;
    std::optional<bool> dtr;
    std::optional<bool> rts;
};

class HostCallLog final : public HostObject {
public:
    HostCallLog(std::unique_ptr<HostObject> inner, std::string window, Program& program);

    void connect(const std::string& call, bool flag) override;
    void disconnect(const std::string& call) override;
    void disconnectAll() override;
    void setPTT(bool on) override;
    bool isBusy() override;
    bool isReceiving() override;
    bool isTransmitting() override;
    bool isCarrierDetected() override;
    void sendCW(int32_t option, const std::string& text) override;
    bool isConnectedTo(const std::string& call) override;
    StationInfo stationInfo() override;
    void transmitDTMF(const std::string& digit) override;
    void setRTS(bool on) override;
    void setDTR(bool on) override;
    void sendChatText(const std::string& text) override;
    void executeDTMF(const std::string& digits) override;
    void performAction(int32_t action) override;
    // SetPTT(true) on behalf of `holder`, the window whose sound is on the
    // air: the holder's own release takes the transmitter down again.
    void keepKeyedFor(const std::string& holder);

private:
    template <class F>
    auto call(const char* name, F&& f, const std::string& about = {}) -> decltype(f());
    template <class F>
    auto query(const char* name, std::vector<LogValue> args, F&& f, const std::string& about = {}) -> decltype(f());
    // A command that sets a line: logged unless the line already has `on`.
    template <class F>
    void setLine(const char* name, std::optional<bool> HostLineMemory::*line, bool on, F&& f);
    void refuseAfterEnd() const;
    // A failed call, written or counted (see FailureFold); `about` is what
    // the call was about (a station, a text), so unlike failures stay apart.
    void failed(const char* name, const std::string& about, const std::string& message);
    void succeeded(const char* name, const std::string& about);

    std::unique_ptr<HostObject> m_inner;
    std::string m_window;
    Program& m_program;
};

}  // namespace mv
