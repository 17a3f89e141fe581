#pragma once
// Wraps a window's host object: logs every command with the calling window,
// its arguments and its result, applies the process-wide wait policy to
// calls the host refuses as busy, and refuses every call once the program has
// ended.
#include <memory>
#include <string>

#include "core/host_link.h"

namespace mv {

class Program;

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

private:
    template <class F>
    auto call(const char* name, F&& f) -> decltype(f());

    std::unique_ptr<HostObject> m_inner;
    std::string m_window;
    Program& m_program;
};

}  // namespace mv
