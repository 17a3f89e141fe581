#pragma once
// The connection history ("Historial"): one line per station that connects,
// with the time, callsign, name and address, from the moment the hub loads it
// at start-up until the program ends. It stores nothing on disk and never
// keys the transmitter.
#include "core/connection_history.h"
#include "core/window.h"

namespace mv {

class HistoryWindow final : public Window {
public:
    explicit HistoryWindow(Program& program);

    // HostEvents
    void onConnected(const std::string& call, const std::string& name, const std::string& address) override;

protected:
    void build() override;
    void onLoad() override;
    CloseDecision onQueryClose() override;

private:
    ConnectionHistory m_history;
};

}  // namespace mv
