#pragma once
// The courtesy window ("dunmeral2.ini"): the channel indicators, the courtesy
// signal after each over, the kerchunk filter in front of the RF one, the RF
// and Internet time-outs and the long-transmission message. It runs hidden
// from start-up; its close box ends the whole program, and it is the one
// window that saves its settings by itself, when the host closes.
#include <memory>

#include "core/kerchunker.h"
#include "core/settings_binder.h"
#include "core/window.h"
#include "courtesy/courtesy_engine.h"
#include "courtesy/indicators.h"
#include "courtesy/long_transmission.h"
#include "courtesy/time_outs.h"

namespace mv {

inline constexpr const char* kCourtesySettingsFile = "dunmeral2.ini";

class CourtesyWindow final : public Window {
public:
    explicit CourtesyWindow(Program& program);
    ~CourtesyWindow() override;

    // SaveData: every key of the file, in its order.
    void saveData();

    CourtesyEngine& engine() { return m_engine; }
    Kerchunker& kerchunker() { return *m_kerchunker; }
    TimeOuts& timeOuts() { return m_timeOuts; }
    LongTransmissionMessage& longTransmission() { return m_longTransmission; }
    Timer& statusPoll() { return *m_statusPoll; }

    // HostEvents
    void onRX(bool receiving) override;
    void onCarrierDetect(bool carrier) override;
    void onDTMFString(const std::string& digits) override;
    void onClosing() override;
    void beforeHostCloses() override;
    void onKeyingCommand(bool keys) override;

protected:
    void build() override;
    void onLoad() override;
    void onUnload() override;
    CloseDecision onQueryClose() override;

private:
    void buildIndicators(Container& row);
    void buildKerchunkFrame(Container& area);
    void bindSettings();
    // The 10 ms status poll: PTT from the host's transmitter, RFUser from its
    // carrier. It runs only while one of them can change.
    void statusTick();
    void wakeStatusPoll();
    // Timer2, once a second: arms the message timers, shows the local time.
    void secondTick();

    SettingsBinder m_binder;
    CourtesyEngine m_engine;
    TimeOuts m_timeOuts;
    LongTransmissionMessage m_longTransmission;
    std::unique_ptr<Kerchunker> m_kerchunker;
    std::unique_ptr<courtesy::ChannelPresence> m_presence;

    Label* m_rfUser = nullptr;
    Label* m_internet = nullptr;  // PTT1
    Label* m_ptt = nullptr;
    Label* m_ident = nullptr;
    Label* m_localTime = nullptr;
    Timer* m_statusPoll = nullptr;
    bool m_closingSaved = false;
};

}  // namespace mv
