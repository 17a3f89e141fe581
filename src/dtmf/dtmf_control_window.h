#pragma once
// The DTMF control window: twelve preferred stations (kept connected when
// marked "Auto", toggled by their "Con/Disc Pruebe" buttons), two station
// groups, the node's remote-control codes and the gates on them (DTMF control
// open or closed, with its re-open countdown; the DTMF delay), the time-request
// code the ident window reads, and the last station that connected.
#include <memory>
#include <string>
#include <vector>

#include "core/module_surfaces.h"
#include "core/period_countdown.h"
#include "core/settings_binder.h"
#include "core/window.h"
#include "dtmf/dtmf_delay.h"
#include "dtmf/group_call.h"

namespace mv {

inline constexpr const char* kDtmfControlSettingsFile = "dtmfctrl.ini";
inline constexpr int kPreferredStations = 12;

class DtmfControlWindow final : public Window, public DtmfControl {
public:
    explicit DtmfControlWindow(Program& program);
    ~DtmfControlWindow() override;

    // DtmfControl: the ident window restarts the delay's tick source.
    void startDelayTimer() override;

    // "Con/Disc Pruebe" of row n (1 to 12).
    void rowTest(int row);
    // SaveData ("Salvar").
    void saveData();

    GroupCall& group(int number) { return *m_groups.at(static_cast<size_t>(number - 1)); }

    // HostEvents
    void onDTMFString(const std::string& digits) override;
    void onConnected(const std::string& call, const std::string& name, const std::string& address) override;
    void onClosing() override;

protected:
    void build() override;
    void onLoad() override;
    void onUnload() override;
    CloseDecision onQueryClose() override;

private:
    struct Row {
        TextBox* station;
        TextBox* code;
        CheckBox* autoConnect;
    };
    void buildStations(Container& parent);
    void buildCodes(Container& parent);
    void buildDelay(Container& parent);
    void bindSettings();
    void keepAlive();
    // Runs a remote-control command when DTMF control is open and the
    // delay allows it; logs it either way.
    void command(const std::string& code, const std::string& function, const std::function<void()>& action);
    void disconnectLast();

    SettingsBinder m_binder;
    std::vector<Row> m_rows;
    std::vector<std::unique_ptr<GroupCall>> m_groups;
    std::unique_ptr<PeriodCountdown> m_reopen;
    std::unique_ptr<DtmfDelay> m_delay;
    CheckBox* m_open = nullptr;
    CheckBox* m_useDelay = nullptr;
    TextBox* m_lastConnection = nullptr;
};

}  // namespace mv
