#pragma once
// The DTMF audio player and beacons ("Balizas"): twenty audio files, one of
// them put on the air when a station sends the window's DTMF code, when a
// beacon falls due, or from a row's play button; chosen statically or at
// random. Also a local player that plays without keying, and the window's
// settings in "Pellisand.ini".
#include <memory>

#include "core/settings_binder.h"
#include "player/beacon_schedule.h"
#include "player/file_rows.h"
#include "player/selection_player.h"

namespace mv {

inline constexpr const char* kPlayerSettingsFile = "Pellisand.ini";

class PlayerWindow final : public Window {
public:
    explicit PlayerWindow(Program& program);
    ~PlayerWindow() override;

    // SaveData: every key, in the file's order.
    void saveData();

    SelectionPlayer& player() { return m_player; }
    BeaconSchedule& beacons() { return *m_beacons; }
    const FileRows& rows() const { return m_rows; }

    // HostEvents
    void onDTMFString(const std::string& digits) override;
    void onClosing() override;

protected:
    void build() override;
    void onLoad() override;
    void onUnload() override;
    CloseDecision onQueryClose() override;

private:
    void buildSelection(Container& area);
    void buildButtons(Container& area);
    void bindSettings();
    // The file a row names until the operator chooses one: the sample
    // beacons installed with the program fill the first rows.
    std::string defaultFile(int row);

    FileRows m_rows;
    SelectionPlayer m_player;
    std::unique_ptr<BeaconSchedule> m_beacons;
    SettingsBinder m_binder;
    Label* m_ptt = nullptr;
    TextBox* m_dtmfCode = nullptr;
};

}  // namespace mv
